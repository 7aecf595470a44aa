// The current scene of the host service. The client thread sets it, and any thread may read it.
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

    /// The scene, or null when there is none. It stays alive as long as the caller holds it.
    Scene Get() const;

    void Set(Scene scene);

private:
    std::atomic<bool> mConnected{false}; // most programs have no host service and skip the lock
    mutable std::mutex mMutex;           // guards mScene
    Scene mScene;
};

} // namespace qlt
