#include "Cores.h"

#include <algorithm>
#include <thread>

#include <sched.h>

void StayOnCore(unsigned core)
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(std::min(core, std::max(std::thread::hardware_concurrency(), 1U) - 1), &cores);
    sched_setaffinity(0, sizeof cores, &cores);
}
