#include "fakes/host_service/Signal.h"

#include <sys/eventfd.h>

std::uint64_t CreateSignal()
{
    return static_cast<std::uint64_t>(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
}

void SetSignal(std::uint64_t signal) { eventfd_write(static_cast<int>(signal), 1); }

void ClearSignal(std::uint64_t signal)
{
    eventfd_t value = 0;
    eventfd_read(static_cast<int>(signal), &value);
}
