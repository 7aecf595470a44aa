#pragma once

#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Headset/CaptureRecorder.h>

#include "Tracking/SeqlockRing.h"

#include <atomic>
#include <memory>
#include <optional>
#include <utility>

namespace qltkit
{

/// Keeps the last reports of a tracker for its samples, and writes them into a capture.
class TrackerFeed final : public ReportSink
{
public:
    struct Arrival
    {
        std::int64_t hostNs = 0;
        qlt::SensorReport report{};
    };

    /// `capture` may be null.
    explicit TrackerFeed(std::shared_ptr<CaptureWriter> capture)
        : mCapture(std::move(capture))
    {
        if (mCapture != nullptr)
        {
            mRecorder.emplace(*mCapture);
        }
    }

    void OnReport(const qlt::SensorReport& report, std::int64_t hostNs) override
    {
        if (mRecorder)
        {
            mRecorder->OnReport(report, hostNs);
        }
        mIsUp = true;
        mRing.Publish({hostNs, report});
    }

    void OnLost(std::int64_t hostNs) override
    {
        if (mRecorder)
        {
            mRecorder->OnLost(hostNs);
        }
        mIsUp = false;
    }

    /// Copies the report with this number, counted from 1. Returns false when newer reports have
    /// replaced it. Any thread.
    bool Read(std::uint64_t number, Arrival& arrival) const
    {
        return mRing.Read(number - 1, arrival);
    }

    /// True between a report and the next loss. Any thread.
    bool IsUp() const { return mIsUp; }

private:
    static constexpr std::size_t SIZE = 4096; // this is more than the poses that a tracker keeps

    const std::shared_ptr<CaptureWriter> mCapture;
    std::optional<CaptureRecorder> mRecorder;
    std::atomic<bool> mIsUp{false};
    SeqlockRing<Arrival, SIZE> mRing;
};

} // namespace qltkit
