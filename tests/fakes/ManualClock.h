// A clock that stands still until the test moves it. A sleep ends only when the test wakes it.
#pragma once

#include <qlt/Runtime/Clock.h>

#include <atomic>
#include <chrono>
#include <thread>

/// Waits for another thread.
template <typename Condition>
void Until(const Condition& condition)
{
    while (!condition())
    {
        std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
}

class ManualClock final : public qlt::Clock
{
public:
    std::int64_t NowNs() override { return nowNs += stepNs; }

    void SleepNs(std::int64_t durationNs) override
    {
        lastSleepNs = durationNs;
        const int sleep = ++mSleeps;
        Until([&] { return mWakes >= sleep || mAwake; });
    }

    /// Waits until the `count`-th sleep since the beginning has begun.
    void WaitForSleep(int count)
    {
        Until([&] { return mSleeps >= count; });
    }

    /// Ends the current sleep and waits for the next one.
    void Cycle()
    {
        ++mWakes;
        WaitForSleep(mWakes + 1);
    }

    /// From now on every sleep returns at once.
    void KeepAwake() { mAwake = true; }

    std::atomic<std::int64_t> nowNs{0};
    std::atomic<std::int64_t> stepNs{0}; // the step of the time at every call of NowNs
    std::atomic<std::int64_t> lastSleepNs{0};

private:
    std::atomic<int> mSleeps{0};
    std::atomic<int> mWakes{0};
    std::atomic<bool> mAwake{false};
};
