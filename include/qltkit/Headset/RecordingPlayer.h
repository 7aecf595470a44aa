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
/// headset. It is also a clock, which shows the device time of the recording. At the end of the
/// recording the headset is gone.
///
///     const qltkit::Recording recording = qltkit::LoadRecording("walk.bin");
///     qltkit::RecordingPlayer player(recording, qltkit::RecordingPlayer::Pace::Fastest);
///     qltkit::RecordingTracker tracker(player);
///
/// A device that is opened again continues after the last report that was read. Reads past the end
/// fail. A tracker treats such a read as an unplugged headset; a ReportFollower avoids it.
///
/// One thread reads, as a tracker does. Any thread may call NowNs, SleepNs and Close.
class QLTKIT_API RecordingPlayer final : public Source
{
public:
    /// The pace of the reports.
    enum class Pace
    {
        /// Each report comes at its time after the first report.
        Recorded,

        /// A report comes as soon as it is read.
        Fastest,
    };

    /// Prepares to play. `recording` must have at least one report and must outlive the player,
    /// unless it is a temporary, which the player keeps.
    RecordingPlayer(const Recording& recording, Pace pace);
    RecordingPlayer(Recording&& recording, Pace pace);
    ~RecordingPlayer() override;

    /// Opens the headset of the recording. Null after Close.
    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;
    std::string Name() const override { return "recording"; }

    /// The device time of the last report that was read, in nanoseconds. Until the first read it is
    /// 1 ms before the first report.
    std::int64_t NowNs() override;

    /// Sleeps by the machine's clock, and ends early at Close.
    void SleepNs(std::int64_t durationNs) override;

    /// Does the same as Source::Close. It also ends a read that waits for the time of its report.
    void Close() override;

    /// True when the last report has been read. Any thread.
    bool IsOver() const override;

private:
    class EndPoint;
    class Device;
    struct State;

    std::unique_ptr<const Recording> mOwn; // null when the caller keeps the recording
    std::unique_ptr<State> mState;
};

/// The headset tracker of a RecordingPlayer, which must outlive it. Threads: as for qlt::Hmd.
class QLTKIT_API RecordingTracker final : public qlt::Hmd
{
public:
    /// Makes a tracker that finds the player's headset and uses the player's clock.
    explicit RecordingTracker(RecordingPlayer& player);
    ~RecordingTracker() override;

    /// True when Stop has been called and waits for the processing thread. Any thread.
    bool IsStopping() const { return ShouldStop(); }
};

} // namespace qltkit
