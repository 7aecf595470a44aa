#include "fakes/OpenHandles.h"

#include <vector>

#include <windows.h>

#include <tlhelp32.h>
#include <winternl.h>

// Not GetProcessHandleCount, which is always 0 under Wine.
std::size_t CountOpenHandles()
{
    struct Entry
    {
        ULONG ownerPid;
        BYTE type;
        BYTE flags;
        USHORT value;
        PVOID object;
        ULONG access;
    };
    struct Table
    {
        ULONG count;
        Entry entries[1];
    };
    constexpr auto ALL_HANDLES = static_cast<SYSTEM_INFORMATION_CLASS>(16);
    constexpr LONG LENGTH_MISMATCH = static_cast<LONG>(0xC0000004);
    std::vector<BYTE> buffer(1 << 16);
    ULONG used = 0;
    LONG status = 0;
    while ((status = NtQuerySystemInformation(ALL_HANDLES, buffer.data(),
                                              static_cast<ULONG>(buffer.size()), &used)) ==
           LENGTH_MISMATCH)
    {
        buffer.resize(buffer.size() * 2);
    }
    if (status < 0)
    {
        return 0;
    }
    const auto* table = reinterpret_cast<const Table*>(buffer.data());
    std::size_t count = 0;
    for (ULONG i = 0; i < table->count; ++i)
    {
        count += table->entries[i].ownerPid == GetCurrentProcessId() ? 1 : 0;
    }
    return count;
}

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
