// The control interface of the fake host service: commands of a test, and a log of the calls. Any
// thread may use it. It has plain types only, because the fake is a library with its own runtime.
#pragma once

#include <cstddef>
#include <cstdint>

/// The sources of announcements and withdrawals.
enum class HostSource
{
    MANAGER,
    CLIENT,
    DEVICE
};

/// The entry of an object in the form that the service writes.
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
    /// Forgets failures, calls and objects. It keeps lent handles, connections and mistakes.
    virtual void Reset() = 0;

    /// Queues a notification of `source`, and signals it unless `quiet`.
    virtual void Notify(HostSource source, std::uint32_t type, bool quiet = false) = 0;

    /// Makes every call of a function, by its exported name, return `status`. A status of 0 ends
    /// this. With ZERO a call succeeds and gives a null handle or pointer. With NO_EVENT it gives a
    /// handle that is no event.
    static constexpr std::int32_t ZERO = -1;
    static constexpr std::int32_t NO_EVENT = -2;
    virtual void Fail(const char* function, std::int32_t status) = 0;

    /// Sets the objects of the next descriptors, and the count that they announce.
    virtual void SetObjects(const HostObject* objects, std::size_t count,
                            std::uint64_t claimed) = 0;

    /// The numbers of unread notifications, of lent handles, and of connections. The manager counts
    /// as a connection.
    virtual std::size_t Pending() const = 0;
    virtual std::size_t Lent() const = 0;
    virtual std::size_t Connected() const = 0;

    /// The number of calls with an invalid handle, with a handle of another connection, or with a
    /// wrong constant.
    virtual std::size_t Mistakes() const = 0;

    /// Returns the names of the calls so far in their order, without reads, and forgets them.
    virtual void VisitCalls(void (*visit)(void* context, const char* function),
                            void* context) const = 0;

protected:
    ~HostServiceScript() = default;
};

/// The exported function that gives the script. Before its first call the service announces all of
/// its objects, one after the other. After it, the service does nothing by itself.
using GetHostServiceScript = HostServiceScript* (*)();
constexpr const char* HOST_SERVICE_SCRIPT = "vr_host_client_lib_script";
