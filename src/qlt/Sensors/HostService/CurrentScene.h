// The scene that the host service has at the moment. The client thread writes it; any thread may
// read it.
#pragma once

#include "Sensors/HostService/HostConnections.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace qlt
{

class CurrentScene
{
public:
    using Scene = std::shared_ptr<const vr_host_client::VRHostDeviceScene>;

    /// Null when there is none. A scene stays alive as long as it is held.
    Scene Get() const;

    void Set(Scene scene);

private:
    std::atomic<bool> mConnected{false}; // most programs have no host service and skip the lock
    mutable std::mutex mMutex;           // guards mScene
    Scene mScene;
};

} // namespace qlt
