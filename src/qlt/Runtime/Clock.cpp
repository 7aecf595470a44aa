#include <qlt/Runtime/Clock.h>

#include <chrono>
#include <thread>

namespace qlt
{
namespace
{

class SystemClock final : public Clock
{
public:
    std::int64_t NowNs() override
    {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
    }

    void SleepNs(std::int64_t durationNs) override
    {
        // Do not use sleep_until on the steady clock, because it wakes a millisecond early on some
        // systems.
        std::this_thread::sleep_for(std::chrono::nanoseconds(durationNs));
    }
};

} // namespace

Clock::~Clock() = default;

Clock& Clock::System()
{
    // It is never deleted, because a leaked tracker may use it.
    static Clock& clock = *new SystemClock;
    return clock;
}

} // namespace qlt
