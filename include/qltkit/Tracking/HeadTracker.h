// The head's pose at any moment of the last two seconds and the next 100 ms, for programs that
// draw.
//
// A tracker owns the core's Hmd and looks at each report before the Hmd does. The orientation comes
// from the kit's estimator or from the core's filter; the moment at which it was true comes from
// the headset's clock, fitted to the host's.
//
// Threads: any thread may call anything at any time, but for the construction and destruction.
// Latest and At never wait, for no lock, no read and no event handler, and make no system call.
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

/// What makes an orientation of the reports.
enum class PoseFilter : std::int32_t
{
    Core, // the core's filter; predicted with the rate of the last report
};

struct HeadTrackerOptions
{
    PoseFilter filter = PoseFilter::Core;

    /// For GetPerson.
    Person person;

    /// Is shown all that the tracker reads, before the tracker takes it. Must outlive the tracker.
    ReportSink* sink = nullptr;
};

class QLTKIT_API HeadTracker
{
public:
    using EventHandler = std::function<void(const TrackerEvent&)>;

    /// Tracks from a source by its name, see OpenSource. Error for a name that is none.
    explicit HeadTracker(const std::string& source, const HeadTrackerOptions& options = {});

    /// Tracks from a host, which must outlive this, with the machine's clock or another one, which
    /// must outlive this, too.
    explicit HeadTracker(qlt::UsbHost& host, const HeadTrackerOptions& options = {});
    HeadTracker(qlt::UsbHost& host, qlt::Clock& clock, const HeadTrackerOptions& options = {});

    /// Tracks from a source. Error when it is null.
    explicit HeadTracker(std::unique_ptr<Source> source, const HeadTrackerOptions& options = {});

    /// Waits for the event handler, and for a read that is under way and cannot be ended. Never
    /// from the event handler or from a listener of Core.
    ~HeadTracker();

    HeadTracker(const HeadTracker&) = delete;
    HeadTracker& operator=(const HeadTracker&) = delete;

    /// The pose of the last report. NeverSeen, and the identity, before the first.
    Pose Latest() const noexcept;

    /// The pose at a moment of the tracker's clock: interpolated in the last two seconds, predicted
    /// up to 100 ms after the last report. Beyond either it is the pose at that limit, and says so
    /// in `clamped`.
    Pose At(std::int64_t timeNs) const noexcept;

    /// Makes the heading of the last pose the forward direction (-z) of all poses, earlier ones,
    /// too. Pitch and roll stay, wherever the head looks. False while no report has come.
    bool Recentre() noexcept;

    /// The oldest event that PollEvent has not given yet.
    std::optional<TrackerEvent> PollEvent();

    /// Sets who is told of events, on a thread of the tracker's own and at most some milliseconds
    /// late; null for nobody. A first handler is told of the events since the construction, too.
    /// The last handler is in no call any more on return, unless this is called from it. A handler
    /// must not throw.
    void SetEventHandler(EventHandler handler);

    /// The clock of all times here, nanoseconds.
    std::int64_t NowNs() const;

    const Person& GetPerson() const noexcept;

    /// The core's tracker, for listeners and positions: do not stop it. Its IsConnected waits while
    /// a report is being read, and its ResetYawOrigin turns the poses of PoseFilter::Core, too.
    qlt::Hmd& Core() noexcept;

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
