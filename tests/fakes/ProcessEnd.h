// Checks how a child process of a death test has ended.
#pragma once

/// Returns true when the process ended as after a failed range check. On Windows `status` is then
/// the exit code 0xC0000409. Elsewhere it is the abort signal 6, plus 128 when a core was dumped.
inline bool EndedByRangeCheck(int status)
{
    return static_cast<unsigned>(status) == 0xC0000409U || (status & ~128) == 6;
}
