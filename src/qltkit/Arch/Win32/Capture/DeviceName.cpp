#include "Capture/DeviceName.h"

#include <algorithm>
#include <cwctype>
#include <string>

namespace qltkit
{

bool IsDeviceName(const std::filesystem::path& path)
{
    std::wstring name = path.filename().wstring();
    std::transform(name.begin(), name.end(), name.begin(), std::towupper);
    const bool isNumbered = name.size() == 4 && std::iswdigit(name[3]) != 0 &&
                            (name.rfind(L"COM", 0) == 0 || name.rfind(L"LPT", 0) == 0);
    const std::wstring whole = std::filesystem::path(path).make_preferred().wstring();
    return isNumbered || name == L"CON" || name == L"CONOUT$" || name == L"NUL" || name == L"PRN" ||
           name == L"AUX" || whole.rfind(L"\\\\.\\", 0) == 0;
}

} // namespace qltkit
