#include "Sensors/ClientThread.h"

#include <qlt/Runtime/VRException.h>

#include "Runtime/LastErrorText.h"

#include <utility>

namespace qlt
{
namespace
{

using namespace vr_host_client;

// Notification types, by the connection that they are read from.
constexpr std::uint32_t CLIENT_AVAILABLE = 4;
constexpr std::uint32_t CLIENT_WITHDRAWN = 5;
constexpr std::uint32_t DEVICE_AVAILABLE = 1;
constexpr std::uint32_t DEVICE_WITHDRAWN = 2;
constexpr std::uint32_t CAMERA_AVAILABLE = 7;
constexpr std::uint32_t CAMERA_WITHDRAWN = 8;
constexpr std::uint32_t SCENE_AVAILABLE = 12;
constexpr std::uint32_t SCENE_WITHDRAWN = 13;

/// Hands every pending notification of `connection` to `handle`, and gives it back.
template <typename Source, typename Handler>
void Drain(const Source& connection, const Handler& handle)
{
    while (std::optional<Notification> notification = connection.ReadNotification())
    {
        handle(*notification);
        notification->info.GiveBack();
    }
}

/// Drops a connection whose end the service may refuse.
template <typename Owned>
void Disconnect(std::unique_ptr<Owned>& connection)
{
    if (connection != nullptr)
    {
        connection->Disconnect();
        connection = nullptr;
    }
}

} // namespace

CurrentScene::Scene CurrentScene::Get() const
{
    if (!mConnected)
    {
        return nullptr;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    return mScene;
}

void CurrentScene::Set(Scene scene)
{
    mConnected = scene != nullptr;
    // Swapped, so that the last reference to the old scene goes without the lock.
    const std::lock_guard<std::mutex> lock(mMutex);
    mScene.swap(scene);
}

ClientThread::ClientThread(CurrentScene& scene, const HostService& service)
    : mService(service)
    , mScene(scene)
{
    if (mService.installed)
    {
        mClientManager = std::make_unique<ClientManager>(mService);
    }
}

ClientThread::~ClientThread() noexcept(false) { Shutdown(); }

void ClientThread::Shutdown()
{
    if (std::exchange(mShutDown, true))
    {
        return;
    }
    Stop(true);
    mScene.Set(nullptr);
    mCamera = nullptr;
    Disconnect(mDevice);
    Disconnect(mClient);
    if (mClientManager != nullptr)
    {
        mClientManager->Stop();
    }
}

void ClientThread::Run()
{
    if (mClientManager != nullptr)
    {
        mClientManager->Start();
    }
    mStartedEvent.Set();
    while (Pass())
    {
    }
}

/// Waits for the next thing to happen and does it; false when the owner wants an end.
bool ClientThread::Pass()
{
    mFlags = {};
    NativeEventHandle events[4] = {mStopEvent.Handle()};
    const Connection* sources[4] = {};
    std::size_t count = 1;
    const auto add = [&](const Connection* source)
    {
        if (source != nullptr)
        {
            sources[count] = source;
            events[count] = source->NotificationEvent().Handle();
            ++count;
        }
    };
    add(mClientManager.get());
    add(mClient.get());
    add(mDevice.get());

    const std::uint32_t result = WaitNativeEvents(events, count, WAIT_FOREVER);
    if (result >= count && result != WAIT_TIMED_OUT)
    {
        throw VRExceptionSoftware(VR_STATUS_ERROR_SOFTWARE, GetLastErrorText());
    }
    const Connection* source = result < count ? sources[result] : nullptr;
    if (source != nullptr && source == mClientManager.get())
    {
        Drain(*mClientManager, [this](const Notification& n) { HandleManager(n); });
    }
    else if (source != nullptr && source == mClient.get())
    {
        Drain(*mClient, [this](const Notification& n) { HandleClient(n); });
    }
    else if (source != nullptr)
    {
        Drain(*mDevice, [this](const Notification& n) { HandleDevice(n); });
    }
    const bool stop = result == WAIT_SIGNALLED;
    DropLost(stop);
    return !stop;
}

void ClientThread::DropLost(bool stop)
{
    // deliberate: any loss drops the camera and the scene together; they come back together.
    if (stop || mFlags.client || mFlags.device || mFlags.scene || mFlags.camera)
    {
        mCamera = nullptr;
        mScene.Set(nullptr);
    }
    if (stop || mFlags.device || mFlags.client)
    {
        Disconnect(mDevice);
    }
    if (stop || mFlags.client)
    {
        Disconnect(mClient);
    }
}

void ClientThread::HandleManager(const Notification& notification)
{
    if (notification.type == CLIENT_AVAILABLE && mClient == nullptr)
    {
        mClient = std::make_unique<VRHostClient>(mService,
                                                 mClientManager->ConnectClient(notification.info));
    }
    else if (notification.type == CLIENT_WITHDRAWN && mClient != nullptr)
    {
        mFlags.client = true;
    }
}

void ClientThread::HandleClient(const Notification& notification)
{
    if (notification.type == DEVICE_AVAILABLE && mDevice == nullptr)
    {
        mDevice =
            std::make_unique<VRHostDevice>(mService, mClient->ConnectDevice(notification.info));
    }
    else if (notification.type == DEVICE_WITHDRAWN && mDevice != nullptr)
    {
        mFlags.device = true;
    }
}

void ClientThread::HandleDevice(const Notification& notification)
{
    if (notification.type == CAMERA_AVAILABLE && mCamera == nullptr)
    {
        mCamera = std::make_unique<VRHostDeviceCamera>(mService,
                                                       mDevice->ConnectCamera(notification.info));
    }
    else if (notification.type == CAMERA_WITHDRAWN && mCamera != nullptr)
    {
        mFlags.camera = true;
    }
    else if (notification.type == SCENE_AVAILABLE && mScene.Get() == nullptr)
    {
        mScene.Set(std::make_shared<VRHostDeviceScene>(mService,
                                                       mDevice->ConnectScene(notification.info)));
    }
    else if (notification.type == SCENE_WITHDRAWN && mScene.Get() != nullptr)
    {
        mFlags.scene = true;
    }
}

} // namespace qlt
