#include "State/HandleTable.h"

namespace qltxr
{

namespace
{

// The bits of a handle from the highest to the lowest: a mark, the kind, the generation, and the
// index in the table.
//
//     1 kkkkkkk gggggggg gggggggg gggggggg gggggggg iiiiiiii iiiiiiii iiiiiiii
constexpr int PLACE_BITS = 24;
constexpr int KIND_SHIFT = 56;
constexpr std::uint64_t MARK = 0x80;
constexpr std::uint64_t PLACES = std::uint64_t{1} << PLACE_BITS;

std::uint64_t NumberOf(HandleKind kind, std::uint32_t generation, std::uint64_t place)
{
    return (MARK | static_cast<std::uint64_t>(kind)) << KIND_SHIFT |
           static_cast<std::uint64_t>(generation) << PLACE_BITS | place;
}

std::uint64_t PlaceOf(std::uint64_t number) { return number % PLACES; }

} // namespace

std::uint64_t HandleTable::Add(HandleKind kind, void* object)
{
    if (mFree.empty())
    {
        Require(mSlots.size() < PLACES, XR_ERROR_LIMIT_REACHED);
        mFree.reserve(mSlots.size() + 1); // Remove can then add an index without an allocation
        mSlots.emplace_back();
        mFree.push_back(static_cast<std::uint32_t>(mSlots.size() - 1));
    }
    const std::uint32_t place = mFree.back();
    mFree.pop_back();
    Slot& slot = mSlots[place];
    slot.object = object;
    slot.kind = kind;
    ++slot.generation;
    return NumberOf(kind, slot.generation, place);
}

void HandleTable::Remove(std::uint64_t number)
{
    const std::uint64_t place = PlaceOf(number);
    mSlots[place].object = nullptr;
    mFree.push_back(static_cast<std::uint32_t>(place));
}

void* HandleTable::Find(HandleKind kind, std::uint64_t number) const
{
    const std::uint64_t place = PlaceOf(number);
    if (place >= mSlots.size())
    {
        return nullptr;
    }
    const Slot& slot = mSlots[place];
    const bool alive = slot.object != nullptr && number == NumberOf(kind, slot.generation, place);
    return alive ? slot.object : nullptr;
}

} // namespace qltxr
