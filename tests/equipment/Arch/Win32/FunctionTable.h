// The function table of one COM object. A test may watch or answer each function. The object gets
// its own table, so other objects of its class keep theirs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

class FunctionTable
{
public:
    /// The object and all arguments of a call. No argument may be a float.
    using Arguments = const std::uintptr_t*;

    /// The result of the call. With no value, the object itself answers.
    using Watcher = std::function<std::optional<std::int32_t>(Arguments arguments)>;

    explicit FunctionTable(void* object);

    /// Gives the table of its class back to the object.
    ~FunctionTable();
    FunctionTable(const FunctionTable&) = delete;
    FunctionTable& operator=(const FunctionTable&) = delete;

    /// `slot` counts the functions of the interface and its bases.
    void Watch(std::size_t slot, Watcher watcher);

private:
    friend struct FunctionTableEntry;

    static std::map<std::uintptr_t, FunctionTable*> tables; // the tables by their objects

    void*** mObject;
    void** mClassTable;
    std::vector<void*> mTable;
    std::map<std::size_t, Watcher> mWatchers;
};
