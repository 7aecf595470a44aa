#include "fakes/OpenHandles.h"

#include <cstdint>
#include <windows.h>

#include <tlhelp32.h>

// Do not use GetProcessHandleCount, because it is always 0 under Wine.
std::size_t CountOpenHandles()
{
    constexpr std::uintptr_t LIMIT = 0x4000; // the system gives the lowest free handle
    std::size_t count = 0;
    for (std::uintptr_t value = 4; value < LIMIT; value += 4)
    {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    }
    return count;
}

const std::size_t RUNTIME_HANDLES = 9;

std::size_t CountThreads()
{
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more != FALSE;
         more = Thread32Next(snapshot, &entry))
    {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(snapshot);
    return count;
}
