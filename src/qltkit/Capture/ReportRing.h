// Takes reports from threads that must not wait to the one that writes them. A full ring refuses.
#pragma once

#include <qltkit/Capture/CaptureItem.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <vector>

namespace qltkit
{

class ReportRing
{
public:
    struct Entry
    {
        std::int64_t hostTimeNs = 0;
        CaptureReport report{};
    };

    /// Makes room for the next power of two, and touches all of it, so that no later page fault
    /// does.
    explicit ReportRing(std::size_t atLeast)
        : mSlots(PowerOfTwo(atLeast))
    {
        for (std::size_t i = 0; i < mSlots.size(); ++i)
        {
            mSlots[i].turn.store(i, std::memory_order_relaxed);
        }
    }

    /// Any thread. False when the ring is full.
    bool Push(const std::uint8_t* report, std::int64_t hostTimeNs) noexcept
    {
        std::uint64_t place = mEnd.load(std::memory_order_relaxed);
        while (true)
        {
            Slot& slot = mSlots[place & (mSlots.size() - 1)];
            const std::uint64_t turn = slot.turn.load(std::memory_order_acquire);
            if (turn == place)
            {
                if (mEnd.compare_exchange_weak(place, place + 1, std::memory_order_relaxed))
                {
                    slot.entry.hostTimeNs = hostTimeNs;
                    std::copy_n(report, slot.entry.report.size(), slot.entry.report.begin());
                    slot.turn.store(place + 1, std::memory_order_release);
                    return true;
                }
            }
            else if (turn < place)
            {
                return false; // the report of the round before is still there
            }
            else
            {
                place = mEnd.load(std::memory_order_relaxed);
            }
        }
    }

    /// How many reports have been pushed since the beginning.
    std::uint64_t End() const noexcept { return mEnd.load(std::memory_order_acquire); }

    /// One thread. False when the next report is not there yet.
    bool Pop(Entry& entry) noexcept
    {
        Slot& slot = mSlots[mBegin & (mSlots.size() - 1)];
        if (slot.turn.load(std::memory_order_acquire) != mBegin + 1)
        {
            return false;
        }
        entry = slot.entry;
        slot.turn.store(mBegin + mSlots.size(), std::memory_order_release);
        ++mBegin;
        return true;
    }

private:
    /// `turn` is the place whose report may go in, and one more once it is there.
    struct Slot
    {
        std::atomic<std::uint64_t> turn{0};
        Entry entry;
    };

    static std::size_t PowerOfTwo(std::size_t atLeast)
    {
        std::size_t size = 2;
        while (size < atLeast)
        {
            size *= 2;
        }
        return size;
    }

    std::vector<Slot> mSlots;
    alignas(64) std::atomic<std::uint64_t> mEnd{0}; // apart from what the other thread changes
    alignas(64) std::uint64_t mBegin = 0;
};

} // namespace qltkit
