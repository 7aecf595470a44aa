// The handles that programs hold. A handle is a number that contains a kind, a generation and an
// index in the table. So the runtime recognises an invalid handle without touching memory through
// it. The caller serialises all operations.
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
    /// Adds an object and returns its handle. The handle is not 0, and this table has never used it
    /// before.
    std::uint64_t Add(HandleKind kind, void* object);

    void Remove(std::uint64_t number);

    /// Returns the object of a handle. Null when the handle is destroyed, of another kind or not
    /// from this table.
    void* Find(HandleKind kind, std::uint64_t number) const;

    /// The number of valid handles.
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

/// The handle of an object. It is valid as long as this member exists. `Handle` is the type that
/// programs see.
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

    /// Makes the handle invalid before its object is destroyed.
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

/// Returns the object of a handle. The class of the object determines the kind. Throws
/// XR_ERROR_HANDLE_INVALID when there is no such object.
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
