#pragma once

#include <qlt/Sensors/TrackerListener.h>
#include <qltkit/Export.h>
#include <qltkit/Headset/RecordingPlayer.h>

#include <atomic>
#include <cstddef>

namespace qltkit
{

/// A listener that follows a tracker up to a last report. A recording's tracker would find its
/// headset gone after that report, so the follower holds it inside the report's last event until
/// the tracker is being stopped. Other trackers go on, and the follower ignores their reports.
///
/// Derive from it, add it to the tracker before Start, stop the tracker, and remove it. The
/// operations are for any thread.
class QLTKIT_API ReportFollower : public qlt::TrackerListener
{
public:
    /// Follows `reports` reports, or all of them when that is 0. `held` is the recording's tracker
    /// and must outlive this; null for a tracker that goes on.
    ReportFollower(const RecordingTracker* held, std::size_t reports);

    ~ReportFollower() override;

    void OnOrientationEvent(const qlt::Quaternion& orientation, float time) final;

    /// How many reports have been followed.
    std::size_t Reports() const { return mReports; }

    /// Whether the last report has been followed.
    bool Ended() const { return mEnded; }

protected:
    /// Takes the orientation after a report, whose number begins at 0. `time` is the event's time,
    /// seconds. Called on the tracker's thread, under its lock.
    virtual void OnReport(std::size_t report, const qlt::Quaternion& orientation, float time) = 0;

    /// Called about every 100 us while the tracker is held, on its thread and under its lock: the
    /// place for calls that would wait for the lock elsewhere. Does nothing by default.
    virtual void WhileHeld();

private:
    const RecordingTracker* mHeld;
    const std::size_t mLastReport;
    std::atomic<std::size_t> mReports{0};
    std::atomic<bool> mEnded{false};
};

} // namespace qltkit
