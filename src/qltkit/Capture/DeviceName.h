// Finds the names of devices. Each wing implements this function for its system.
#pragma once

#include <filesystem>

namespace qltkit
{

/// True when the system reserves the name for a device or a pipe.
bool IsDeviceName(const std::filesystem::path& path);

} // namespace qltkit
