// The calling thread's last error, and the end of the process. Each wing implements these functions
// for its system.
#pragma once

#include <cstdint>
#include <string>

namespace qlt
{

/// The calling thread's last error: GetLastError on Windows, errno elsewhere. 0 means that there is
/// none.
std::uint32_t LastSystemError() noexcept;

void SetLastSystemError(std::uint32_t code) noexcept;

/// The system's own text for `code` in UTF-16, with the trailing line break that Windows adds.
/// Empty when the system has no text for it. The call may change the last error.
std::u16string SystemErrorText(std::uint32_t code);

/// Ends the process like a failed range check of the C runtime: with status 0xC0000409 on Windows,
/// by abort elsewhere. It flushes nothing and runs no handler.
[[noreturn]] void EndProcessOnRangeCheck() noexcept;

} // namespace qlt
