// The conversation with the host service: waits for its notifications, connects the client, the
// device, the camera and the scene as the service announces them and drops them as it withdraws
// them. Without the service's library it waits for its end and never has a connection.
//
// Threads: the object belongs to its owner, and between Start and the end of Stop the connections
// belong to the worker. A failure of the service on the worker ends the
// process, as every exception that leaves a worker does.
#pragma once

#include "Runtime/VRThread.h"
#include "Sensors/HostService/CurrentScene.h"
#include "Sensors/HostService/HostConnections.h"

#include <memory>

namespace qlt
{

class ClientThread final : public VRThread
{
public:
    /// Creates the client manager; throws VRException "Cannot create the client manager". `scene`
    /// must outlive the thread.
    explicit ClientThread(CurrentScene& scene, const HostService& service = HostService::System());

    /// Shuts down if the owner has not; throws as Shutdown does.
    virtual ~ClientThread() noexcept(false);

    /// Stops the worker and drops every connection, then the manager, from the last to the first.
    /// Throws VRException when the service refuses; what has not been dropped by then is dropped
    /// silently by the destructor. Nothing the second time.
    void Shutdown();

private:
    /// The connections that the service withdrew during one pass.
    struct Lost
    {
        bool client = false;
        bool device = false;
        bool scene = false;
        bool camera = false;
    };

    /// A connection that may have notifications, and the operation that reads them all.
    struct Source
    {
        const vr_host_client::Connection* connection; // null while there is none
        void (ClientThread::*drain)(Lost& lost);
    };

    void Run() override;
    bool Pass();
    void DropLost(const Lost& lost, bool stop);
    void DrainManager(Lost& lost);
    void DrainClient(Lost& lost);
    void DrainDevice(Lost& lost);
    void HandleDevice(const vr_host_client::Notification& notification, Lost& lost);

    const HostService& mService;
    bool mShutDown = false;
    std::unique_ptr<vr_host_client::ClientManager> mClientManager; // null without the library
    std::unique_ptr<vr_host_client::VRHostClient> mClient;
    std::unique_ptr<vr_host_client::VRHostDevice> mDevice;
    std::unique_ptr<vr_host_client::VRHostDeviceCamera> mCamera;
    CurrentScene& mScene;
};

} // namespace qlt
