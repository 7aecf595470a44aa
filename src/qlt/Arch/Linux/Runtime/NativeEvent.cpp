#include "Runtime/NativeEvent.h"

#include "Runtime/SystemError.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>

namespace qlt
{
namespace
{

struct Event
{
    explicit Event(bool reset)
        : manualReset(reset)
    {
    }

    const bool manualReset;
    std::mutex mutex;
    std::condition_variable changed;
    bool signalled = false;
};

/// Which handle means which event, so that what is not an event is told apart instead of followed.
class EventTable
{
public:
    NativeEventHandle Add(const std::wstring& name, bool manualReset)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        std::shared_ptr<Event> event = name.empty() ? nullptr : mNamed[name].lock();
        if (event == nullptr)
        {
            event = std::make_shared<Event>(manualReset);
            if (!name.empty())
            {
                mNamed[name] = event;
            }
        }
        mLastHandle += 4; // like a kernel's: small, even, never null
        const auto handle = reinterpret_cast<NativeEventHandle>(mLastHandle);
        mEvents.emplace(handle, std::move(event));
        return handle;
    }

    std::shared_ptr<Event> Find(NativeEventHandle handle)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        const auto found = mEvents.find(handle);
        return found == mEvents.end() ? nullptr : found->second;
    }

    bool Remove(NativeEventHandle handle)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (mEvents.erase(handle) == 0)
        {
            return false;
        }
        for (auto named = mNamed.begin(); named != mNamed.end();)
        {
            named = named->second.expired() ? mNamed.erase(named) : std::next(named);
        }
        return true;
    }

private:
    std::mutex mMutex;
    std::uintptr_t mLastHandle = 0;
    std::map<NativeEventHandle, std::shared_ptr<Event>> mEvents;
    std::map<std::wstring, std::weak_ptr<Event>> mNamed;
};

/// Never destroyed: an application's static objects may close their events after any of ours.
EventTable& Table()
{
    static EventTable& table = *new EventTable;
    return table;
}

} // namespace

NativeEventHandle CreateNativeEvent(const std::wstring& name, bool manualReset)
{
    return Table().Add(name, manualReset);
}

bool SetNativeEvent(NativeEventHandle handle)
{
    const std::shared_ptr<Event> event = Table().Find(handle);
    if (event == nullptr)
    {
        SetLastSystemError(EBADF);
        return false;
    }
    const std::lock_guard<std::mutex> lock(event->mutex);
    event->signalled = true;
    event->manualReset ? event->changed.notify_all() : event->changed.notify_one();
    return true;
}

std::uint32_t WaitNativeEvent(NativeEventHandle handle, std::uint32_t timeoutMs)
{
    const std::shared_ptr<Event> event = Table().Find(handle);
    if (event == nullptr)
    {
        SetLastSystemError(EBADF);
        return WAIT_ERROR;
    }
    std::unique_lock<std::mutex> lock(event->mutex);
    const auto signalled = [&event] { return event->signalled; };
    if (timeoutMs == WAIT_FOREVER)
    {
        event->changed.wait(lock, signalled);
    }
    else if (!event->changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), signalled))
    {
        return WAIT_TIMED_OUT;
    }
    event->signalled = event->manualReset;
    return WAIT_SIGNALLED;
}

bool CloseNativeEvent(NativeEventHandle handle)
{
    if (!Table().Remove(handle))
    {
        SetLastSystemError(EBADF);
        return false;
    }
    return true;
}

} // namespace qlt
