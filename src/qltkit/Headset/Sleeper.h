#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace qltkit
{

/// A sleep that another thread can end. Any thread may call any operation.
class Sleeper
{
public:
    /// Sleeps. After WakeAll each sleep lasts one millisecond, so that a loop of sleeps does not
    /// spin.
    void SleepNs(std::int64_t durationNs)
    {
        SleepUntil(std::chrono::steady_clock::now() + std::chrono::nanoseconds(durationNs));
        if (IsAwake())
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    void SleepUntil(std::chrono::steady_clock::time_point end)
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait_until(lock, end, [this] { return IsAwake(); });
    }

    /// Ends all sleeps, now and in the future.
    void WakeAll()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mAwake = true;
        mChanged.notify_all();
    }

    bool IsAwake() const { return mAwake; }

private:
    std::mutex mMutex; // held while mAwake changes, so that no sleeper misses the change
    std::condition_variable mChanged;
    std::atomic<bool> mAwake{false};
};

} // namespace qltkit
