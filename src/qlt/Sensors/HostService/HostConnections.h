// The connections to the host service, from the manager down to a scene, and the handles that they
// lend. Each is given back exactly once, by its owner here:
//
//   ClientManager -> VRHostClient -> VRHostDevice -> VRHostDeviceCamera
//                                                 -> VRHostDeviceScene -> descriptors
//
// Failures of the service are thrown as VRException with its status. What may fail while giving
// back is an explicit call (Disconnect, GiveBack), so that the failure reaches its caller; a
// destructor gives back what is left, silently.
//
// Threads: all but the scene belong to the client thread. A scene is shared with the readers of
// poses and may be asked for descriptors from several threads at once.
#pragma once

#include "Runtime/VREvent.h"
#include "Sensors/HostService/HostService.h"

#include <optional>

namespace vr_host_client
{

using qlt::HostService;
using Handle = HostService::Handle;

/// A handle that a connection has lent.
class VRHandleObject
{
public:
    /// Throws "Cannot get handle pointer", having given the handle back.
    VRHandleObject(const HostService& service, HostService::ActOn giveBack, Handle owner,
                   Handle handle);
    VRHandleObject(VRHandleObject&& other) noexcept;
    VRHandleObject& operator=(VRHandleObject&&) = delete;
    ~VRHandleObject();

    Handle Get() const noexcept { return mHandle; }

    /// Throws the service's status, without a text. Nothing the second time.
    void GiveBack();

private:
    HostService::ActOn mGiveBack;
    Handle mOwner;
    Handle mHandle;
};

/// What the service announces or withdraws.
struct Notification
{
    std::uint32_t type;
    VRHandleObject info;
};

/// What the connections share: a handle, and the event that the service lends to wait on.
class Connection
{
public:
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const VREvent& NotificationEvent() const noexcept { return mNotification; }

protected:
    Connection(const HostService& service, Handle handle);
    ~Connection() = default;

    /// Gets the notification handle; throws `text` when that fails, VR_STATUS_ERROR_NULL_PTR when
    /// it is null.
    void AttachNotification(HostService::GetHandle get, const wchar_t* text);

    /// The next notification; nothing when none is pending.
    std::optional<Notification> Read(HostService::Read read, HostService::ActOn giveBack) const;

    /// Connects to what was announced; the new handle.
    Handle ConnectTo(HostService::Connect connect, const VRHandleObject& info,
                     const wchar_t* text) const;

    const HostService& mService;
    Handle mHandle;
    VREvent mNotification;
};

class VRHostDeviceCamera : public Connection
{
public:
    VRHostDeviceCamera(const HostService& service, Handle handle);
    ~VRHostDeviceCamera();
};

/// A descriptor on loan; its memory is readable until it is given back.
struct LentDescriptor
{
    const void* data;
    VRHandleObject holder;
};

class VRHostDeviceScene : public Connection
{
public:
    VRHostDeviceScene(const HostService& service, Handle handle);
    ~VRHostDeviceScene();

    /// The current descriptor; nothing when the service has none.
    std::optional<LentDescriptor> GetCurrentDescriptor() const;
};

class VRHostDevice : public Connection
{
public:
    VRHostDevice(const HostService& service, Handle handle);
    ~VRHostDevice();

    std::optional<Notification> ReadNotification() const;
    Handle ConnectCamera(const VRHandleObject& info) const;
    Handle ConnectScene(const VRHandleObject& info) const;

    /// Throws "Cannot disconnect from the device".
    void Disconnect();
};

class VRHostClient : public Connection
{
public:
    VRHostClient(const HostService& service, Handle handle);
    ~VRHostClient();

    std::optional<Notification> ReadNotification() const;
    Handle ConnectDevice(const VRHandleObject& info) const;

    /// Throws "Cannot disconnect from the service".
    void Disconnect();
};

class ClientManager : public Connection
{
public:
    /// Throws "Cannot create the client manager".
    explicit ClientManager(const HostService& service);
    ~ClientManager();

    /// Throws "Cannot start the client manager".
    void Start();

    std::optional<Notification> ReadNotification() const;
    Handle ConnectClient(const VRHandleObject& info) const;

    /// Stops and destroys; throws "Cannot stop the client manager", and VR_STATUS_ERROR_NULL_PTR
    /// the second time.
    void Stop();
};

} // namespace vr_host_client
