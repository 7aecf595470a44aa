#pragma once

#include <qlt/Runtime/Clock.h>
#include <qlt/Runtime/Usb.h>
#include <qlt/Sensors/Hmd.h>
#include <qltkit/Export.h>
#include <qltkit/Headset/ReportTap.h>
#include <qltkit/Headset/Source.h>
#include <qltkit/Tracking/Pose.h>
#include <qltkit/Tracking/TrackerEvent.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qltkit
{

/// The filter that computes orientations from the reports.
enum class PoseFilter : std::int32_t
{
    /// The kit's estimator, which OrientationEstimator describes. It also learns the bias of the
    /// gyroscope.
    Kit,

    /// The filter of qlt::Hmd, for programs that must show the same orientations as the core.
    Core,
};

/// The options of a HeadTracker. The defaults suit a program that draws for one user.
struct HeadTrackerOptions
{
    /// The filter of the poses. It cannot be changed later.
    PoseFilter filter = PoseFilter::Kit;

    /// The measures of the user. HeadTracker::GetPerson returns them.
    Person person;

    /// The sink gets every report and every loss before the tracker does, on the thread that reads
    /// the reports. It must outlive the tracker. Null means that there is no sink.
    ReportSink* sink = nullptr;

    /// The file of a calibration, which `qlt calibrate` writes. It corrects the samples for
    /// PoseFilter::Kit. Empty means that there is no calibration.
    std::string calibration;

    /// The serial number or the chosen name of the headset. The calibration must be for this name.
    std::string unit;
};

/// Gives the pose of the head at any moment of the last two seconds and of the next 100 ms. It is
/// made for programs that draw.
///
/// A tracker owns a qlt::Hmd and sees each report before the Hmd does. A filter computes the
/// orientation. The time of a pose comes from the headset's clock. The tracker fits this clock to
/// the host's clock all the time, so a thread that wakes up late does not disturb the times.
///
/// A program asks for the pose at the moment at which the frame will be visible:
///
///     qltkit::HeadTracker tracker("headset");
///     while (drawing)
///     {
///         const std::int64_t visibleNs = tracker.NowNs() + 20000000;
///         const qltkit::Pose head = tracker.At(visibleNs);
///         const qltkit::EyePose left =
///             qltkit::EyePoseOf(head, qlt::Params::EYE_LEFT, tracker.GetPerson());
///     }
///
/// Threads: any thread may call any function at any time, except the destructor. Latest and At
/// never wait: they take no lock, make no system call and do not depend on a read or a handler.
///
/// The tracking starts in the constructor and ends in the destructor. Every constructor throws
/// std::system_error when the system starts no thread, and Error when the calibration cannot be
/// used: see LoadCalibration. PoseFilter::Core takes no calibration.
class QLTKIT_API HeadTracker
{
public:
    /// Receives an event on a thread of the tracker.
    using EventHandler = std::function<void(const TrackerEvent&)>;

    /// Tracks the source with this name. See OpenSource for the names; an unknown name throws
    /// Error. The headset may be plugged in later.
    explicit HeadTracker(const std::string& source, const HeadTrackerOptions& options = {});

    /// Tracks the headset of a host, with the times of the machine's clock. `host` must outlive the
    /// tracker.
    explicit HeadTracker(qlt::UsbHost& host, const HeadTrackerOptions& options = {});

    /// Tracks the headset of a host, with the times of `clock`. Both must outlive the tracker.
    HeadTracker(qlt::UsbHost& host, qlt::Clock& clock, const HeadTrackerOptions& options = {});

    /// Tracks a source and owns it. Throws Error when it is null.
    explicit HeadTracker(std::unique_ptr<Source> source, const HeadTrackerOptions& options = {});

    /// Stops the tracking. It waits for a running event handler, and for a read in progress that
    /// the host cannot end. An event handler or a listener of Core must not destroy the tracker. No
    /// other function may run at the same time.
    ~HeadTracker();

    HeadTracker(const HeadTracker&) = delete;
    HeadTracker& operator=(const HeadTracker&) = delete;

    /// The pose of the last report, without a prediction. Before the first report the state is
    /// NeverSeen and the orientation is the identity.
    Pose Latest() const noexcept;

    /// The pose at `timeNs`, in nanoseconds of the tracker's clock. A pose of the last two seconds
    /// of reports is interpolated between the two nearest reports. A pose up to 100 ms after the
    /// last report is predicted. Outside these limits it is the pose at the nearer limit, with
    /// `clamped` set. Before the first report it is the identity, also with `clamped` set.
    Pose At(std::int64_t timeNs) const noexcept;

    /// Makes the current heading the forward direction (-z) and keeps pitch and roll. Poses of the
    /// past turn with it. The head may look in any direction, including straight up: its heading is
    /// then the opposite direction of its top. Before the first report the call changes nothing and
    /// returns false.
    bool Recentre() noexcept;

    /// Returns the oldest pose that PollPose has not returned yet, or nothing when there is none.
    /// There is one pose for each report, except for a report that repeats the one before. The
    /// tracker keeps the last 2032 poses; `Pose::reportNumber` shows whether older ones were lost.
    /// Calls from several threads share one queue.
    std::optional<Pose> PollPose();

    /// The error of all predictions so far in radians, as a root mean square. It is the angle
    /// between the poses predicted for `seconds` ahead and the poses that were measured later.
    /// `seconds` is clamped to 0 .. 0.1. The result is 0 until a prediction can be compared.
    double PredictionError(double seconds) const noexcept;

    /// The same error over about the last five seconds.
    double RecentPredictionError(double seconds) const noexcept;

    /// Returns the oldest event that PollEvent has not returned yet, or nothing when there is none.
    /// The tracker keeps the last 1024 events; `TrackerEvent::number` shows whether older ones were
    /// lost. Calls from several threads share one queue.
    std::optional<TrackerEvent> PollEvent();

    /// Sets the function that gets each event. A thread of the tracker calls it a few milliseconds
    /// after the event. Null removes the handler. A handler gets every event that no earlier
    /// handler has got, so the first handler misses nothing. PollEvent returns the same events
    /// again.
    ///
    /// After this call returns, the previous handler does not run any more, unless it made this
    /// call itself. A handler must not throw. Throws std::system_error when the system starts no
    /// thread.
    void SetEventHandler(EventHandler handler);

    /// The current time of the tracker's clock in nanoseconds. All times of poses and events use
    /// this clock.
    std::int64_t NowNs() const;

    /// The measures of the user, for EyePoseOf.
    const Person& GetPerson() const noexcept;

    /// The core's tracker, for listeners and positions. Do not stop it. Its IsConnected waits for a
    /// read in progress. Its ResetYawOrigin also turns the later poses of PoseFilter::Core. The
    /// reference is valid as long as this tracker.
    qlt::Hmd& Core() noexcept;

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
