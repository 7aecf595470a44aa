#include "source/Interrupt.h"

#include <csignal>

namespace
{

volatile std::sig_atomic_t gInterrupted = 0;

void Interrupt(int) { gInterrupted = 1; }

} // namespace

void CatchInterrupts()
{
    std::signal(SIGINT, Interrupt);
    std::signal(SIGTERM, Interrupt);
}

bool Interrupted() { return gInterrupted != 0; }
