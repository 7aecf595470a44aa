#include "Tracking/EventLine.h"

namespace qltkit
{
namespace
{

/// The period in which the dispatcher looks for events. The writer does not wake it, because waking
/// a thread may take a lock.
constexpr std::chrono::milliseconds LOOK_PERIOD(5);

} // namespace

void EventLine::Add(TrackerEvent::Kind kind, std::int64_t timeNs, std::uint32_t reports) noexcept
{
    mRing.Publish({kind, reports, timeNs, mRing.Count() + 1});
}

std::optional<TrackerEvent> EventLine::Poll()
{
    const std::lock_guard<std::mutex> lock(mPollMutex);
    TrackerEvent event;
    return Take(mPolled, event) ? std::optional(event) : std::nullopt;
}

void EventLine::SetHandler(Handler handler)
{
    const std::lock_guard<std::recursive_mutex> lock(mHandlerMutex);
    mHandler = handler ? std::make_shared<const Handler>(std::move(handler)) : nullptr;
    const std::lock_guard<std::mutex> threadLock(mThreadMutex);
    if (mHandler != nullptr && !mThread.joinable() && !mStopped)
    {
        mThread = std::thread([this] { Dispatch(); });
    }
}

void EventLine::Stop()
{
    {
        const std::lock_guard<std::mutex> lock(mThreadMutex);
        mStopped = true;
        mStopping.notify_all();
    }
    if (mThread.joinable())
    {
        mThread.join();
    }
}

bool EventLine::Take(std::uint64_t& next, TrackerEvent& event) const
{
    for (;; ++next)
    {
        const std::uint64_t count = mRing.Count();
        if (next == count)
        {
            return false;
        }
        if (count - next > SIZE)
        {
            next = count - SIZE;
        }
        if (mRing.Read(next, event))
        {
            ++next;
            return true;
        }
    }
}

void EventLine::Dispatch()
{
    std::unique_lock<std::mutex> lock(mThreadMutex);
    while (!mStopped)
    {
        lock.unlock();
        const bool called = CallHandler();
        lock.lock();
        if (!called)
        {
            mStopping.wait_for(lock, LOOK_PERIOD, [this] { return mStopped; });
        }
    }
}

/// Calls the handler with the next event. Returns false when there is no event or no handler.
bool EventLine::CallHandler()
{
    const std::lock_guard<std::recursive_mutex> lock(mHandlerMutex);
    const std::shared_ptr<const Handler> handler =
        mHandler; // a copy, because the handler may replace itself
    TrackerEvent event;
    if (handler == nullptr || !Take(mHandled, event))
    {
        return false;
    }
    (*handler)(event);
    return true;
}

} // namespace qltkit
