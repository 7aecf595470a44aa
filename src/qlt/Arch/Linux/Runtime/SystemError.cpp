#include "Runtime/SystemError.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace qlt
{

std::uint32_t LastSystemError() noexcept { return static_cast<std::uint32_t>(errno); }

void SetLastSystemError(std::uint32_t code) noexcept { errno = static_cast<int>(code); }

std::u16string SystemErrorText(std::uint32_t code)
{
    char buffer[256] = {};
    // The GNU form, which returns the text, in the buffer or not.
    const char* text = strerror_r(static_cast<int>(code), buffer, sizeof buffer);
    std::u16string result;
    for (; *text != '\0'; ++text)
    {
        result.push_back(static_cast<unsigned char>(*text));
    }
    return result;
}

void EndProcessOnRangeCheck() noexcept { std::abort(); }

} // namespace qlt
