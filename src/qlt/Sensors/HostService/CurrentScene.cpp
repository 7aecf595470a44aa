#include "Sensors/HostService/CurrentScene.h"

namespace qlt
{

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

} // namespace qlt
