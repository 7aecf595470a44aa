// The events of a tracker on their way from the thread that reads reports, which never waits, to
// those who ask for them and to a handler, which may take its time.
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

class EventLine
{
public:
    using Handler = std::function<void(const TrackerEvent&)>;

    /// Calls the handler no more.
    ~EventLine() { Stop(); }

    /// On the one thread that reads reports.
    void Add(TrackerEvent::Kind kind, std::int64_t timeNs, std::uint32_t reports = 0) noexcept;

    /// The oldest event that this has not given yet. Any thread.
    std::optional<TrackerEvent> Poll();

    /// The handler gets every event that no handler has got yet, on a thread for it. Waits for a
    /// call of the last handler, unless it comes from there. Any thread.
    void SetHandler(Handler handler);

    /// Ends the handler's thread, for good.
    void Stop();

private:
    static constexpr std::size_t SIZE = 1024;

    /// The event at `next`, or the oldest that is still there; goes past it.
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
