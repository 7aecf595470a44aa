#include "fakes/host_service/Signal.h"

#include <windows.h>

std::uint64_t CreateSignal()
{
    return reinterpret_cast<std::uint64_t>(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

void SetSignal(std::uint64_t signal) { SetEvent(reinterpret_cast<HANDLE>(signal)); }

void ClearSignal(std::uint64_t signal) { ResetEvent(reinterpret_cast<HANDLE>(signal)); }
