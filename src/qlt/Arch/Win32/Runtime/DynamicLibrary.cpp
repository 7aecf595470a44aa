#include "Runtime/DynamicLibrary.h"

#include <windows.h>

namespace qlt
{
namespace
{

/// The folder of a loaded module, with a backslash at its end. Null stands for the program. Empty
/// when the system does not know the folder.
std::wstring FolderOf(HMODULE module)
{
    std::wstring path(32768, L'\0'); // the longest path of the system
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

/// Loads a library from this folder only. Its dependencies come from this folder and from System32.
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
