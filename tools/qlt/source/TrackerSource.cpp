#include "source/TrackerSource.h"

#include <qlt/Sensors/SimulatorTracker.h>

#include "source/HeadsetSearch.h"
#include "source/RecordingInput.h"

#include <algorithm>
#include <cmath>

namespace
{

class ImpatientClock final : public qlt::Clock
{
public:
    std::int64_t NowNs() override { return Clock::System().NowNs(); }
    void SleepNs(std::int64_t) override {}
};

} // namespace

TrackerSource::TrackerSource(const std::string& name, const std::string& filter, Pace pace)
    : mKit(filter == "kit" && name != "simulator" ? std::make_unique<KitFilter>() : nullptr)
{
    if (name == "simulator")
    {
        mClock = std::make_unique<ImpatientClock>();
        mTracker = std::make_unique<qlt::SimulatorTracker>(
            pace == Pace::Fastest ? *mClock : qlt::Clock::System());
        return;
    }
    if (name == "headset")
    {
        Track(qlt::UsbHost::System(), qlt::Clock::System());
        SayThatHeadsetIsAwaited();
        return;
    }
    if (IsScript(name))
    {
        mScripted = std::make_unique<qltkit::ScriptedHeadset>(qltkit::LoadHeadsetScript(name));
        Track(*mScripted, *mScripted);
        return;
    }
    mRecording = LoadInput(name, mWhole);
    mPlayer = std::make_unique<qltkit::RecordingPlayer>(*mRecording, pace);
    auto tracker = std::make_unique<qltkit::RecordingTracker>(*mPlayer);
    mRecorded = tracker.get();
    mTracker = std::move(tracker);
}

/// Tracks the headset of a host. The kit's filter sees each report before the tracker.
void TrackerSource::Track(qlt::UsbHost& host, qlt::Clock& clock)
{
    if (mKit == nullptr)
    {
        mTracker = std::make_unique<qlt::Hmd>(host, clock);
        return;
    }
    mTap = std::make_unique<qltkit::ReportTap>(host, clock, *mKit);
    mTracker = std::make_unique<qlt::Hmd>(*mTap, clock);
}

TrackerSource::~TrackerSource()
{
    if (mPlayer != nullptr)
    {
        mPlayer->Close(); // otherwise the end of the tracker would wait for sleeping threads
    }
    if (mScripted != nullptr)
    {
        mScripted->Close();
    }
}

qlt::Quaternion TrackerSource::Follow(std::size_t report, const qlt::Quaternion& core)
{
    if (mKit == nullptr)
    {
        return core;
    }
    if (mRecording)
    {
        mKit->OnReport(mRecording->reports[report], 0);
    }
    return mKit->Orientation();
}

qlt::Quaternion TrackerSource::ResetYaw()
{
    if (mKit == nullptr)
    {
        mTracker->ResetYawOrigin();
        return mTracker->GetOrientation();
    }
    mKit->ResetYaw();
    return mKit->Orientation();
}

std::size_t TrackerSource::Reports() const { return mRecording ? mRecording->reports.size() : 0; }

std::size_t TrackerSource::ReportsIn(double seconds) const
{
    std::ptrdiff_t reports = std::lround(seconds * 1000.0);
    if (mScripted != nullptr)
    {
        return 0;
    }
    if (mRecording)
    {
        const auto& times = mRecording->playedUs;
        const std::int64_t end = std::llround(seconds * 1e6);
        reports = std::find_if(times.begin(), times.end(),
                               [end](std::int64_t time) { return time > end; }) -
                  times.begin();
    }
    return static_cast<std::size_t>(std::max<std::ptrdiff_t>(reports, 1));
}

std::int64_t TrackerSource::TimeUs(std::size_t report, float eventTime) const
{
    return mRecording ? mRecording->timesUs[report]
                      : std::llround(static_cast<double>(eventTime) * 1e6);
}
