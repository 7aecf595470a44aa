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
    // The text is never translated, so each byte is a character. It is null for an unknown code.
    const char* text = strerrordesc_np(static_cast<int>(code));
    std::u16string result;
    for (; text != nullptr && *text != '\0'; ++text)
    {
        result.push_back(static_cast<unsigned char>(*text));
    }
    return result;
}

void EndProcessOnRangeCheck() noexcept { std::abort(); }

} // namespace qlt
