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

/// The filter that makes orientations of the reports.
enum class PoseFilter : std::int32_t
{
    Kit,  // the kit's estimator
    Core, // the core's filter
};

/// How a HeadTracker is to work.
struct HeadTrackerOptions
{
    PoseFilter filter = PoseFilter::Kit;

    /// The user of the headset; see HeadTracker::GetPerson.
    Person person;

    /// Sees every report and every loss before the tracker does. Null for none; must outlive the
    /// tracker.
    ReportSink* sink = nullptr;
};

/// The pose of the head at any moment of the last two seconds and of the next 100 ms, for programs
/// that draw.
///
/// A tracker owns a qlt::Hmd and sees each report before the Hmd does. The orientation comes from a
/// filter. The time of a pose comes from the headset's clock, which is fitted to the host's clock
/// all the time, so that late wake-ups do not show.
///
/// Threads: any thread may call any function at any time, except the destructor. Latest and At
/// never wait: they take no lock, make no system call and do not depend on a read or a handler.
class QLTKIT_API HeadTracker
{
public:
    using EventHandler = std::function<void(const TrackerEvent&)>;

    /// Tracks the source of that name; see OpenSource, which throws Error for an unknown name.
    explicit HeadTracker(const std::string& source, const HeadTrackerOptions& options = {});

    /// Tracks the headset of a host, by the machine's clock or by another one. Both must outlive
    /// the tracker.
    explicit HeadTracker(qlt::UsbHost& host, const HeadTrackerOptions& options = {});
    HeadTracker(qlt::UsbHost& host, qlt::Clock& clock, const HeadTrackerOptions& options = {});

    /// Tracks a source. Throws Error when it is null.
    explicit HeadTracker(std::unique_ptr<Source> source, const HeadTrackerOptions& options = {});

    /// Waits for a running event handler, and for a read under way that its host cannot end.
    /// Neither an event handler nor a listener of Core may destroy the tracker.
    ~HeadTracker();

    HeadTracker(const HeadTracker&) = delete;
    HeadTracker& operator=(const HeadTracker&) = delete;

    /// The pose of the last report. NeverSeen, and the identity, before the first.
    Pose Latest() const noexcept;

    /// The pose at a moment of the tracker's clock. It is interpolated for a moment of the last two
    /// seconds of reports, and predicted for up to 100 ms after the last report. Outside of these
    /// limits it is the pose at the nearer limit, with `clamped` set.
    Pose At(std::int64_t timeNs) const noexcept;

    /// Makes the present heading the forward direction (-z). Pitch and roll stay. Poses of the past
    /// are turned, too. The head may look in any direction, straight up included. False, and
    /// nothing changes, before the first report.
    bool Recentre() noexcept;

    /// The angle between poses predicted for `seconds` ahead (clamped to 0 .. 0.1) and the poses
    /// that came then, as the root of the mean square, radians: over all reports so far, or over
    /// about the last five seconds. 0 while there is nothing to compare.
    double PredictionError(double seconds) const noexcept;
    double RecentPredictionError(double seconds) const noexcept;

    /// The oldest event that PollEvent has not returned yet; empty when there is none.
    std::optional<TrackerEvent> PollEvent();

    /// Sets the function that gets each event, on a thread of the tracker's own and a few
    /// milliseconds later. Null removes it. A handler gets every event that no handler has got yet,
    /// so the first one misses nothing. When this returns, the previous handler is not running any
    /// more, unless it made this call itself. A handler must not throw.
    void SetEventHandler(EventHandler handler);

    /// The present time of the tracker's clock, to which all times of poses and events belong.
    std::int64_t NowNs() const;

    /// The user, for EyePoseOf.
    const Person& GetPerson() const noexcept;

    /// The core's tracker, for listeners and positions. Do not stop it. Its IsConnected waits for
    /// the read under way. Its ResetYawOrigin also turns the poses of PoseFilter::Core that follow.
    qlt::Hmd& Core() noexcept;

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
