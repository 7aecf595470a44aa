#pragma once

#include <qltkit/Capture/CaptureItem.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <vector>

namespace qltkit
{

/// Passes reports from threads that must not wait to the thread that writes them. A full ring
/// refuses a report.
class ReportRing
{
public:
    struct Entry
    {
        std::int64_t hostTimeNs = 0;
        CaptureReport report{};
    };

    /// Allocates the next power of two slots. It touches all memory now, so no page fault happens
    /// later.
    explicit ReportRing(std::size_t atLeast)
        : mSlots(PowerOfTwo(atLeast))
    {
        for (std::size_t i = 0; i < mSlots.size(); ++i)
        {
            mSlots[i].turn.store(i, std::memory_order_relaxed);
        }
    }

    /// Adds a report. Returns false when the ring is full. Any thread.
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
                return false; // the slot still holds the report of the previous round
            }
            else
            {
                place = mEnd.load(std::memory_order_relaxed);
            }
        }
    }

    /// The number of reports that have been added.
    std::uint64_t End() const noexcept { return mEnd.load(std::memory_order_acquire); }

    /// Takes the next report. Returns false when it has not arrived yet. Only one thread may call
    /// it.
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
    /// While the slot is free, `turn` is the position of the report that it waits for. While the
    /// slot holds this report, `turn` is the position + 1.
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
    alignas(64) std::atomic<std::uint64_t> mEnd{0}; // it is on another cache line than mBegin
    alignas(64) std::uint64_t mBegin = 0;
};

} // namespace qltkit
