// The runtime's time in nanoseconds. It is the steady clock, which is the system's monotonic clock.
#pragma once

#include <openxr/openxr.h>

#include <chrono>

namespace qltxr
{

inline XrTime Now()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

inline std::chrono::steady_clock::time_point ToTimePoint(XrTime time)
{
    return std::chrono::steady_clock::time_point(
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(
            std::chrono::nanoseconds(time)));
}

} // namespace qltxr
