#pragma once

#include <cstdint>

namespace qltkit
{

/// A change in the stream of reports. HeadTracker::PollEvent and HeadTracker::SetEventHandler give
/// these events. A plain value.
struct TrackerEvent
{
    /// The kinds of events. The first event of a tracker is Connected.
    enum class Kind : std::int32_t
    {
        /// The first report has arrived.
        Connected,

        /// A read has failed: the headset was unplugged or is broken.
        Lost,

        /// The first report after a Lost has arrived.
        Back,

        /// Reports are missing before the newest one.
        Gap,
    };

    /// The kind of this event.
    Kind kind = Kind::Connected;

    /// For a Gap: the number of missing reports according to the headset's own count. 0 for other
    /// kinds.
    std::uint32_t reports = 0;

    /// The time at which the tracker noticed the change, in nanoseconds of the tracker's clock.
    std::int64_t timeNs = 0;

    /// The events of a tracker are numbered from 1. A tracker keeps its last 1024 events. A step of
    /// more than one means that the events between were not fetched in time and are lost.
    std::uint64_t number = 0;
};

} // namespace qltkit
