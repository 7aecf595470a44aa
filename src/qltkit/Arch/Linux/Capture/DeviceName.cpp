#include "Capture/DeviceName.h"

namespace qltkit
{

// The kernel provides the files in these folders. Some of them are other names of open files.
bool IsDeviceName(const std::filesystem::path& path)
{
    const std::string name = std::filesystem::absolute(path).lexically_normal().string();
    return name.rfind("/dev/", 0) == 0 || name.rfind("/proc/", 0) == 0;
}

} // namespace qltkit
