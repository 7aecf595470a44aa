// The conversation with the host service: waits for its notifications, connects the client, the
// device, the camera and the scene as the service announces them and drops them as it withdraws
// them. Without the service's library it waits for its end and never has a connection.
//
// Threads: Scene from any thread; the rest belongs to the owner, and between Start and the end of
// Stop the connections belong to the worker. A failure of the service on the worker ends the
// process, as every exception that leaves a worker does.
#pragma once

#include "Runtime/VRThread.h"
#include "Sensors/HostConnections.h"

#include <memory>
#include <mutex>

namespace qlt
{

class ClientThread final : public VRThread
{
public:
    /// Creates the client manager; throws VRException "Cannot create the client manager".
    explicit ClientThread(const HostService& service = HostService::System());

    /// Shuts down if the owner has not; throws as Shutdown does.
    ~ClientThread() noexcept(false);

    /// Stops the worker and drops every connection, then the manager, from the last to the first.
    /// Throws VRException when the service refuses; what has not been dropped by then is dropped
    /// silently by the destructor. Nothing the second time.
    void Shutdown();

    /// The connected scene, null when there is none. It stays alive as long as it is held.
    std::shared_ptr<const vr_host_client::VRHostDeviceScene> Scene() const;

private:
    /// What one pass found withdrawn.
    struct Lost
    {
        bool client = false;
        bool device = false;
        bool scene = false;
        bool camera = false;
    };

    void Run() override;
    bool Pass();
    void DropLost(bool stop);
    void HandleManager(const vr_host_client::Notification& notification);
    void HandleClient(const vr_host_client::Notification& notification);
    void HandleDevice(const vr_host_client::Notification& notification);
    void SetScene(std::shared_ptr<const vr_host_client::VRHostDeviceScene> scene);

    const HostService& mService;
    bool mShutDown = false;
    Lost mFlags;
    std::unique_ptr<vr_host_client::ClientManager> mClientManager; // null without the library
    std::unique_ptr<vr_host_client::VRHostClient> mClient;
    std::unique_ptr<vr_host_client::VRHostDevice> mDevice;
    std::unique_ptr<vr_host_client::VRHostDeviceCamera> mCamera;
    std::shared_ptr<const vr_host_client::VRHostDeviceScene> mScene;
    mutable std::mutex mMutex; // guards mScene
};

} // namespace qlt
