// The tracker that the option --source names: "simulator", "headset", or the file of a capture, a
// recording or a headset script.
#pragma once

#include <qltkit/Headset/RecordingPlayer.h>
#include <qltkit/Headset/ScriptedHeadset.h>

#include "source/KitFilter.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class TrackerSource
{
public:
    using Pace = qltkit::RecordingPlayer::Pace;

    /// Throws std::runtime_error with one clear sentence for a file that cannot be read. Lists the
    /// faults of a recording on standard error. `filter` is "kit" or "core". The simulator has no
    /// sensors, so it needs no filter. `pace` applies to recordings and the simulator; a script
    /// always runs in real time.
    TrackerSource(const std::string& name, const std::string& filter, Pace pace = Pace::Recorded);
    ~TrackerSource();
    TrackerSource(const TrackerSource&) = delete;
    TrackerSource& operator=(const TrackerSource&) = delete;

    qlt::Tracker& Get() { return *mTracker; }

    /// Returns the orientation after a report, from the chosen filter. `core` is the tracker's own
    /// orientation. Call it in ReportFollower::OnReport, once for each report.
    qlt::Quaternion Follow(std::size_t report, const qlt::Quaternion& core);

    /// Makes the current heading forward and returns the orientation. Call it on the tracker's
    /// thread.
    qlt::Quaternion ResetYaw();

    /// The number of all reports. 0 for a source without an end; only a recording has one.
    std::size_t Reports() const;

    /// The number of reports that the source gives in `seconds`, at least one. 0 for a script,
    /// whose reports may be lost.
    std::size_t ReportsIn(double seconds) const;

    /// True when a script has given its last report. It is false for the other sources.
    bool IsOver() const { return mScripted != nullptr && mScripted->IsOver(); }

    /// The time of a report in microseconds. A recording gives the time of the headset's clock. The
    /// other sources give the time of the event, which starts at zero.
    std::int64_t TimeUs(std::size_t report, float eventTime) const;

    /// The tracker of a recording, for a qltkit::ReportFollower. Null for the other sources.
    const qltkit::RecordingTracker* Recorded() const { return mRecorded; }

    /// Returns 1 for a recording that is cut off, and otherwise 0.
    int ExitCode() const { return mWhole ? 0 : 1; }

private:
    void Track(qlt::UsbHost& host, qlt::Clock& clock);

    std::unique_ptr<qlt::Clock> mClock; // the clock of a simulator that does not wait
    std::optional<qltkit::Recording> mRecording;
    std::unique_ptr<qltkit::RecordingPlayer> mPlayer;
    std::unique_ptr<qltkit::ScriptedHeadset> mScripted;
    std::unique_ptr<KitFilter> mKit; // null for the core's filter
    std::unique_ptr<qltkit::ReportTap> mTap;
    std::unique_ptr<qlt::Tracker> mTracker; // it is destroyed before the members above
    const qltkit::RecordingTracker* mRecorded = nullptr;
    bool mWhole = true;
};
