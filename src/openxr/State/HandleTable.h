// The handles that programs hold. A handle is a number: kind, generation and place in the table, so
// that a dead or invented one is recognised without touching memory through it. The caller
// serialises all operations.
#pragma once

#include "State/Failure.h"

#include <cstdint>
#include <vector>

namespace qltxr
{

enum class HandleKind : std::uint8_t
{
    Instance = 1,
    Session,
    Space,
    Swapchain,
    ActionSet,
    Action,
};

class HandleTable
{
public:
    /// A number other than 0 that no handle of this table had before.
    std::uint64_t Add(HandleKind kind, void* object);

    void Remove(std::uint64_t number);

    /// The object; null when the handle is dead, of another kind, or none of this table.
    void* Find(HandleKind kind, std::uint64_t number) const;

    /// The number of living handles.
    std::size_t Size() const { return mSlots.size() - mFree.size(); }

private:
    struct Slot
    {
        void* object = nullptr;
        std::uint32_t generation = 0;
        HandleKind kind = HandleKind::Instance;
    };

    std::vector<Slot> mSlots;
    std::vector<std::uint32_t> mFree;
};

/// An object's handle, which lives as long as this. `Handle` is the type that programs see.
template <typename Handle, HandleKind KIND>
class Registration
{
public:
    Registration(HandleTable& table, void* object)
        : mTable(table)
        , mNumber(table.Add(KIND, object))
    {
    }
    ~Registration() { End(); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    Handle Get() const { return reinterpret_cast<Handle>(mNumber); }

    /// The handle dies before its object.
    void End()
    {
        if (mNumber != 0)
        {
            mTable.Remove(mNumber);
            mNumber = 0;
        }
    }

private:
    HandleTable& mTable;
    std::uint64_t mNumber;
};

/// The object of a handle, whose class names its kind; XR_ERROR_HANDLE_INVALID when there is none.
template <typename Object, typename Handle>
Object& Resolve(const HandleTable& table, Handle handle)
{
    void* object = table.Find(Object::KIND, reinterpret_cast<std::uint64_t>(handle));
    if (object == nullptr)
    {
        throw Failure{XR_ERROR_HANDLE_INVALID};
    }
    return *static_cast<Object*>(object);
}

} // namespace qltxr
