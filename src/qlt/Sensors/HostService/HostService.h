// The functions of vr_host_client_lib, the client library of the host service. The service tracks
// objects from outside the process. Every function returns 0 for success. Handles are opaque.
#pragma once

#include <cstdint>
#include <functional>

namespace qlt
{

struct HostService
{
    using Status = std::int32_t;
    using Handle = std::uint64_t;

    /// The record that a read fills in.
    struct NotificationRecord
    {
        std::uint32_t type;
        std::uint32_t padding;
        Handle handle;       // lent with the notification
        std::uint64_t extra; // nobody reads it
    };
    static_assert(sizeof(NotificationRecord) == 24, "the library's layout");

    using Create = Status (*)(Handle* created);
    using Act = Status (*)(Handle handle);
    using ActOn = Status (*)(Handle handle, Handle lent);
    using GetHandle = Status (*)(Handle handle, Handle* result);
    using Read = Status (*)(Handle handle, NotificationRecord* record);
    using Connect = Status (*)(Handle handle, Handle info, Handle* connected, std::uint32_t mode);
    using GetDescriptor = Status (*)(Handle scene, Handle* descriptor, const void** data);
    using GetPointer = Status (*)(Handle handle, void** pointer);

    Create clientManagerCreate = nullptr;
    GetHandle clientManagerStart = nullptr;
    Read clientManagerReadNotification = nullptr;
    Connect clientManagerConnectClient = nullptr;
    ActOn clientManagerDeleteHandle = nullptr;
    Act clientManagerStop = nullptr;
    Act clientManagerDestroy = nullptr;

    GetHandle clientGetNotificationHandle = nullptr;
    Read clientReadNotification = nullptr;
    Connect clientConnectDevice = nullptr;
    ActOn clientDeleteHandle = nullptr;
    Act clientDestroy = nullptr;

    GetHandle deviceGetNotificationHandle = nullptr;
    Read deviceReadNotification = nullptr;
    Connect deviceConnectCamera = nullptr;
    Connect deviceConnectScene = nullptr;
    ActOn deviceDeleteHandle = nullptr;
    Act deviceDestroy = nullptr;

    GetHandle cameraGetNotificationHandle = nullptr;
    Act cameraDestroy = nullptr;

    GetHandle sceneGetNotificationHandle = nullptr;
    GetDescriptor sceneGetCurrentDescriptor = nullptr;
    ActOn sceneReturnDescriptor = nullptr;
    Act sceneDestroy = nullptr;

    GetPointer getHandlePtr = nullptr;

    /// `installed` says that the library is on this machine. `complete` says that it has every
    /// function.
    bool installed = false;
    bool complete = false;

    /// Finds a function of the library by its name; null when the library has none.
    using Finder = std::function<void*(const char* name)>;

    static HostService Load(const Finder& find);

    /// The machine's own service. The first call loads the library, which stays loaded.
    static const HostService& System();
};

} // namespace qlt
