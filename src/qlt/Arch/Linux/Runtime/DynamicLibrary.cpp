#include "Runtime/DynamicLibrary.h"

#include <dlfcn.h>

namespace qlt
{
namespace
{

/// The folder of the library or program that contains this code, with a slash at its end.
std::string OwnFolder()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&OwnFolder), &info) == 0 || info.dli_fname == nullptr)
    {
        return {};
    }
    const std::string path = info.dli_fname;
    const std::size_t slash = path.rfind('/');
    // A program may have been started by a bare name. With a slash, dlopen does not search.
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

} // namespace

LibraryHandle LoadInstalledLibrary(const std::string& name)
{
    const std::string folder = OwnFolder();
    return folder.empty() ? nullptr
                          : dlopen((folder + "lib" + name + ".so").c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* FindFunction(LibraryHandle library, const char* name) { return dlsym(library, name); }

} // namespace qlt
