#include "FunctionTable.h"

#include <algorithm>
#include <array>
#include <utility>
#include <windows.h>

using Word = std::uintptr_t;
using Function = Word (*)(Word, Word, Word, Word, Word, Word);

/// Replaces the object's own function in a table. The calling convention allows it to read and
/// forward more arguments than there are.
struct FunctionTableEntry
{
    template <std::size_t slot>
    static Word Call(Word object, Word a, Word b, Word c, Word d, Word e)
    {
        const Word arguments[] = {object, a, b, c, d, e};
        const FunctionTable& table = *FunctionTable::tables.at(object);
        if (const auto result = table.mWatchers.at(slot)(arguments))
        {
            return static_cast<Word>(*result);
        }
        return reinterpret_cast<Function>(table.mClassTable[slot])(object, a, b, c, d, e);
    }
};

namespace
{

constexpr std::size_t SLOTS = 160; // no interface here has more; unused entries are only copied

template <std::size_t... slots>
constexpr std::array<Function, SLOTS> Entries(std::index_sequence<slots...>)
{
    return {FunctionTableEntry::Call<slots>...};
}

constexpr std::array<Function, SLOTS> ENTRIES = Entries(std::make_index_sequence<SLOTS>());

} // namespace

std::map<std::uintptr_t, FunctionTable*> FunctionTable::tables;

FunctionTable::FunctionTable(void* object)
    : mObject(static_cast<void***>(object))
    , mClassTable(*mObject)
    , mTable(SLOTS)
{
    MEMORY_BASIC_INFORMATION memory;
    VirtualQuery(mClassTable, &memory, sizeof memory);
    const void* end = static_cast<char*>(memory.BaseAddress) + memory.RegionSize;
    const auto readable = static_cast<std::size_t>(static_cast<void* const*>(end) - mClassTable);
    std::copy_n(mClassTable, std::min(readable, SLOTS), mTable.begin());
    tables[reinterpret_cast<Word>(object)] = this;
    *mObject = mTable.data();
}

FunctionTable::~FunctionTable()
{
    *mObject = mClassTable;
    tables.erase(reinterpret_cast<Word>(mObject));
}

void FunctionTable::Watch(std::size_t slot, Watcher watcher)
{
    mWatchers[slot] = std::move(watcher);
    mTable[slot] = reinterpret_cast<void*>(ENTRIES[slot]);
}
