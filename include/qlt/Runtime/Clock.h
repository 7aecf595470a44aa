// Time as the trackers see it: a monotonic nanosecond count and a sleep. A replay or a test hands
// its own clock to a tracker; everybody else takes the machine's.
#pragma once

#include <qlt/Export.h>

#include <cstdint>

namespace qlt
{

/// Implementations must allow calls from several threads at once, and must outlive every tracker
/// and fusion that was given them.
class QLT_API Clock
{
public:
    virtual ~Clock();

    /// Nanoseconds since an arbitrary moment; never runs backwards.
    virtual std::int64_t NowNs() = 0;

    /// Returns after about `durationNs` nanoseconds, never much earlier.
    virtual void SleepNs(std::int64_t durationNs) = 0;

    /// The machine's own clock.
    static Clock& System();
};

} // namespace qlt
