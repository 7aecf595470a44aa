#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace qltkit
{

/// Holds the last SIZE records of one writer for any number of readers. Nobody waits: the writer
/// overwrites the oldest record even while it is being read, and the reader detects this.
///
/// Each slot has a ticket that identifies its record. The ticket is odd while the writer stores the
/// record. All words are atomic. The writer stores words with release order, and readers load them
/// with acquire order. So a reader that has seen a word of a newer record also sees the newer
/// ticket when it checks the ticket again.
template <typename Record, std::size_t SIZE>
class SeqlockRing
{
    static_assert(std::is_trivially_copyable_v<Record>);
    static_assert(sizeof(Record) % sizeof(std::uint64_t) == 0);
    static_assert((SIZE & (SIZE - 1)) == 0);

public:
    /// Adds a record. Only the writing thread calls it.
    void Publish(const Record& record) noexcept
    {
        std::array<std::uint64_t, WORDS> words;
        std::memcpy(words.data(), &record, sizeof record);
        const std::uint64_t index = mCount.load(std::memory_order_relaxed);
        Slot& slot = mSlots[index % SIZE];
        slot.ticket.store(TicketOf(index) - 1, std::memory_order_relaxed);
        for (std::size_t i = 0; i < WORDS; ++i)
        {
            slot.words[i].store(words[i], std::memory_order_release);
        }
        slot.ticket.store(TicketOf(index), std::memory_order_release);
        mCount.store(index + 1, std::memory_order_release);
    }

    /// The number of records so far. The last one has the index Count() - 1.
    std::uint64_t Count() const noexcept { return mCount.load(std::memory_order_acquire); }

    /// Copies the first bytes of a record, or the whole record. Returns false when the record has
    /// been overwritten; the content of `part` is then useless.
    template <typename Part>
    bool Read(std::uint64_t index, Part& part) const noexcept
    {
        static_assert(std::is_trivially_copyable_v<Part> && sizeof(Part) <= sizeof(Record));
        static_assert(sizeof(Part) % sizeof(std::uint64_t) == 0);
        const Slot& slot = mSlots[index % SIZE];
        if (slot.ticket.load(std::memory_order_acquire) != TicketOf(index))
        {
            return false;
        }
        CopyWords(slot, reinterpret_cast<unsigned char*>(&part),
                  std::make_index_sequence<sizeof(Part) / sizeof(std::uint64_t)>());
        return slot.ticket.load(std::memory_order_relaxed) == TicketOf(index);
    }

private:
    static constexpr std::size_t WORDS = sizeof(Record) / sizeof(std::uint64_t);

    struct alignas(64) Slot
    {
        std::atomic<std::uint64_t> ticket{0};
        std::array<std::atomic<std::uint64_t>, WORDS> words{};
    };

    /// Copies each word directly to its place, without a loop. A processor stalls when it has
    /// written data in several pieces and then reads it in one piece.
    template <std::size_t... I>
    static void CopyWords(const Slot& slot, unsigned char* bytes, std::index_sequence<I...>)
    {
        (CopyWord(slot.words[I], bytes + I * sizeof(std::uint64_t)), ...);
    }

    static void CopyWord(const std::atomic<std::uint64_t>& from, unsigned char* to)
    {
        const std::uint64_t word = from.load(std::memory_order_acquire);
        std::memcpy(to, &word, sizeof word);
    }

    static constexpr std::uint64_t TicketOf(std::uint64_t index) { return 2 * index + 2; }

    std::array<Slot, SIZE> mSlots;
    std::atomic<std::uint64_t> mCount{0};
};

} // namespace qltkit
