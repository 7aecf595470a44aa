#include <qlt/Sensors/Tracker.h>

#include <qlt/Runtime/VRException.h>

#include "Runtime/Check.h"
#include "Sensors/HostService/ClientThread.h"
#include "Sensors/HostService/SceneDescriptor.h"
#include "Sensors/ListenerSet.h"

#include <cfloat>

#define QLT_SOURCE_FILE L"Sensors/Tracker"

namespace qlt
{
namespace
{

using Lock = std::lock_guard<std::recursive_mutex>;

/// The pose of an object; nothing when the host service has none.
std::optional<ObjectPose> FindObject(const CurrentScene& current, std::uint64_t index)
{
    const CurrentScene::Scene scene = current.Get();
    auto descriptor = scene != nullptr ? scene->GetCurrentDescriptor() : std::nullopt;
    if (!descriptor)
    {
        return std::nullopt;
    }
    const std::optional<ObjectPose> pose = ReadObjectPose(descriptor->data, index);
    descriptor->holder.GiveBack(); // the destructor would hide a failure
    return pose;
}

} // namespace

Tracker::Tracker()
    : mTracking(false)
    , mShouldStop(false)
    , mRawOrientation(Quaternion::Identity)
    , mYawOrigin(Quaternion::Identity)
    , mOrientation(Quaternion::Identity)
    , mListeners(std::make_unique<ListenerSet>())
    , mCurrentScene(std::make_unique<CurrentScene>())
    , mMutex(std::make_unique<std::recursive_mutex>())
    , mEarlierThreads(std::make_unique<std::vector<std::thread>>())
{
}

Tracker::~Tracker()
{
    QLT_CHECK_LINE(mThread == nullptr, 29);
    QLT_CHECK_LINE(mClientThread == nullptr, 30);
    EndProcessing(); // a running thread uses the mutex and the listeners
    try
    {
        StopClientThread();
    }
    catch (const VRException&)
    {
        // The checks above have reported the misuse. It must not end the process.
    }
    mMutex.reset();
    QLT_CHECK_LINE(mListeners->empty(), 34);
}

bool Tracker::Start()
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(!IsTracking(), 185);
    mTracking = true;
    mShouldStop = false;
    QLT_CHECK_LINE(mThread == nullptr, 192);
    if (mThread != nullptr)
    {
        mEarlierThreads->push_back(std::move(*mThread));
    }
    mThread = std::make_unique<std::thread>([this] { DoProcess(); });
    QLT_CHECK_LINE(mClientThread == nullptr, 194);
    try
    {
        StopClientThread();
        StartClientThread();
    }
    catch (const VRException&)
    {
        // Without the host service there are no object poses. The head is tracked anyway.
    }
    return IsTracking();
}

void Tracker::StartClientThread()
{
    mClientThread = std::make_unique<ClientThread>(*mCurrentScene);
    mClientThread->Init();
    mClientThread->Start(true, WAIT_FOREVER);
}

/// Does nothing without a client thread.
void Tracker::StopClientThread()
{
    const std::unique_ptr<ClientThread> client = std::move(mClientThread);
    if (client != nullptr)
    {
        client->Shutdown(); // a throw out of the destructor would end the process
    }
}

// Stop takes no lock, because the processing thread needs the lock until it ends.
bool Tracker::Stop()
{
    QLT_CHECK_LINE(IsTracking(), 215);
    mShouldStop = true;
    QLT_CHECK_LINE(mThread != nullptr, 219);
    EndProcessing();
    mTracking = false;
    mThread = nullptr;
    QLT_CHECK_LINE(mClientThread != nullptr, 226);
    StopClientThread();
    return !IsTracking();
}

void Tracker::EndProcessing()
{
    mShouldStop = true;
    if (mThread != nullptr && mThread->joinable())
    {
        mThread->join();
    }
    for (std::thread& thread : *mEarlierThreads)
    {
        thread.join();
    }
    mEarlierThreads->clear();
}

bool Tracker::IsTracking() const { return mTracking; }

bool Tracker::ShouldStop() const { return mShouldStop; }

bool Tracker::IsConnected() const { return true; }

void Tracker::AddListener(TrackerListener& listener)
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(mListeners->find(&listener) == mListeners->end(), 167);
    mListeners->insert(&listener);
}

void Tracker::RemoveListener(TrackerListener& listener)
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(mListeners->find(&listener) != mListeners->end(), 176);
    mListeners->erase(&listener);
}

const Quaternion& Tracker::GetOrientation() const
{
    const Lock lock(*mMutex);
    return mOrientation;
}

const Vec3& Tracker::GetPosition() const
{
    const Lock lock(*mMutex);
    return mPosition;
}

Quaternion Tracker::CopyOrientation() const
{
    const Lock lock(*mMutex);
    return mOrientation;
}

Vec3 Tracker::CopyPosition() const
{
    const Lock lock(*mMutex);
    return mPosition;
}

Quaternion Tracker::GetPredictedOrientation(float dt) const
{
    const Lock lock(*mMutex);
    return mYawOrigin * GetPredictedQuaternion(dt);
}

Quaternion Tracker::GetPredictedQuaternion(float /*dt*/) const
{
    const Lock lock(*mMutex);
    return GetOrientation();
}

Vec3 Tracker::GetPredictedPosition(float /*dt*/) const
{
    const Lock lock(*mMutex);
    return mPosition;
}

void Tracker::ResetYawOrigin()
{
    const Lock lock(*mMutex);
    static const Vec3 forward = -Vec3::Z_AXIS;
    static const Vec3 up = Vec3::Y_AXIS;
    const Vec3 heading = Quaternion::Rotate(mRawOrientation, forward).ProjectOnPlane(up);
    const Vec3 axis = heading.Cross(forward);
    mYawOrigin = Quaternion::RotationQuaternion(heading.Angle(forward), axis);
    mOrientation = mYawOrigin * mRawOrientation;
}

Vec3 Tracker::GetObjectPosition(std::uint64_t index) const
{
    const auto pose = FindObject(*mCurrentScene, index);
    // This comparison accepts a NaN confidence.
    return !pose || pose->confidence < FLT_EPSILON ? Vec3() : pose->position;
}

Quaternion Tracker::GetObjectOrientation(std::uint64_t index) const
{
    const auto pose = FindObject(*mCurrentScene, index);
    return pose ? pose->orientation : Quaternion::Identity;
}

Vec3 Tracker::GetClientPosition() const { return GetObjectPosition(0); }

void Tracker::NotifyAccelerometerEvent(const Vec3& acceleration, float time)
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(IsTracking(), 252);
    mListeners->ForEach([&](TrackerListener& listener)
                        { listener.OnAccelerometerEvent(acceleration, time); });
}

void Tracker::NotifyGyroscopeEvent(const Vec3& angularVelocity, float time)
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(IsTracking(), 262);
    mListeners->ForEach([&](TrackerListener& listener)
                        { listener.OnGyroscopeEvent(angularVelocity, time); });
}

void Tracker::NotifyMagnetometerEvent(const Vec3& field, float time)
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(IsTracking(), 272);
    mListeners->ForEach([&](TrackerListener& listener)
                        { listener.OnMagnetometerEvent(field, time); });
}

void Tracker::NotifyQuaternionEvent(const Quaternion& quaternion, float time)
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(IsTracking(), 282);
    mListeners->ForEach([&](TrackerListener& listener)
                        { listener.OnQuaternionEvent(quaternion, time); });
}

void Tracker::NotifyTemperatureEvent(float temperature, float time)
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(IsTracking(), 292);
    mListeners->ForEach([&](TrackerListener& listener)
                        { listener.OnTemperatureEvent(temperature, time); });
}

void Tracker::NotifyPositionEvent(const Vec3& position, float time)
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(IsTracking(), 302);
    mPosition = position;
    mListeners->ForEach([&](TrackerListener& listener)
                        { listener.OnPositionEvent(mPosition, time); });
}

void Tracker::NotifyOrientationEvent(const Quaternion& orientation, float time)
{
    const Lock lock(*mMutex);
    QLT_CHECK_LINE(IsTracking(), 314);
    mRawOrientation = orientation;
    mOrientation = mYawOrigin * orientation;
    mListeners->ForEach([&](TrackerListener& listener)
                        { listener.OnOrientationEvent(mOrientation, time); });
}

} // namespace qlt
