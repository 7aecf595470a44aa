// An event as the service lends it. One body for each system.
#pragma once

#include <cstdint>

/// The handle of a new one; it lasts as long as the process.
std::uint64_t CreateSignal();

void SetSignal(std::uint64_t signal);

void ClearSignal(std::uint64_t signal);
