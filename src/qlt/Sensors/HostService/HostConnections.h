// The connections to the host service, from the manager down to a scene, and the handles that they
// lend. Each of them has one owner, which gives it back exactly once:
//
//   ClientManager -> VRHostClient -> VRHostDevice -> VRHostDeviceCamera
//                                                 -> VRHostDeviceScene -> descriptors
//
// A failure of the service is thrown as a VRException with its status. Disconnect and GiveBack are
// explicit calls, so that their failure reaches the caller. A destructor gives back the rest
// silently.
//
// Threads: the client thread uses the connections. The readers of poses share the scene, so several
// threads at once may ask it for its descriptor.
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
    /// Throws "Cannot get handle pointer" after it has given the handle back.
    VRHandleObject(const HostService& service, HostService::ActOn giveBack, Handle owner,
                   Handle handle);
    VRHandleObject(VRHandleObject&& other) noexcept;
    VRHandleObject& operator=(VRHandleObject&&) = delete;
    ~VRHandleObject();

    Handle Get() const noexcept { return mHandle; }

    /// Gives the handle back. Throws the service's status without a text. A second call does
    /// nothing.
    void GiveBack();

private:
    HostService::ActOn mGiveBack;
    Handle mOwner;
    Handle mHandle;
};

/// An announcement or a withdrawal by the service.
struct Notification
{
    std::uint32_t type;
    VRHandleObject info;
};

/// The base class of the connections: a handle, and the event that the service signals for its
/// notifications.
class Connection
{
public:
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const VREvent& NotificationEvent() const noexcept { return mNotification; }

protected:
    Connection(const HostService& service, Handle handle);
    ~Connection() = default;

    /// Gets the notification handle. Throws `text` when that fails, and VR_STATUS_ERROR_NULL_PTR
    /// when the handle is null.
    void AttachNotification(HostService::GetHandle get, const wchar_t* text);

    /// The next notification; nothing when none is pending.
    std::optional<Notification> Read(HostService::Read read, HostService::ActOn giveBack) const;

    /// Connects to the announced object and returns its handle.
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

/// A descriptor that the service has lent. Its memory is readable until it is given back.
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

    /// Stops and destroys the manager. Throws "Cannot stop the client manager". A second call
    /// throws VR_STATUS_ERROR_NULL_PTR.
    void Stop();
};

} // namespace vr_host_client
