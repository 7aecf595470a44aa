#include <qlt/Runtime/VRException.h>

#include "Runtime/SystemError.h"
#include "Runtime/VRStatus.h"

#include <algorithm>

namespace
{

/// The largest number of characters that are read. The last one of them is dropped, as in every
/// text.
constexpr std::size_t MAX_TEXT = 1024;

std::string Narrow(const std::wstring& text)
{
    if (text.empty())
    {
        qlt::EndProcessOnRangeCheck();
    }
    std::string narrow;
    // deliberate: drop the last character, because the shortened texts are part of the interface.
    const std::size_t count = std::min(text.size(), MAX_TEXT) - 1;
    for (std::size_t i = 0; i < count; ++i)
    {
        const auto value = static_cast<unsigned long>(text[i]);
        if (value == 0 || value > 0xFF)
        {
            break;
        }
        narrow.push_back(static_cast<char>(value));
    }
    return narrow;
}

} // namespace

VRException::VRException(VR_STATUS code)
    : status(code)
    , message(qlt::StatusText(code))
{
}

VRException::VRException(VR_STATUS code, const std::wstring& text)
    : status(code)
    , message(Narrow(text))
{
}

VRException::~VRException() = default;

const char* VRException::what() const noexcept { return message.c_str(); }

VRExceptionTimeout::~VRExceptionTimeout() = default;

VRExceptionEvent::~VRExceptionEvent() = default;

VRExceptionSoftware::~VRExceptionSoftware() = default;
