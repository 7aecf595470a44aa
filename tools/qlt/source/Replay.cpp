#include "source/Replay.h"

#include <qltkit/Headset/RecordingPlayer.h>
#include <qltkit/Headset/ReportFollower.h>
#include <qltkit/Tracking/OrientationEstimator.h>

#include "output/Progress.h"

#include <chrono>
#include <future>

namespace
{

using SteadyClock = std::chrono::steady_clock;

/// Keeps every orientation of a replay and notices its end.
class Collector final : public qltkit::ReportFollower
{
public:
    Collector(const qltkit::RecordingTracker& tracker, std::size_t reports)
        : ReportFollower(&tracker, reports)
        , mReports(reports)
    {
        orientations.reserve(reports);
    }

    /// Waits for the last report and returns the moment when it was done. Shows the progress.
    SteadyClock::time_point WaitForEnd()
    {
        constexpr std::chrono::milliseconds PERIOD(100);
        Progress progress;
        std::future<SteadyClock::time_point> end = mEnd.get_future();
        while (end.wait_for(PERIOD) != std::future_status::ready)
        {
            progress.Show(static_cast<double>(Reports()) / static_cast<double>(mReports));
        }
        return end.get();
    }

    std::vector<qlt::Quaternion> orientations;

private:
    void OnReport(std::size_t report, const qlt::Quaternion& orientation, float) override
    {
        orientations.push_back(orientation);
        if (report + 1 == mReports)
        {
            mEnd.set_value(SteadyClock::now());
        }
    }

    const std::size_t mReports;
    std::promise<SteadyClock::time_point> mEnd;
};

} // namespace

Replayed ReplayCore(const qltkit::Recording& recording)
{
    qltkit::RecordingPlayer player(recording, qltkit::RecordingPlayer::Pace::Fastest);
    qltkit::RecordingTracker tracker(player);
    Collector collector(tracker, recording.reports.size());
    tracker.AddListener(collector);
    const SteadyClock::time_point start = SteadyClock::now();
    tracker.Start();
    const std::chrono::duration<double> elapsed = collector.WaitForEnd() - start;
    tracker.Stop();
    tracker.RemoveListener(collector);
    player.Close();
    return {std::move(collector.orientations), elapsed.count()};
}

Replayed ReplayKit(const qltkit::Recording& recording)
{
    Replayed replayed;
    replayed.orientations.reserve(recording.reports.size());
    qltkit::OrientationEstimator estimator;
    Progress progress;
    const SteadyClock::time_point start = SteadyClock::now();
    for (const qlt::SensorReport& report : recording.reports)
    {
        progress.Show(static_cast<double>(replayed.orientations.size()) /
                      static_cast<double>(recording.reports.size()));
        estimator.Add(qltkit::ReadImuSample(report));
        const qltkit::Rotation& q = estimator.GetOrientation();
        replayed.orientations.emplace_back(static_cast<float>(q.w), static_cast<float>(q.x),
                                           static_cast<float>(q.y), static_cast<float>(q.z));
    }
    replayed.seconds = std::chrono::duration<double>(SteadyClock::now() - start).count();
    return replayed;
}
