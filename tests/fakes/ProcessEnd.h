// How a child process of a death test ended.
#pragma once

/// Whether `status` is the end that a failed range check makes: the exit code 0xC0000409 where the
/// status is an exit code, killed by the abort signal (6, with 128 when a core was dumped)
/// elsewhere.
inline bool EndedByRangeCheck(int status)
{
    return static_cast<unsigned>(status) == 0xC0000409U || (status & ~128) == 6;
}
