// The functions of one COM object, each of which a test may watch or answer: the object gets a
// table of its own, so that others of its class keep theirs.
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
    /// The object and the arguments of a call, as many as there are; none may be a float.
    using Arguments = const std::uintptr_t*;

    /// The call's result in place of the object's own answer, or nothing.
    using Watcher = std::function<std::optional<std::int32_t>(Arguments arguments)>;

    explicit FunctionTable(void* object);

    /// Gives the object its class's table back.
    ~FunctionTable();
    FunctionTable(const FunctionTable&) = delete;
    FunctionTable& operator=(const FunctionTable&) = delete;

    /// `slot` counts the functions of the interface and its bases.
    void Watch(std::size_t slot, Watcher watcher);

private:
    friend struct FunctionTableEntry;

    static std::map<std::uintptr_t, FunctionTable*> tables; // by their objects

    void*** mObject;
    void** mClassTable;
    std::vector<void*> mTable;
    std::map<std::size_t, Watcher> mWatchers;
};
