#include "fakes/AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<long> gAllocations{0};
thread_local long tAllocations = 0;

} // namespace

long AllocationCount() { return gAllocations; }

long ThreadAllocationCount() { return tAllocations; }

void* operator new(std::size_t size)
{
    ++gAllocations;
    ++tAllocations;
    if (void* memory = std::malloc(size))
    {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
