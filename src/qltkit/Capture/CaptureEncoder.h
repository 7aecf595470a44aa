#pragma once

#include <qltkit/Capture/McapWriter.h>

#include "Capture/DeviceTime.h"
#include "Capture/PostEncoder.h"
#include "Capture/ReportRing.h"

namespace qltkit
{

/// The same moment by two clocks.
struct ClockPair
{
    std::int64_t steadyNs = 0;
    std::uint64_t wallNs = 0;
};

/// Turns the items of a capture into messages of its file. One thread at a time may use an object.
class CaptureEncoder
{
public:
    /// `mcap` must outlive this object.
    CaptureEncoder(McapWriter& mcap, const ClockPair& clocks);

    void Write(const ReportRing::Entry& report);
    void Write(const Post& post);

private:
    std::uint64_t LogTime(std::int64_t hostTimeNs) const;
    std::uint64_t PublishTime(std::int64_t deviceTimeUs, std::uint64_t logTimeNs);

    McapWriter& mMcap;
    const ClockPair mClocks;
    const std::uint16_t mReportChannel;
    PostEncoder mPosts;
    DeviceTime mDeviceTime;
    bool mAnchored = false; // true when the two members below are known
    std::int64_t mAnchorUs = 0;
    std::uint64_t mAnchorNs = 0;
};

} // namespace qltkit
