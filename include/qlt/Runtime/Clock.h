#pragma once

#include <qlt/Export.h>

#include <cstdint>

namespace qlt
{

/// The time of the trackers: a monotonic count of nanoseconds, and a sleep. A replay and a test
/// pass their own clock to a tracker; everybody else takes the machine's.
///
/// Several threads may use a clock at once. A clock must outlive every tracker and filter that uses
/// it.
class QLT_API Clock
{
public:
    virtual ~Clock();

    /// Nanoseconds since an arbitrary moment. The count never decreases.
    virtual std::int64_t NowNs() = 0;

    /// Returns after about `durationNs` nanoseconds and never much earlier.
    virtual void SleepNs(std::int64_t durationNs) = 0;

    /// The machine's own clock, which is never destroyed.
    static Clock& System();
};

} // namespace qlt
