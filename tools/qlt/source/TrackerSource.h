// What a command tracks, by the name that its --source has: "simulator", "headset", or else the
// file of a recording.
#pragma once

#include "source/RecordingPlayer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class TrackerSource
{
public:
    using Pace = RecordingPlayer::Pace;

    /// std::runtime_error with one clear sentence for a file that cannot be read. A recording that
    /// is cut off is reported on standard error. `pace` is of a recording and of the simulator.
    explicit TrackerSource(const std::string& name, Pace pace = Pace::Recorded);
    ~TrackerSource();
    TrackerSource(const TrackerSource&) = delete;
    TrackerSource& operator=(const TrackerSource&) = delete;

    qlt::Tracker& Get() { return *mTracker; }

    /// How many reports there will be; 0 without an end, which only a recording has.
    std::size_t Reports() const;

    /// How many of them are there after so many seconds, one at least.
    std::size_t ReportsIn(double seconds) const;

    /// The time of a report, microseconds: by the headset's clock in a recording, else by the time
    /// of its event, which starts at zero.
    std::int64_t TimeUs(std::size_t report, float eventTime) const;

    /// For a listener that has a recording's last report, or enough of it: holds the tracker, which
    /// would otherwise go on and find the headset gone, until it is being stopped.
    void Hold() const;

    /// 1 for a recording that is cut off, 0 else.
    int ExitCode() const { return mWhole ? 0 : 1; }

private:
    std::unique_ptr<qlt::Clock> mClock; // of a simulator that does not wait
    std::optional<Recording> mRecording;
    std::unique_ptr<RecordingPlayer> mPlayer;
    std::unique_ptr<qlt::Tracker> mTracker; // ends before what it is made of
    const RecordingTracker* mRecorded = nullptr;
    bool mWhole = true;
};
