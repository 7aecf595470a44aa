// An event that the service lends. Each system has its own implementation.
#pragma once

#include <cstdint>

/// The handle of a new event, which exists until the process ends.
std::uint64_t CreateSignal();

void SetSignal(std::uint64_t signal);

void ClearSignal(std::uint64_t signal);
