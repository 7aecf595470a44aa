// The side door of the fake host service: what a test has it do, and what it has seen. From any
// thread. Plain types only, because the fake is a library with a runtime of its own.
#pragma once

#include <cstddef>
#include <cstdint>

/// What announces and withdraws.
enum class HostSource
{
    MANAGER,
    CLIENT,
    DEVICE
};

/// An object's entry as the service writes it.
struct HostObject
{
    std::uint64_t unread;
    float position[3];
    float orientation[4]; // w x y z
    float confidence;
};

class HostServiceScript
{
public:
    /// Forgets failures, calls and objects. What is lent or connected stays, and so do mistakes.
    virtual void Reset() = 0;

    /// Queues a notification of `source`, and signals it unless `quiet`.
    virtual void Notify(HostSource source, std::uint32_t type, bool quiet = false) = 0;

    /// Makes every call of a function, by its exported name, return `status`. 0 ends that. With
    /// ZERO a call succeeds and gives a null handle or pointer; with NO_EVENT, a handle of no
    /// event.
    static constexpr std::int32_t ZERO = -1;
    static constexpr std::int32_t NO_EVENT = -2;
    virtual void Fail(const char* function, std::int32_t status) = 0;

    /// The objects of the next descriptors, and the number that they claim to have.
    virtual void SetObjects(const HostObject* objects, std::size_t count,
                            std::uint64_t claimed) = 0;

    /// How many notifications wait to be read; how many handles are lent; how many connections
    /// there are, the manager among them.
    virtual std::size_t Pending() const = 0;
    virtual std::size_t Lent() const = 0;
    virtual std::size_t Connected() const = 0;

    /// Calls with a handle that is not one, or no longer, or another's, or with a wrong constant.
    virtual std::size_t Mistakes() const = 0;

    /// Hands over the names of the calls so far, without reads, in their order.
    virtual void VisitCalls(void (*visit)(void* context, const char* function),
                            void* context) const = 0;

protected:
    ~HostServiceScript() = default;
};

/// The exported function that gives the script; from its first call on the service does nothing by
/// itself. Until then it announces all it has, one thing after the other.
using GetHostServiceScript = HostServiceScript* (*)();
constexpr const char* HOST_SERVICE_SCRIPT = "vr_host_client_lib_script";
