#include "source/UsbMemory.h"

std::optional<long> UsbMemoryMb() { return std::nullopt; }
