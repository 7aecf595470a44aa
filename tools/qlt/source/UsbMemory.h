// Asks the system about its limit for USB. Each wing implements this function for its system.
#pragma once

#include <optional>

/// The memory in MB that the system allows for all USB transfers in flight. 0 means no limit. Empty
/// when the limit is unknown or the system has no such setting.
std::optional<long> UsbMemoryMb();
