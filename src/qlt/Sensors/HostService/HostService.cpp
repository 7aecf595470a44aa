#include "Sensors/HostService/HostService.h"

#include "Runtime/DynamicLibrary.h"

namespace qlt
{
namespace
{

/// Fills a table of functions and remembers whether a function is missing.
class Filler
{
public:
    explicit Filler(const HostService::Finder& find)
        : mFind(find)
    {
    }

    template <typename Function>
    void Fill(Function& entry, const char* name)
    {
        entry = reinterpret_cast<Function>(mFind(name));
        mComplete = mComplete && entry != nullptr;
    }

    bool Complete() const { return mComplete; }

private:
    const HostService::Finder& mFind;
    bool mComplete = true;
};

} // namespace

HostService HostService::Load(const Finder& find)
{
    HostService service;
    Filler filler(find);
    filler.Fill(service.clientManagerCreate, "VRHostClientManager_create");
    filler.Fill(service.clientManagerStart, "VRHostClientManager_start");
    filler.Fill(service.clientManagerReadNotification, "VRHostClientManager_readNotification");
    filler.Fill(service.clientManagerConnectClient, "VRHostClientManager_connectClient");
    filler.Fill(service.clientManagerDeleteHandle, "VRHostClientManager_deleteHandle");
    filler.Fill(service.clientManagerStop, "VRHostClientManager_stop");
    filler.Fill(service.clientManagerDestroy, "VRHostClientManager_destroy");
    filler.Fill(service.clientGetNotificationHandle, "VRHostClient_getNotificationHandle");
    filler.Fill(service.clientReadNotification, "VRHostClient_readNotification");
    filler.Fill(service.clientConnectDevice, "VRHostClient_connectDevice");
    filler.Fill(service.clientDeleteHandle, "VRHostClient_deleteHandle");
    filler.Fill(service.clientDestroy, "VRHostClient_destroy");
    filler.Fill(service.deviceGetNotificationHandle, "VRHostDevice_getNotificationHandle");
    filler.Fill(service.deviceReadNotification, "VRHostDevice_readNotification");
    filler.Fill(service.deviceConnectCamera, "VRHostDevice_connectCamera");
    filler.Fill(service.deviceConnectScene, "VRHostDevice_connectScene");
    filler.Fill(service.deviceDeleteHandle, "VRHostDevice_deleteHandle");
    filler.Fill(service.deviceDestroy, "VRHostDevice_destroy");
    filler.Fill(service.cameraGetNotificationHandle, "VRHostDeviceCamera_getNotificationHandle");
    filler.Fill(service.cameraDestroy, "VRHostDeviceCamera_destroy");
    filler.Fill(service.sceneGetNotificationHandle, "VRHostDeviceScene_getNotificationHandle");
    filler.Fill(service.sceneGetCurrentDescriptor, "VRHostDeviceScene_getCurrentDescriptor");
    filler.Fill(service.sceneReturnDescriptor, "VRHostDeviceScene_returnDescriptor");
    filler.Fill(service.sceneDestroy, "VRHostDeviceScene_destroy");
    filler.Fill(service.getHandlePtr, "VRHost_getHandlePtr");
    service.installed = true;
    service.complete = filler.Complete();
    return service;
}

const HostService& HostService::System()
{
    static const HostService service = []
    {
        const LibraryHandle library = LoadInstalledLibrary("vr_host_client_lib");
        return library == nullptr
                   ? HostService()
                   : Load([library](const char* name) { return FindFunction(library, name); });
    }();
    return service;
}

} // namespace qlt
