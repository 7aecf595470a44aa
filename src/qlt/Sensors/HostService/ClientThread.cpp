#include "Sensors/HostService/ClientThread.h"

#include <qlt/Runtime/VRException.h>

#include "Runtime/LastErrorText.h"

#include <array>
#include <utility>

namespace qlt
{
namespace
{

using namespace vr_host_client;

// The types of notifications. The manager sends the first pair, the client sends the second pair,
// and the device sends the others.
constexpr std::uint32_t CLIENT_AVAILABLE = 4;
constexpr std::uint32_t CLIENT_WITHDRAWN = 5;
constexpr std::uint32_t DEVICE_AVAILABLE = 1;
constexpr std::uint32_t DEVICE_WITHDRAWN = 2;
constexpr std::uint32_t CAMERA_AVAILABLE = 7;
constexpr std::uint32_t CAMERA_WITHDRAWN = 8;
constexpr std::uint32_t SCENE_AVAILABLE = 12;
constexpr std::uint32_t SCENE_WITHDRAWN = 13;

/// Passes every pending notification of `connection` to `handle` and then gives it back.
template <typename Source, typename Handler>
void Drain(const Source& connection, const Handler& handle)
{
    while (std::optional<Notification> notification = connection.ReadNotification())
    {
        handle(*notification);
        notification->info.GiveBack();
    }
}

/// Ends and drops a connection. Throws VRException when the service refuses.
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
    End();
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

/// Waits for the stop event and for notifications, and handles them. False when the owner has asked
/// the worker to stop.
bool ClientThread::Pass()
{
    const Source sources[] = {{mClientManager.get(), &ClientThread::DrainManager},
                              {mClient.get(), &ClientThread::DrainClient},
                              {mDevice.get(), &ClientThread::DrainDevice}};
    std::array<NativeEventHandle, 4> events{mStopEvent.Handle()};
    std::array<const Source*, 4> waited{};
    std::size_t count = 1;
    for (const Source& source : sources)
    {
        if (source.connection != nullptr)
        {
            waited[count] = &source;
            events[count] = source.connection->NotificationEvent().Handle();
            ++count;
        }
    }
    const std::uint32_t result = WaitNativeEvents(events.data(), count, WAIT_FOREVER);
    if (result >= count && result != WAIT_TIMED_OUT)
    {
        throw VRExceptionSoftware(VR_STATUS_ERROR_SOFTWARE, GetLastErrorText());
    }
    const bool stop = result == WAIT_SIGNALLED;
    Lost lost;
    if (!stop && result < count)
    {
        (this->*waited[result]->drain)(lost);
    }
    DropLost(lost, stop);
    return !stop;
}

void ClientThread::DropLost(const Lost& lost, bool stop)
{
    // deliberate: every loss drops both the camera and the scene, because they come back together.
    if (stop || lost.client || lost.device || lost.scene || lost.camera)
    {
        mCamera = nullptr;
        mScene.Set(nullptr);
    }
    if (stop || lost.device || lost.client)
    {
        Disconnect(mDevice);
    }
    if (stop || lost.client)
    {
        Disconnect(mClient);
    }
}

void ClientThread::DrainManager(Lost& lost)
{
    Drain(*mClientManager,
          [&](const Notification& notification)
          {
              if (notification.type == CLIENT_AVAILABLE && mClient == nullptr)
              {
                  mClient = std::make_unique<VRHostClient>(
                      mService, mClientManager->ConnectClient(notification.info));
              }
              else if (notification.type == CLIENT_WITHDRAWN && mClient != nullptr)
              {
                  lost.client = true;
              }
          });
}

void ClientThread::DrainClient(Lost& lost)
{
    Drain(*mClient,
          [&](const Notification& notification)
          {
              if (notification.type == DEVICE_AVAILABLE && mDevice == nullptr)
              {
                  mDevice = std::make_unique<VRHostDevice>(
                      mService, mClient->ConnectDevice(notification.info));
              }
              else if (notification.type == DEVICE_WITHDRAWN && mDevice != nullptr)
              {
                  lost.device = true;
              }
          });
}

void ClientThread::DrainDevice(Lost& lost)
{
    Drain(*mDevice, [&](const Notification& notification) { HandleDevice(notification, lost); });
}

void ClientThread::HandleDevice(const Notification& notification, Lost& lost)
{
    if (notification.type == CAMERA_AVAILABLE && mCamera == nullptr)
    {
        mCamera = std::make_unique<VRHostDeviceCamera>(mService,
                                                       mDevice->ConnectCamera(notification.info));
    }
    else if (notification.type == CAMERA_WITHDRAWN && mCamera != nullptr)
    {
        lost.camera = true;
    }
    else if (notification.type == SCENE_AVAILABLE && mScene.Get() == nullptr)
    {
        mScene.Set(std::make_shared<VRHostDeviceScene>(mService,
                                                       mDevice->ConnectScene(notification.info)));
    }
    else if (notification.type == SCENE_WITHDRAWN && mScene.Get() != nullptr)
    {
        lost.scene = true;
    }
}

} // namespace qlt
