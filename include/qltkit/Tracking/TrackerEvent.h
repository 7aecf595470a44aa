#pragma once

#include <cstdint>

namespace qltkit
{

/// Something that happened to the stream of reports.
struct TrackerEvent
{
    enum class Kind : std::int32_t
    {
        Connected, // the first report has come
        Lost,      // a read gave anything but a whole report: the headset was unplugged, or failed
        Back,      // the first report after that
        Gap,       // reports are missing before the one that has just come
    };

    Kind kind = Kind::Connected;

    /// Of a Gap: how many reports are missing, by the headset's own count.
    std::uint32_t reports = 0;

    /// When it was noticed, nanoseconds of the tracker's clock.
    std::int64_t timeNs = 0;

    /// 1 for the tracker's first event, one more for each that follows. A tracker keeps the last
    /// thousand; a step of more than one tells that older ones were not asked for in time.
    std::uint64_t number = 0;
};

} // namespace qltkit
