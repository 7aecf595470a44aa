#include "Sensors/HostService/HostConnections.h"

#include <qlt/Runtime/VRException.h>

#include <utility>

namespace vr_host_client
{
namespace
{

/// A constant of the service, which every connect call passes.
constexpr std::uint32_t CONNECT_MODE = 3;

void Check(HostService::Status status, const wchar_t* text)
{
    if (status != 0)
    {
        throw VRException(static_cast<VR_STATUS>(status), text);
    }
}

Handle CheckNotNull(Handle handle)
{
    if (handle == 0)
    {
        throw VRException(VR_STATUS_ERROR_NULL_PTR);
    }
    return handle;
}

} // namespace

VRHandleObject::VRHandleObject(const HostService& service, HostService::ActOn giveBack,
                               Handle owner, Handle handle)
    : mGiveBack(giveBack)
    , mOwner(owner)
    , mHandle(handle)
{
    void* data = nullptr; // the value is not used; the call only checks the handle
    const HostService::Status status = service.getHandlePtr(handle, &data);
    if (status != 0 && handle != 0)
    {
        mGiveBack(owner, handle); // the destructor will not run after a throw
    }
    Check(status, L"Cannot get handle pointer");
}

VRHandleObject::VRHandleObject(VRHandleObject&& other) noexcept
    : mGiveBack(other.mGiveBack)
    , mOwner(other.mOwner)
    , mHandle(std::exchange(other.mHandle, 0))
{
}

VRHandleObject::~VRHandleObject()
{
    if (mOwner != 0 && mHandle != 0)
    {
        mGiveBack(mOwner, mHandle);
    }
}

void VRHandleObject::GiveBack()
{
    const Handle handle = std::exchange(mHandle, 0);
    if (mOwner == 0 || handle == 0)
    {
        return;
    }
    const HostService::Status status = mGiveBack(mOwner, handle);
    if (status != 0)
    {
        throw VRException(static_cast<VR_STATUS>(status));
    }
}

Connection::Connection(const HostService& service, Handle handle)
    : mService(service)
    , mHandle(handle)
{
}

void Connection::AttachNotification(HostService::GetHandle get, const wchar_t* text)
{
    Handle event = 0;
    Check(get(mHandle, &event), text);
    CheckNotNull(event);
    mNotification.Attach(reinterpret_cast<qlt::NativeEventHandle>(event));
}

std::optional<Notification> Connection::Read(HostService::Read read,
                                             HostService::ActOn giveBack) const
{
    CheckNotNull(mHandle);
    HostService::NotificationRecord record{};
    if (read(mHandle, &record) != 0)
    {
        return std::nullopt;
    }
    return Notification{record.type, VRHandleObject(mService, giveBack, mHandle, record.handle)};
}

Handle Connection::ConnectTo(HostService::Connect connect, const VRHandleObject& info,
                             const wchar_t* text) const
{
    Handle connected = 0;
    Check(connect(mHandle, info.Get(), &connected, CONNECT_MODE), text);
    return CheckNotNull(connected);
}

VRHostDeviceCamera::VRHostDeviceCamera(const HostService& service, Handle handle)
    : Connection(service, handle)
{
    // deliberate: the text says "device" and not "device camera", because clients match it.
    AttachNotification(service.cameraGetNotificationHandle,
                       L"Cannot get the device notification handle");
}

VRHostDeviceCamera::~VRHostDeviceCamera() { mService.cameraDestroy(mHandle); }

VRHostDeviceScene::VRHostDeviceScene(const HostService& service, Handle handle)
    : Connection(service, handle)
{
    AttachNotification(service.sceneGetNotificationHandle,
                       L"Cannot get the device scene notification handle");
}

VRHostDeviceScene::~VRHostDeviceScene() { mService.sceneDestroy(mHandle); }

std::optional<LentDescriptor> VRHostDeviceScene::GetCurrentDescriptor() const
{
    Handle descriptor = 0;
    const void* data = nullptr;
    if (mService.sceneGetCurrentDescriptor(mHandle, &descriptor, &data) != 0)
    {
        return std::nullopt;
    }
    CheckNotNull(descriptor);
    if (data == nullptr)
    {
        mService.sceneReturnDescriptor(mHandle, descriptor); // nobody else will give it back
        throw VRException(VR_STATUS_ERROR_NULL_PTR);
    }
    return LentDescriptor{
        data, VRHandleObject(mService, mService.sceneReturnDescriptor, mHandle, descriptor)};
}

VRHostDevice::VRHostDevice(const HostService& service, Handle handle)
    : Connection(service, handle)
{
    AttachNotification(service.deviceGetNotificationHandle,
                       L"Cannot get the device notification handle");
}

VRHostDevice::~VRHostDevice()
{
    if (mHandle != 0)
    {
        mService.deviceDestroy(mHandle);
    }
}

std::optional<Notification> VRHostDevice::ReadNotification() const
{
    return Read(mService.deviceReadNotification, mService.deviceDeleteHandle);
}

Handle VRHostDevice::ConnectCamera(const VRHandleObject& info) const
{
    return ConnectTo(mService.deviceConnectCamera, info, L"Cannot connect to the device camera");
}

Handle VRHostDevice::ConnectScene(const VRHandleObject& info) const
{
    return ConnectTo(mService.deviceConnectScene, info, L"Cannot connect to the device scene");
}

void VRHostDevice::Disconnect()
{
    mNotification = VREvent();
    Check(mService.deviceDestroy(std::exchange(mHandle, 0)), L"Cannot disconnect from the device");
}

VRHostClient::VRHostClient(const HostService& service, Handle handle)
    : Connection(service, handle)
{
    AttachNotification(service.clientGetNotificationHandle,
                       L"Cannot get the client notification handle");
}

VRHostClient::~VRHostClient()
{
    if (mHandle != 0)
    {
        mService.clientDestroy(mHandle);
    }
}

std::optional<Notification> VRHostClient::ReadNotification() const
{
    return Read(mService.clientReadNotification, mService.clientDeleteHandle);
}

Handle VRHostClient::ConnectDevice(const VRHandleObject& info) const
{
    return ConnectTo(mService.clientConnectDevice, info, L"Cannot connect to the device");
}

void VRHostClient::Disconnect()
{
    mNotification = VREvent();
    Check(mService.clientDestroy(std::exchange(mHandle, 0)), L"Cannot disconnect from the service");
}

namespace
{

Handle CreateManager(const HostService& service)
{
    Handle manager = 0;
    const HostService::Status status =
        service.complete ? service.clientManagerCreate(&manager) : VR_STATUS_ERROR_NOT_SUPPORTED;
    Check(status, L"Cannot create the client manager");
    return manager;
}

} // namespace

ClientManager::ClientManager(const HostService& service)
    : Connection(service, CreateManager(service))
{
}

ClientManager::~ClientManager()
{
    if (mHandle != 0)
    {
        mService.clientManagerStop(mHandle);
        mService.clientManagerDestroy(mHandle);
    }
}

void ClientManager::Start()
{
    CheckNotNull(mHandle);
    AttachNotification(mService.clientManagerStart, L"Cannot start the client manager");
}

std::optional<Notification> ClientManager::ReadNotification() const
{
    return Read(mService.clientManagerReadNotification, mService.clientManagerDeleteHandle);
}

Handle ClientManager::ConnectClient(const VRHandleObject& info) const
{
    return ConnectTo(mService.clientManagerConnectClient, info, L"Cannot connect to the service");
}

void ClientManager::Stop()
{
    const Handle manager = CheckNotNull(std::exchange(mHandle, 0));
    const HostService::Status status = mService.clientManagerStop(manager);
    mNotification = VREvent();
    mService.clientManagerDestroy(manager);
    Check(status, L"Cannot stop the client manager");
}

} // namespace vr_host_client
