#include "output/FileNames.h"

#include <algorithm>
#include <cwctype>
#include <windows.h>

// Its names, CON and CONOUT$, are devices' names.
bool IsStandardOutput(const std::filesystem::path&) { return false; }

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

bool AreSameName(const std::filesystem::path& a, const std::filesystem::path& b)
{
    const std::wstring first = std::filesystem::path(a).make_preferred().wstring();
    const std::wstring second = std::filesystem::path(b).make_preferred().wstring();
    return CompareStringOrdinal(first.c_str(), -1, second.c_str(), -1, TRUE) == CSTR_EQUAL;
}
