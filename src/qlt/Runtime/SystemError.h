// Seam to the system: the calling thread's last error and the end of the process. One body in each
// wing.
#pragma once

#include <cstdint>
#include <string>

namespace qlt
{

/// The calling thread's last error: GetLastError on Windows, errno elsewhere. 0 means none.
std::uint32_t LastSystemError() noexcept;

void SetLastSystemError(std::uint32_t code) noexcept;

/// The system's own text for `code` in UTF-16, trailing line break included where the system has
/// one; empty when it knows none. May change the last error.
std::u16string SystemErrorText(std::uint32_t code);

/// Ends the process as the C runtime's failed range check does: 0xC0000409 on Windows, abort
/// elsewhere. Nothing is flushed and no handler runs.
[[noreturn]] void EndProcessOnRangeCheck() noexcept;

} // namespace qlt
