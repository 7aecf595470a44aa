#include "output/FileNames.h"

#include <windows.h>

// Windows names standard output CON or CONOUT$. Both are names of devices, so no regular file has
// them.
bool IsStandardOutput(const std::filesystem::path&) { return false; }

bool AreSameName(const std::filesystem::path& a, const std::filesystem::path& b)
{
    const std::wstring first = std::filesystem::path(a).make_preferred().wstring();
    const std::wstring second = std::filesystem::path(b).make_preferred().wstring();
    return CompareStringOrdinal(first.c_str(), -1, second.c_str(), -1, TRUE) == CSTR_EQUAL;
}
