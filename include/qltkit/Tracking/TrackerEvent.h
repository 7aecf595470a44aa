#pragma once

#include <cstdint>

namespace qltkit
{

/// A change in the stream of reports.
struct TrackerEvent
{
    enum class Kind : std::int32_t
    {
        Connected, // the first report has come
        Lost,      // a read has failed: the headset was unplugged or is broken
        Back,      // the first report after a Lost has come
        Gap,       // reports are missing before the one that has just come
    };

    Kind kind = Kind::Connected;

    /// For a Gap: the number of missing reports, by the headset's own count. 0 for other kinds.
    std::uint32_t reports = 0;

    /// The time at which the tracker noticed it, nanoseconds of the tracker's clock.
    std::int64_t timeNs = 0;

    /// Counts the tracker's events from 1. A tracker keeps the last 1024 events. A step of more
    /// than one means that the events between were not fetched in time and are gone.
    std::uint64_t number = 0;
};

} // namespace qltkit
