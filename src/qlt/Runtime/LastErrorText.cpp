#include "Runtime/LastErrorText.h"

#include "Runtime/SystemError.h"

std::wstring GetLastErrorText()
{
    const std::uint32_t code = qlt::LastSystemError();
    if (code == 0)
    {
        return {};
    }
    const std::u16string text = qlt::SystemErrorText(code);
    std::wstring result;
    result.reserve(text.size());
    // Copy as many bytes as the text has characters. Byte i is the low or the high half of
    // character i / 2.
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const auto unit = static_cast<std::uint16_t>(text[i / 2]);
        const auto byte = static_cast<std::uint8_t>(i % 2 == 0 ? unit & 0xFF : unit >> 8);
        result.push_back(static_cast<wchar_t>(static_cast<signed char>(byte)));
    }
    return result;
}
