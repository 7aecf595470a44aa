// A host service as its client library shows it: the 25 entry points, with a ledger of what it has
// lent. Scripted through HostServiceScript.h.
#include "fakes/host_service/HostServiceScript.h"
#include "fakes/host_service/Signal.h"

#include <array>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace
{

using Status = std::int32_t;
using Handle = std::uint64_t;

constexpr Status OK = 0;
constexpr Status NONE_PENDING = 12;
constexpr Status WRONG_ARGUMENT = 1;
constexpr std::uint32_t CONNECT_MODE = 3;

enum Kind
{
    MANAGER, // the first three as in HostSource
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
    Service()
    {
        for (Handle& signal : mSignals)
        {
            signal = CreateSignal();
        }
        SetTwoObjects();
    }

    // The script.

    void TakeControl()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mAutomatic = false;
    }

    void Reset() override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mFailures.clear();
        mZeros.clear();
        mCalls.clear();
        mMistakes = 0;
        SetTwoObjects();
    }

    void Notify(HostSource source, std::uint32_t type, bool quiet) override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        Queue(static_cast<Kind>(source), type, quiet);
    }

    void Fail(const char* function, std::int32_t status) override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mFailures[function] = status;
    }

    void GiveZero(const char* function) override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mZeros.insert(function);
    }

    void SetObjects(const HostObject* objects, std::size_t count, std::uint64_t claimed) override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        Describe(objects, count, claimed);
    }

    std::size_t Pending() const override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mQueues[MANAGER].size() + mQueues[CLIENT].size() + mQueues[DEVICE].size();
    }

    std::size_t Lent() const override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mLent.size();
    }

    std::size_t Connected() const override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mConnections.size();
    }

    std::size_t Mistakes() const override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mMistakes;
    }

    void VisitCalls(void (*visit)(void*, const char*), void* context) const override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        for (const std::string& call : mCalls)
        {
            visit(context, call.c_str());
        }
    }

    // The entry points, with their names.

    Status CreateManager(const char* function, Handle* created)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mCalls.emplace_back(function);
        return Failure(function) != OK ? Failure(function) : Add(function, MANAGER, created);
    }

    Status StartManager(const char* function, Handle manager, Handle* event)
    {
        const Status status = LendSignal(function, MANAGER, manager, event);
        const std::lock_guard<std::mutex> lock(mMutex);
        Announce(MANAGER, 4);
        return status;
    }

    Status LendSignal(const char* function, Kind kind, Handle handle, Handle* event)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mCalls.emplace_back(function);
        if (!Is(handle, kind))
        {
            return WRONG_ARGUMENT;
        }
        *event = mZeros.count(function) != 0 ? 0 : mSignals[kind];
        return Failure(function);
    }

    Status Read(const char* function, Kind kind, Handle handle, Record* record)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (!Is(handle, kind))
        {
            return WRONG_ARGUMENT;
        }
        if (Failure(function) != OK || mQueues[kind].empty())
        {
            ClearSignal(mSignals[kind]);
            return Failure(function) != OK ? Failure(function) : NONE_PENDING;
        }
        const Handle lent = mZeros.count(function) != 0 ? 0 : ++mLastHandle;
        *record = {mQueues[kind].front(), 0, lent, 0xE0E0E0E0E0E0E0E0};
        mQueues[kind].pop_front();
        if (lent != 0)
        {
            mLent[lent] = {handle, nullptr};
        }
        return OK;
    }

    Status Connect(const char* function, Kind from, Handle handle, Handle info, Handle* connected,
                   std::uint32_t mode, Kind to)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mCalls.emplace_back(function);
        if (!Is(handle, from) || !IsLent(handle, info) || Wrong(mode != CONNECT_MODE))
        {
            return WRONG_ARGUMENT;
        }
        if (Failure(function) != OK)
        {
            return Failure(function);
        }
        // A new connection has no news from before.
        mQueues[to].clear();
        ClearSignal(mSignals[to]);
        const Status status = Add(function, to, connected);
        switch (to)
        {
        case CLIENT:
            Announce(CLIENT, 1);
            break;
        case DEVICE:
            Announce(DEVICE, 7);
            Announce(DEVICE, 12);
            break;
        default:
            break;
        }
        return status;
    }

    // What is given back is gone, whatever the answer.
    Status TakeBack(const char* function, Kind kind, Handle owner, Handle lent)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mCalls.emplace_back(function);
        if (!Is(owner, kind) || !IsLent(owner, lent))
        {
            return WRONG_ARGUMENT;
        }
        mLent.erase(lent);
        return Failure(function);
    }

    Status Stop(const char* function, Handle manager)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mCalls.emplace_back(function);
        return Is(manager, MANAGER) ? Failure(function) : WRONG_ARGUMENT;
    }

    Status Destroy(const char* function, Kind kind, Handle handle)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mCalls.emplace_back(function);
        if (!Is(handle, kind))
        {
            return WRONG_ARGUMENT;
        }
        mConnections.erase(handle);
        for (const auto& entry : mLent)
        {
            Wrong(entry.second.owner == handle); // its owner went before it
        }
        return Failure(function);
    }

    Status GetDescriptor(const char* function, Handle scene, Handle* handle, const void** data)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mCalls.emplace_back(function);
        if (!Is(scene, SCENE))
        {
            return WRONG_ARGUMENT;
        }
        if (Failure(function) != OK)
        {
            return Failure(function);
        }
        *handle = ++mLastHandle;
        *data = mZeros.count(function) != 0 ? nullptr : mDescriptor->data();
        mLent[*handle] = {scene, mDescriptor};
        return OK;
    }

    Status GetPointer(const char* function, Handle handle, void** pointer)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (Wrong(handle != 0 && mLent.count(handle) == 0))
        {
            return WRONG_ARGUMENT;
        }
        *pointer = &mSignals;
        return Failure(function);
    }

private:
    using Descriptor = std::vector<unsigned char>;

    struct Loan
    {
        Handle owner;
        std::shared_ptr<const Descriptor> descriptor; // kept while it is lent
    };

    void SetTwoObjects()
    {
        const HostObject objects[] = {{0, {0.5f, 1.5f, -2.0f}, {1, 0, 0, 0}, 1.0f},
                                      {0, {0.25f, 0.75f, -1.0f}, {0, 1, 0, 0}, 0.5f}};
        Describe(objects, 2, 2);
    }

    void Describe(const HostObject* objects, std::size_t count, std::uint64_t claimed)
    {
        static_assert(sizeof(HostObject) == 40);
        const auto descriptor = std::make_shared<Descriptor>(32 + sizeof(HostObject) * count);
        std::memset(descriptor->data(), 0xDD, 24);
        std::memcpy(descriptor->data() + 24, &claimed, sizeof claimed);
        if (count != 0)
        {
            std::memcpy(descriptor->data() + 32, objects, sizeof(HostObject) * count);
        }
        mDescriptor = descriptor;
    }

    void Announce(Kind kind, std::uint32_t type)
    {
        if (mAutomatic)
        {
            Queue(kind, type, false);
        }
    }

    void Queue(Kind kind, std::uint32_t type, bool quiet)
    {
        mQueues[kind].push_back(type);
        if (!quiet)
        {
            SetSignal(mSignals[kind]);
        }
    }

    Status Failure(const std::string& function) const
    {
        const auto found = mFailures.find(function);
        return found == mFailures.end() ? OK : found->second;
    }

    Status Add(const char* function, Kind kind, Handle* created)
    {
        *created = 0;
        if (mZeros.count(function) == 0)
        {
            *created = ++mLastHandle;
            mConnections[*created] = kind;
        }
        return OK;
    }

    bool Wrong(bool condition)
    {
        mMistakes += condition ? 1 : 0;
        return condition;
    }

    bool Is(Handle handle, Kind kind)
    {
        const auto found = mConnections.find(handle);
        return !Wrong(found == mConnections.end() || found->second != kind);
    }

    bool IsLent(Handle owner, Handle lent)
    {
        const auto found = mLent.find(lent);
        return !Wrong(found == mLent.end() || found->second.owner != owner);
    }

    mutable std::mutex mMutex;
    bool mAutomatic = true;
    Handle mLastHandle = 0x100000000; // more than 32 bits, so that none are lost on the way
    std::array<Handle, KINDS> mSignals{};
    std::array<std::deque<std::uint32_t>, KINDS> mQueues;
    std::map<Handle, Kind> mConnections;
    std::map<Handle, Loan> mLent;
    std::shared_ptr<const Descriptor> mDescriptor;
    std::map<std::string, Status> mFailures;
    std::set<std::string> mZeros;
    std::vector<std::string> mCalls;
    std::size_t mMistakes = 0;
};

/// Never destroyed: the worker of an unstopped tracker may still call.
Service& TheService()
{
    static Service& service = *new Service;
    return service;
}

} // namespace

extern "C"
{
    HostServiceScript* vr_host_client_lib_script()
    {
        TheService().TakeControl();
        return &TheService();
    }

    Status VRHostClientManager_create(Handle* created)
    {
        return TheService().CreateManager(__func__, created);
    }
    Status VRHostClientManager_start(Handle manager, Handle* event)
    {
        return TheService().StartManager(__func__, manager, event);
    }
    Status VRHostClientManager_readNotification(Handle manager, Record* record)
    {
        return TheService().Read(__func__, MANAGER, manager, record);
    }
    Status VRHostClientManager_connectClient(Handle manager, Handle info, Handle* client,
                                             std::uint32_t mode)
    {
        return TheService().Connect(__func__, MANAGER, manager, info, client, mode, CLIENT);
    }
    Status VRHostClientManager_deleteHandle(Handle manager, Handle lent)
    {
        return TheService().TakeBack(__func__, MANAGER, manager, lent);
    }
    Status VRHostClientManager_stop(Handle manager) { return TheService().Stop(__func__, manager); }
    Status VRHostClientManager_destroy(Handle manager)
    {
        return TheService().Destroy(__func__, MANAGER, manager);
    }

    Status VRHostClient_getNotificationHandle(Handle client, Handle* event)
    {
        return TheService().LendSignal(__func__, CLIENT, client, event);
    }
    Status VRHostClient_readNotification(Handle client, Record* record)
    {
        return TheService().Read(__func__, CLIENT, client, record);
    }
    Status VRHostClient_connectDevice(Handle client, Handle info, Handle* device,
                                      std::uint32_t mode)
    {
        return TheService().Connect(__func__, CLIENT, client, info, device, mode, DEVICE);
    }
    Status VRHostClient_deleteHandle(Handle client, Handle lent)
    {
        return TheService().TakeBack(__func__, CLIENT, client, lent);
    }
    Status VRHostClient_destroy(Handle client)
    {
        return TheService().Destroy(__func__, CLIENT, client);
    }

    Status VRHostDevice_getNotificationHandle(Handle device, Handle* event)
    {
        return TheService().LendSignal(__func__, DEVICE, device, event);
    }
    Status VRHostDevice_readNotification(Handle device, Record* record)
    {
        return TheService().Read(__func__, DEVICE, device, record);
    }
    Status VRHostDevice_connectCamera(Handle device, Handle info, Handle* camera,
                                      std::uint32_t mode)
    {
        return TheService().Connect(__func__, DEVICE, device, info, camera, mode, CAMERA);
    }
    Status VRHostDevice_connectScene(Handle device, Handle info, Handle* scene, std::uint32_t mode)
    {
        return TheService().Connect(__func__, DEVICE, device, info, scene, mode, SCENE);
    }
    Status VRHostDevice_deleteHandle(Handle device, Handle lent)
    {
        return TheService().TakeBack(__func__, DEVICE, device, lent);
    }
    Status VRHostDevice_destroy(Handle device)
    {
        return TheService().Destroy(__func__, DEVICE, device);
    }

    Status VRHostDeviceCamera_getNotificationHandle(Handle camera, Handle* event)
    {
        return TheService().LendSignal(__func__, CAMERA, camera, event);
    }
    Status VRHostDeviceCamera_destroy(Handle camera)
    {
        return TheService().Destroy(__func__, CAMERA, camera);
    }

    Status VRHostDeviceScene_getNotificationHandle(Handle scene, Handle* event)
    {
        return TheService().LendSignal(__func__, SCENE, scene, event);
    }
    Status VRHostDeviceScene_getCurrentDescriptor(Handle scene, Handle* descriptor,
                                                  const void** data)
    {
        return TheService().GetDescriptor(__func__, scene, descriptor, data);
    }
    Status VRHostDeviceScene_returnDescriptor(Handle scene, Handle descriptor)
    {
        return TheService().TakeBack(__func__, SCENE, scene, descriptor);
    }
    Status VRHostDeviceScene_destroy(Handle scene)
    {
        return TheService().Destroy(__func__, SCENE, scene);
    }

    Status VRHost_getHandlePtr(Handle handle, void** pointer)
    {
        return TheService().GetPointer(__func__, handle, pointer);
    }
}
