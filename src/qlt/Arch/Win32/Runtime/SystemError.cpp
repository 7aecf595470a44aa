#include "Runtime/SystemError.h"

#include <windows.h>

#if defined(_MSC_VER)
#include <intrin.h>
#endif

namespace qlt
{

std::uint32_t LastSystemError() noexcept { return GetLastError(); }

void SetLastSystemError(std::uint32_t code) noexcept { SetLastError(code); }

std::u16string SystemErrorText(std::uint32_t code)
{
    wchar_t* text = nullptr;
    const DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const DWORD language = MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT);
    const DWORD length = FormatMessageW(flags, nullptr, code, language,
                                        reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    if (length == 0)
    {
        return {};
    }
    std::u16string result(text, text + length);
    LocalFree(text);
    return result;
}

void EndProcessOnRangeCheck() noexcept
{
    constexpr unsigned RANGE_CHECK_FAILURE = 8;
#if defined(_MSC_VER)
    __fastfail(RANGE_CHECK_FAILURE);
#else
    __asm__ volatile("int $0x29" : : "c"(RANGE_CHECK_FAILURE) : "memory");
    __builtin_unreachable();
#endif
}

} // namespace qlt
