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
    // Swap, so that the old scene is released without the lock.
    const std::lock_guard<std::mutex> lock(mMutex);
    mScene.swap(scene);
}

} // namespace qlt
