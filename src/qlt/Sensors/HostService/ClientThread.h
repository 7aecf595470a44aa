// The thread that talks to the host service. It waits for notifications. It connects the client,
// the device, the camera and the scene when the service announces them, and drops them when the
// service withdraws them. Without the service's library it has no connections and only waits for
// the stop event.
//
// Threads: the object belongs to its owner. From Start until Stop has returned, the connections
// belong to the worker. A failure of the service on the worker ends the process, like every
// exception that leaves a worker.
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
    /// Creates the client manager. Throws VRException "Cannot create the client manager". `scene`
    /// must outlive the thread.
    explicit ClientThread(CurrentScene& scene, const HostService& service = HostService::System());

    /// Calls Shutdown if the owner has not, and throws as Shutdown does.
    virtual ~ClientThread() noexcept(false);

    /// Stops the worker, drops the connections from the last to the first, and then drops the
    /// manager. Throws VRException when the service refuses; the destructor then drops the rest
    /// silently. A second call does nothing.
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
