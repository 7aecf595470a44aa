#pragma once

#include <qlt/Sensors/TrackerListener.h>
#include <qltkit/Export.h>
#include <qltkit/Headset/RecordingPlayer.h>

#include <atomic>
#include <cstddef>

namespace qltkit
{

/// A listener that follows a tracker up to a last report.
///
/// The tracker of a recording would find its headset gone after that report. So the follower holds
/// the tracker inside the last report's event until the tracker is stopped. Other trackers go on,
/// and the follower ignores their later reports.
///
/// Derive from it, add it to the tracker before Start, and wait for Ended. Then stop the tracker
/// and remove the follower:
///
///     tracker.AddListener(follower);
///     tracker.Start();
///     while (!follower.Ended())
///     {
///         std::this_thread::sleep_for(std::chrono::milliseconds(1));
///     }
///     tracker.Stop();
///     tracker.RemoveListener(follower);
///
/// Any thread may call Reports and Ended.
class QLTKIT_API ReportFollower : public qlt::TrackerListener
{
public:
    /// Follows `reports` reports, or all of them when that is 0. `held` is the recording's tracker
    /// and must outlive this object. It is null for a tracker that goes on.
    ReportFollower(const RecordingTracker* held, std::size_t reports);

    ~ReportFollower() override;

    /// Counts the report and calls OnReport. The tracker calls it.
    void OnOrientationEvent(const qlt::Quaternion& orientation, float time) final;

    /// The number of reports that have been followed.
    std::size_t Reports() const { return mReports; }

    /// True when the last report has been followed.
    bool Ended() const { return mEnded; }

protected:
    /// Takes the orientation after a report, whose number begins at 0. `time` is the event's time
    /// in seconds. The tracker's thread calls it under the tracker's lock.
    virtual void OnReport(std::size_t report, const qlt::Quaternion& orientation, float time) = 0;

    /// Runs about every 100 us while the tracker is held, on its thread and under its lock. It is
    /// the place for calls that would wait for the lock elsewhere. It does nothing by default.
    virtual void WhileHeld();

private:
    const RecordingTracker* mHeld;
    const std::size_t mLastReport;
    std::atomic<std::size_t> mReports{0};
    std::atomic<bool> mEnded{false};
};

} // namespace qltkit
