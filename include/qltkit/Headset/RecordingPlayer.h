#pragma once

#include <qlt/Sensors/Hmd.h>
#include <qltkit/Capture/Recording.h>
#include <qltkit/Export.h>
#include <qltkit/Headset/Source.h>

#include <cstddef>
#include <memory>
#include <string>

namespace qltkit
{

/// Plays a recording to a headset tracker, once. It is the USB host on which the tracker finds a
/// headset, and a clock that goes by the recording's device time. Reads past the end fail, which
/// the tracker takes for an unplugged headset; a ReportFollower stops there in good order.
///
/// One thread reads, as a tracker does. NowNs, SleepNs and Close are for any thread.
class QLTKIT_API RecordingPlayer final : public Source
{
public:
    enum class Pace
    {
        Recorded, // each report comes at its time after the first
        Fastest,  // a report comes as soon as it is read
    };

    /// `recording` must outlive this.
    RecordingPlayer(const Recording& recording, Pace pace);
    ~RecordingPlayer() override;

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;
    std::string Name() const override { return "recording"; }

    /// The device time of the last report that was read, nanoseconds; 1 ms before the first report
    /// until then.
    std::int64_t NowNs() override;

    void SleepNs(std::int64_t durationNs) override;
    void Close() override;

private:
    class EndPoint;
    class Device;
    struct State;

    std::unique_ptr<State> mState;
};

/// The headset tracker of a RecordingPlayer, which must outlive it.
class QLTKIT_API RecordingTracker final : public qlt::Hmd
{
public:
    explicit RecordingTracker(RecordingPlayer& player);
    ~RecordingTracker() override;

    /// Whether Stop has been called and waits for the processing thread. Any thread.
    bool IsStopping() const { return ShouldStop(); }
};

} // namespace qltkit
