// One body in each wing.
#pragma once

#include <optional>

/// How much memory, in MB, the system gives to all USB transfers in flight, 0 being any; nothing
/// where that is not known or not limited by a setting.
std::optional<long> UsbMemoryMb();
