#pragma once

#include <qltkit/Tracking/TrackerEvent.h>

#include "Tracking/SeqlockRing.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace qltkit
{

/// Carries a tracker's events from the thread that reads reports to the threads that poll them and
/// to a handler. The reading thread never waits, even when a handler is slow.
class EventLine
{
public:
    using Handler = std::function<void(const TrackerEvent&)>;

    /// Stops the handler's thread.
    ~EventLine() { Stop(); }

    /// Adds an event. Only the thread that reads reports calls it.
    void Add(TrackerEvent::Kind kind, std::int64_t timeNs, std::uint32_t reports = 0) noexcept;

    /// Returns the oldest event that Poll has not returned yet. Any thread.
    std::optional<TrackerEvent> Poll();

    /// Sets the handler. It gets every event that no earlier handler has got, and it runs on its
    /// own thread. The call waits until the previous handler has returned, unless that handler made
    /// this call. Any thread.
    void SetHandler(Handler handler);

    /// Ends the handler's thread permanently.
    void Stop();

private:
    static constexpr std::size_t SIZE = 1024;

    /// Reads the event at `next`, or the oldest event after it that still exists, and moves `next`
    /// behind it.
    bool Take(std::uint64_t& next, TrackerEvent& event) const;

    void Dispatch();
    bool CallHandler();

    SeqlockRing<TrackerEvent, SIZE> mRing;
    std::mutex mPollMutex; // guards mPolled
    std::uint64_t mPolled = 0;
    std::recursive_mutex mHandlerMutex; // held during a call; guards the handler and mHandled
    std::shared_ptr<const Handler> mHandler;
    std::uint64_t mHandled = 0;
    std::mutex mThreadMutex; // guards the thread and mStopped
    std::condition_variable mStopping;
    bool mStopped = false;
    std::thread mThread;
};

} // namespace qltkit
