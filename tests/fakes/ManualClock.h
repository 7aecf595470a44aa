// A clock that stands still until the test moves it. Sleepers wait for the test, too: a sleep ends
// when the test wakes it, never by itself.
#pragma once

#include <qlt/Runtime/Clock.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

class ManualClock final : public qlt::Clock
{
public:
    std::int64_t NowNs() override { return nowNs; }

    void SleepNs(std::int64_t durationNs) override
    {
        std::unique_lock<std::mutex> lock(mMutex);
        lastSleepNs = durationNs;
        ++mSleeps;
        mChanged.notify_all();
        mChanged.wait(lock, [this] { return mWakes >= mSleeps || mAwake; });
    }

    /// Waits until the `count`-th sleep since the beginning has begun.
    void WaitForSleep(int count)
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this, count] { return mSleeps >= count; });
    }

    /// Ends one sleep, the current or the next one.
    void Wake()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        ++mWakes;
        mChanged.notify_all();
    }

    /// From now on nobody sleeps.
    void KeepAwake()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mAwake = true;
        mChanged.notify_all();
    }

    std::atomic<std::int64_t> nowNs{0};
    std::atomic<std::int64_t> lastSleepNs{0};

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    int mSleeps = 0;
    int mWakes = 0;
    bool mAwake = false;
};
