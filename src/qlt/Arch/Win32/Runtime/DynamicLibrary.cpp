#include "Runtime/DynamicLibrary.h"

#include <windows.h>

namespace qlt
{
namespace
{

/// The folder of a loaded module (null: the program), with a backslash at its end; empty when the
/// system does not say.
std::wstring FolderOf(HMODULE module)
{
    std::wstring path(32768, L'\0'); // the longest that there is
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    path.resize(length);
    const std::size_t slash = path.rfind(L'\\');
    return slash == std::wstring::npos ? std::wstring() : path.substr(0, slash + 1);
}

/// The module that this code is in.
HMODULE OwnModule()
{
    HMODULE module = nullptr;
    const DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    GetModuleHandleExW(flags, reinterpret_cast<const wchar_t*>(&OwnModule), &module);
    return module;
}

/// From this folder alone; its own dependencies from there and from System32.
HMODULE LoadFrom(const std::wstring& folder, const std::wstring& file)
{
    if (folder.empty())
    {
        return nullptr;
    }
    return LoadLibraryExW((folder + file).c_str(), nullptr,
                          LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
}

} // namespace

LibraryHandle LoadInstalledLibrary(const std::string& name)
{
    const std::wstring file = std::wstring(name.begin(), name.end()) + L".dll";
    HMODULE library = LoadFrom(FolderOf(nullptr), file);
    if (library == nullptr)
    {
        library = LoadFrom(FolderOf(OwnModule()), file);
    }
    if (library == nullptr)
    {
        library = LoadLibraryExW(file.c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    }
    return library;
}

void* FindFunction(LibraryHandle library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

} // namespace qlt
