#include "source/UsbMemory.h"

#include <fstream>

std::optional<long> UsbMemoryMb()
{
    std::ifstream file("/sys/module/usbcore/parameters/usbfs_memory_mb");
    long megabytes = 0;
    return file >> megabytes ? std::optional<long>(megabytes) : std::nullopt;
}
