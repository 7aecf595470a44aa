// A fake client library of the host service. It has the 25 entry points and a list of everything
// that it has lent. HostServiceScript.h controls it.
#include "fakes/host_service/HostServiceScript.h"
#include "fakes/host_service/Signal.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace
{

using Status = std::int32_t;
using Handle = std::uint64_t;

constexpr Status OK = 0;
constexpr Status WRONG_ARGUMENT = 1;
constexpr Status NONE_PENDING = 12;
constexpr std::uint32_t CONNECT_MODE = 3;

enum Kind
{
    MANAGER, // the first three are those of HostSource
    CLIENT,
    DEVICE,
    CAMERA,
    SCENE,
    KINDS
};

struct Record
{
    std::uint32_t type;
    std::uint32_t padding;
    Handle handle;
    std::uint64_t extra;
};
static_assert(sizeof(Record) == 24);

class Service final : public HostServiceScript
{
public:
    /// The service for an entry point. It is locked until the end of the expression.
    struct Locked
    {
        Service* operator->() const { return &service; }

        Service& service;
        std::lock_guard<std::mutex> lock{service.mMutex};
    };

    Service()
    {
        std::generate(mSignals.begin(), mSignals.end(), CreateSignal);
        Reset();
    }

    // These functions are the script.

    void Reset() override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mFailures.clear();
        mCalls.clear();
        const HostObject objects[] = {{0, {0.5f, 1.5f, -2.0f}, {1, 0, 0, 0}, 1.0f},
                                      {0, {0.25f, 0.75f, -1.0f}, {0, 1, 0, 0}, 0.5f}};
        Describe(objects, 2, 2);
    }

    void Notify(HostSource source, std::uint32_t type, bool quiet) override
    {
        Locked { *this } -> Queue(static_cast<Kind>(source), type, quiet);
    }
    void Fail(const char* f, Status status) override
    {
        Locked { *this } -> mFailures[f] = status;
    }
    void SetObjects(const HostObject* objects, std::size_t count, std::uint64_t claimed) override
    {
        Locked { *this } -> Describe(objects, count, claimed);
    }

    std::size_t Pending() const override
    {
        return Size(mQueues[MANAGER]) + Size(mQueues[CLIENT]) + Size(mQueues[DEVICE]);
    }
    std::size_t Lent() const override { return Size(mLent); }
    std::size_t Connected() const override { return Size(mConnections); }
    std::size_t Mistakes() const override { return Size(mMistakes); }
    void VisitCalls(void (*visit)(void*, const char*), void* context) const override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        for (const std::string& call : mCalls)
        {
            visit(context, call.c_str());
        }
    }

    // These functions are the entry points, with their names.

    HostServiceScript* TakeControl()
    {
        mAutomatic = false;
        return this;
    }

    Status Create(const char* function, Handle* created)
    {
        mCalls.emplace_back(function);
        return Add(function, Answer(function, true), MANAGER, created);
    }

    Status LendSignal(const char* function, Kind kind, Handle handle, Handle* event)
    {
        if (!GivesZero(function)) // this leaves the caller's value
        {
            *event = mFailures[function] == NO_EVENT ? 0x7FFFFFF0 : mSignals[kind];
        }
        for (std::size_t i = 0; mAutomatic && i < mFirstNews[kind].size(); ++i)
        {
            Queue(kind, mFirstNews[kind][i], false);
        }
        return Enter(function, kind, handle);
    }

    Status Read(const char* function, Kind kind, Handle handle, Record* record)
    {
        const Status status = Answer(function, Has(mConnections, handle, kind));
        if (status != OK || mQueues[kind].empty())
        {
            ClearSignal(mSignals[kind]);
            return status != OK ? status : NONE_PENDING;
        }
        const Handle lent = GivesZero(function) ? 0 : ++mLastHandle;
        *record = {mQueues[kind].front(), 0, lent, 0xE0E0E0E0E0E0E0E0};
        mQueues[kind].pop_front();
        if (lent != 0)
        {
            mLent[lent] = handle;
        }
        return OK;
    }

    Status Connect(const char* function, Kind from, Handle handle, Handle info, Handle* connected,
                   std::uint32_t mode, Kind to)
    {
        // A new connection has no old notifications.
        mQueues[to].clear();
        ClearSignal(mSignals[to]);
        const bool isRight = Has(mLent, info, handle) && !Wrong(mode != CONNECT_MODE);
        return Add(function, Enter(function, from, handle, isRight), to, connected);
    }

    // A handle that is given back or destroyed is invalid, even when the call fails.

    Status TakeBack(const char* function, Kind kind, Handle owner, Handle lent)
    {
        return Enter(function, kind, owner, Has(mLent, lent, owner) && mLent.erase(lent) == 1);
    }

    Status Destroy(const char* function, Kind kind, Handle handle)
    {
        const Status status = Enter(function, kind, handle);
        mConnections.erase(handle);
        return status;
    }

    /// The status of a call that does nothing else.
    Status Enter(const char* function, Kind kind, Handle handle, bool isRight = true)
    {
        mCalls.emplace_back(function);
        return Answer(function, Has(mConnections, handle, kind) && isRight);
    }

    Status GetDescriptor(const char* function, Handle scene, Handle* handle, const void** data)
    {
        const Status status = Enter(function, SCENE, scene);
        if (status == OK)
        {
            *handle = ++mLastHandle;
            *data = GivesZero(function) ? nullptr : mDescriptors.back().data();
            mLent[*handle] = scene;
        }
        return status;
    }

    Status GetPointer(const char* function, Handle handle, void** pointer)
    {
        *pointer = &mSignals;
        return Answer(function, !Wrong(handle != 0 && mLent.count(handle) == 0));
    }

private:
    template <typename Container>
    std::size_t Size(const Container& container) const
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return container.size();
    }

    void Describe(const HostObject* objects, std::size_t count, std::uint64_t claimed)
    {
        static_assert(sizeof(HostObject) == 40);
        std::string& descriptor = mDescriptors.emplace_back(24, '\xDD');
        descriptor.append(reinterpret_cast<const char*>(&claimed), sizeof claimed);
        descriptor.append(reinterpret_cast<const char*>(objects), sizeof(HostObject) * count);
    }

    void Queue(Kind kind, std::uint32_t type, bool quiet)
    {
        mQueues[kind].push_back(type);
        if (!quiet)
        {
            SetSignal(mSignals[kind]);
        }
    }

    bool GivesZero(const char* function) { return mFailures[function] == ZERO; }

    /// The status of a call with these arguments.
    Status Answer(const char* function, bool isRight)
    {
        return isRight ? std::max(mFailures[function], OK) : WRONG_ARGUMENT;
    }

    Status Add(const char* function, Status status, Kind kind, Handle* created)
    {
        if (status == OK && !GivesZero(function))
        {
            *created = ++mLastHandle;
            mConnections[*created] = kind;
        }
        return status;
    }

    bool Wrong(bool condition)
    {
        mMistakes.append(condition ? 1 : 0, '!');
        return condition;
    }

    bool Has(const std::map<Handle, Handle>& ledger, Handle handle, Handle value)
    {
        const auto found = ledger.find(handle);
        return !Wrong(found == ledger.end() || found->second != value);
    }

    mutable std::mutex mMutex;
    bool mAutomatic = true;
    // The first notifications of each source when the service announces everything by itself.
    const std::vector<std::uint32_t> mFirstNews[KINDS] = {{4}, {1}, {7, 12}};
    Handle mLastHandle = 0x100000000; // more than 32 bits, so that a truncated handle is wrong
    std::array<Handle, KINDS> mSignals{};
    std::array<std::deque<std::uint32_t>, KINDS> mQueues;
    std::map<Handle, Handle> mConnections; // the kind of each connection
    std::map<Handle, Handle> mLent;        // the connection that lent each handle
    std::deque<std::string> mDescriptors;  // everything that is still lent
    std::map<std::string, Status> mFailures;
    std::vector<std::string> mCalls;
    std::string mMistakes; // one mark for each
};

/// The service is never destroyed, because the worker of a tracker that nobody stopped may still
/// call it.
Service::Locked Host()
{
    static Service& service = *new Service;
    return {service};
}

} // namespace

// These entry points have the same form.
#define LENDS_SIGNAL(name, kind)                                                                   \
    Status name(Handle h, Handle* e) { return Host()->LendSignal(__func__, kind, h, e); }
#define READS(name, kind)                                                                          \
    Status name(Handle h, Record* r) { return Host()->Read(__func__, kind, h, r); }
#define CONNECTS(name, from, to)                                                                   \
    Status name(Handle h, Handle info, Handle* connected, std::uint32_t mode)                      \
    {                                                                                              \
        return Host()->Connect(__func__, from, h, info, connected, mode, to);                      \
    }
#define TAKES_BACK(name, kind)                                                                     \
    Status name(Handle h, Handle lent) { return Host()->TakeBack(__func__, kind, h, lent); }
#define DESTROYS(name, kind)                                                                       \
    Status name(Handle h) { return Host()->Destroy(__func__, kind, h); }

extern "C"
{
    HostServiceScript* vr_host_client_lib_script() { return Host()->TakeControl(); }

    Status VRHostClientManager_create(Handle* h) { return Host()->Create(__func__, h); }
    LENDS_SIGNAL(VRHostClientManager_start, MANAGER)
    READS(VRHostClientManager_readNotification, MANAGER)
    CONNECTS(VRHostClientManager_connectClient, MANAGER, CLIENT)
    TAKES_BACK(VRHostClientManager_deleteHandle, MANAGER)
    Status VRHostClientManager_stop(Handle h) { return Host()->Enter(__func__, MANAGER, h); }
    DESTROYS(VRHostClientManager_destroy, MANAGER)
    LENDS_SIGNAL(VRHostClient_getNotificationHandle, CLIENT)
    READS(VRHostClient_readNotification, CLIENT)
    CONNECTS(VRHostClient_connectDevice, CLIENT, DEVICE)
    TAKES_BACK(VRHostClient_deleteHandle, CLIENT)
    DESTROYS(VRHostClient_destroy, CLIENT)
    LENDS_SIGNAL(VRHostDevice_getNotificationHandle, DEVICE)
    READS(VRHostDevice_readNotification, DEVICE)
    CONNECTS(VRHostDevice_connectCamera, DEVICE, CAMERA)
    CONNECTS(VRHostDevice_connectScene, DEVICE, SCENE)
    TAKES_BACK(VRHostDevice_deleteHandle, DEVICE)
    DESTROYS(VRHostDevice_destroy, DEVICE)
    LENDS_SIGNAL(VRHostDeviceCamera_getNotificationHandle, CAMERA)
    DESTROYS(VRHostDeviceCamera_destroy, CAMERA)
    LENDS_SIGNAL(VRHostDeviceScene_getNotificationHandle, SCENE)
    Status VRHostDeviceScene_getCurrentDescriptor(Handle h, Handle* lent, const void** data)
    {
        return Host()->GetDescriptor(__func__, h, lent, data);
    }
    TAKES_BACK(VRHostDeviceScene_returnDescriptor, SCENE)
    DESTROYS(VRHostDeviceScene_destroy, SCENE)
    Status VRHost_getHandlePtr(Handle h, void** p) { return Host()->GetPointer(__func__, h, p); }
}
