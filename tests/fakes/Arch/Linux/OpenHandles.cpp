#include "fakes/OpenHandles.h"

#include <filesystem>

std::size_t CountOpenHandles()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}
