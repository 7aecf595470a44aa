// An event is an eventfd, which is readable while it is signalled. Another library of the process
// may therefore pass its own eventfd as an event.
#include "Runtime/NativeEvent.h"

#include "Runtime/SystemError.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace qlt
{
namespace
{

using std::chrono::steady_clock;

struct Event
{
    std::wstring name;
    bool manualReset;
};

/// The events that were created here. Nothing else is written to, read from or closed.
struct EventTable
{
    std::mutex mutex;
    std::map<int, Event> events;
};

/// The table is never destroyed, because static objects of an application may close their events
/// last.
EventTable& Table()
{
    static EventTable& table = *new EventTable;
    return table;
}

/// The descriptor in `handle`; -1 when its value cannot be a descriptor.
int Descriptor(NativeEventHandle handle)
{
    const auto value = reinterpret_cast<std::intptr_t>(handle);
    return value > 0 && value <= INT_MAX ? static_cast<int>(value) : -1;
}

/// True when `fd` was created here; otherwise it sets the last error. The caller holds the lock of
/// the table.
bool IsKnown(int fd)
{
    if (Table().events.count(fd) != 0)
    {
        return true;
    }
    SetLastSystemError(EBADF);
    return false;
}

/// True when the caller gets the signal. Another waiter may take the signal of an auto-reset event
/// first.
bool TakeSignal(int fd)
{
    // The lock also orders the setter before the waiter.
    const std::lock_guard<std::mutex> lock(Table().mutex);
    const auto found = Table().events.find(fd);
    if (found == Table().events.end() || found->second.manualReset)
    {
        return true; // the library that lent us an event resets it itself
    }
    eventfd_t value = 0;
    return eventfd_read(fd, &value) == 0;
}

/// The milliseconds until `deadline`, rounded up, as poll takes them.
int Remaining(std::uint32_t timeoutMs, steady_clock::time_point deadline)
{
    if (timeoutMs == WAIT_FOREVER)
    {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - steady_clock::now()).count();
    return left < 0 ? 0 : left > INT_MAX ? INT_MAX : static_cast<int>(left);
}

} // namespace

NativeEventHandle CreateNativeEvent(const std::wstring& name, bool manualReset)
{
    EventTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.mutex);
    for (const auto& [fd, event] : table.events)
    {
        if (!name.empty() && event.name == name)
        {
            const int same = fcntl(fd, F_DUPFD_CLOEXEC, 1);
            if (same >= 0)
            {
                table.events.emplace(same, Event(event));
            }
            return same < 0 ? nullptr : reinterpret_cast<NativeEventHandle>(std::intptr_t{same});
        }
    }
    int fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (fd == 0) // 0 would be the null handle
    {
        fd = fcntl(fd, F_DUPFD_CLOEXEC, 1);
        close(0);
    }
    if (fd < 0)
    {
        return nullptr;
    }
    table.events.emplace(fd, Event{name, manualReset});
    return reinterpret_cast<NativeEventHandle>(std::intptr_t{fd});
}

bool SetNativeEvent(NativeEventHandle handle)
{
    const int fd = Descriptor(handle);
    const std::lock_guard<std::mutex> lock(Table().mutex);
    return IsKnown(fd) && eventfd_write(fd, 1) == 0;
}

std::uint32_t WaitNativeEvents(const NativeEventHandle* handles, std::size_t count,
                               std::uint32_t timeoutMs)
{
    const auto deadline = steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    pollfd waits[MAX_WAIT_EVENTS] = {};
    for (std::size_t i = 0; i < count; ++i)
    {
        waits[i].fd = Descriptor(handles[i]);
        waits[i].events = POLLIN;
        if (waits[i].fd < 0) // poll would ignore it
        {
            SetLastSystemError(EBADF);
            return WAIT_ERROR;
        }
    }
    for (;;)
    {
        const int ready = poll(waits, count, Remaining(timeoutMs, deadline));
        if (ready == 0 && Remaining(timeoutMs, deadline) == 0)
        {
            return WAIT_TIMED_OUT;
        }
        if (ready < 0 && errno != EINTR)
        {
            return WAIT_ERROR;
        }
        for (std::size_t i = 0; ready > 0 && i < count; ++i)
        {
            if ((waits[i].revents & (POLLNVAL | POLLERR)) != 0)
            {
                SetLastSystemError(EBADF);
                return WAIT_ERROR;
            }
            if (waits[i].revents != 0 && TakeSignal(waits[i].fd))
            {
                return WAIT_SIGNALLED + static_cast<std::uint32_t>(i);
            }
        }
    }
}

std::uint32_t WaitNativeEvent(NativeEventHandle handle, std::uint32_t timeoutMs)
{
    return WaitNativeEvents(&handle, 1, timeoutMs);
}

bool CloseNativeEvent(NativeEventHandle handle)
{
    const int fd = Descriptor(handle);
    const std::lock_guard<std::mutex> lock(Table().mutex);
    if (!IsKnown(fd))
    {
        return false;
    }
    Table().events.erase(fd);
    close(fd);
    return true;
}

} // namespace qlt
