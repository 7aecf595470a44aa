#include "qltkit_c_api/Guard.h"

#include <qlt/Runtime/Log.h>

#include <condition_variable>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace qltkit
{
namespace
{

/// An installed handler.
struct LogTarget
{
    qltkit_LogHandler handler;
    void* user;
    int calls; // the calls in flight; the mutex of LogState guards it
};

struct LogState
{
    std::mutex mutex; // guards the members below
    std::condition_variable returned;
    std::shared_ptr<LogTarget> target; // null without a handler
    qlt::LogHandler previous = nullptr;
};

/// The state is never destroyed, because other threads may still print while the program ends.
LogState& State()
{
    static LogState& state = *new LogState;
    return state;
}

/// The calls of the current target in flight on this thread. A handler may remove itself, and it
/// may print a line itself.
thread_local LogTarget* gCalled = nullptr;
thread_local int gDepth = 0;

/// Passes a line on when the handler has been removed meanwhile.
void PassOn(qlt::LogHandler previous, qlt::LogLevel level, const char* line)
{
    if (previous != nullptr)
    {
        previous(level, line);
        return;
    }
    (level == qlt::LogLevel::Info ? std::cout : std::cerr) << std::string(line) + '\n'
                                                           << std::flush;
}

void CallTarget(qlt::LogLevel level, const char* line)
{
    LogState& state = State();
    std::unique_lock<std::mutex> lock(state.mutex);
    const std::shared_ptr<LogTarget> target = state.target;
    if (target == nullptr)
    {
        const qlt::LogHandler previous = state.previous;
        lock.unlock();
        PassOn(previous, level, line);
        return;
    }
    ++target->calls;
    lock.unlock();
    LogTarget* const outer = std::exchange(gCalled, target.get());
    const int depth = std::exchange(gDepth, outer == gCalled ? gDepth + 1 : 1);
    target->handler(static_cast<std::int32_t>(level), line, target->user);
    gCalled = outer;
    gDepth = depth;
    lock.lock();
    --target->calls;
    state.returned.notify_all();
}

void SetTarget(std::shared_ptr<LogTarget> target)
{
    LogState& state = State();
    std::unique_lock<std::mutex> lock(state.mutex);
    if (target != nullptr && state.target == nullptr)
    {
        const qlt::LogHandler previous = qlt::SetLogHandler(CallTarget);
        state.previous = previous == CallTarget ? state.previous : previous;
    }
    else if (target == nullptr && state.target != nullptr)
    {
        qlt::SetLogHandler(state.previous);
    }
    const std::shared_ptr<LogTarget> old = std::exchange(state.target, std::move(target));
    if (old != nullptr)
    {
        const int own = gCalled == old.get() ? gDepth : 0;
        state.returned.wait(lock, [&] { return old->calls <= own; });
    }
}

} // namespace
} // namespace qltkit

qltkit_Result qltkit_set_log_handler(qltkit_LogHandler handler, void* user)
{
    return qltkit::Guarded(
        [&]
        {
            using qltkit::LogTarget;
            qltkit::SetTarget(handler == nullptr
                                  ? nullptr
                                  : std::make_shared<LogTarget>(LogTarget{handler, user, 0}));
        });
}
