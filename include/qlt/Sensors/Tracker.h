// The base of every source of head poses: the headset (Hmd), synthetic motion (SimulatorTracker).
//
// Between Start and Stop a processing thread of the tracker's own produces events; every event goes
// to the listeners and updates the pose that the getters return. The application owns its listeners
// and removes them, and stops the tracker, before it destroys the tracker.
//
// Threads: Start and Stop from one thread at a time; everything else from any thread at any time.
// A recursive mutex guards the pose, the listeners and the thread; listeners are called with it
// held. Orientations are right-handed, y up, -z forward, and turn head coordinates into world
// coordinates.
#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>
#include <qlt/Sensors/TrackerListener.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace qlt
{

class ClientThread;
class CurrentScene;
class ListenerSet;

/// deliberate: the order of the virtual operations is that of the slots that compiled clients rely
/// on.
class QLT_API Tracker
{
public:
    /// Idle, at the zero position and the identity.
    Tracker();

    /// Asserts that the tracker is stopped and has no listeners. One that is still started is
    /// stopped here; a subclass calls EndProcessing in its own destructor for that.
    virtual ~Tracker();

    Tracker(const Tracker&) = delete;
    Tracker& operator=(const Tracker&) = delete;

    /// Starts the processing thread and the conversation with the host service, and returns true.
    /// Goes on without object poses, silently, when the service's library is not there or refuses.
    /// Asserts that the tracker is stopped; a second Start starts another thread beside the first.
    /// std::system_error when there is no thread to be had.
    bool Start();

    /// Ends both, waits for them and returns true. Asserts that the tracker is started, and that
    /// the host service's library did not refuse at Start. VRException when the service refuses to
    /// disconnect. Never from a listener, which would wait for itself.
    bool Stop();

    bool IsTracking() const;

    /// Whether the device is there; always for a tracker without one.
    virtual bool IsConnected() const;

    /// `listener` must live until it is removed. Asserts that it is not registered yet. Listeners
    /// are called in the order of their addresses. A listener may call this, too: the added one is
    /// called from the next event on.
    void AddListener(TrackerListener& listener);

    /// Asserts that the listener is registered. After the return it is not called any more. A
    /// listener may call this, too, for itself and for others.
    void RemoveListener(TrackerListener& listener);

    /// The last orientation with the yaw origin applied. The reference follows later events: take
    /// CopyOrientation to be sure of four values of one event.
    const Quaternion& GetOrientation() const;

    /// The last orientation as a copy of one event, taken under the lock. Any thread.
    Quaternion CopyOrientation() const;

    /// The last position, metres; the reference follows later events.
    const Vec3& GetPosition() const;

    /// The last position as a copy of one event, metres, taken under the lock. Any thread.
    Vec3 CopyPosition() const;

    /// The orientation expected in `dt` seconds. deliberate: a tracker without a prediction of its
    /// own, like Hmd and SimulatorTracker, ignores `dt` and returns the last orientation with the
    /// yaw origin applied once more.
    Quaternion GetPredictedOrientation(float dt) const;

    /// The position expected in `dt` seconds: the last one. Metres.
    virtual Vec3 GetPredictedPosition(float dt) const;

    /// Makes the current heading the forward direction (-z), pitch and roll stay. Calls no
    /// listener. Reports assertions of Vec3 and is of no use when the head looks straight up or
    /// down, or when it already faces forward or backward exactly.
    void ResetYawOrigin();

    /// Poses of the objects that the host service tracks, metres; zero and identity for an object
    /// that is not there. Object 0 is the head. deliberate: an object whose confidence is below
    /// FLT_EPSILON has position zero, and still its orientation. VRException when the service
    /// fails.
    Vec3 GetObjectPosition(std::uint64_t index) const;
    Quaternion GetObjectOrientation(std::uint64_t index) const;
    Vec3 GetClientPosition() const;

protected:
    /// For GetPredictedOrientation, which applies the yaw origin to it.
    virtual Quaternion GetPredictedQuaternion(float dt) const;

    /// The body of the processing thread: raises events until ShouldStop is true. An exception that
    /// leaves it ends the process.
    virtual void DoProcess() = 0;

    bool ShouldStop() const;

    /// Asks the processing thread to end and waits for it, without becoming idle: for destructors
    /// of subclasses, whose members a forgotten thread would still use.
    void EndProcessing();

    /// Raise an event on the calling thread: every listener is called, under the lock, before they
    /// return. `time` is handed on. Assert that the tracker is started.
    void NotifyAccelerometerEvent(const Vec3& acceleration, float time);
    void NotifyGyroscopeEvent(const Vec3& angularVelocity, float time);
    void NotifyMagnetometerEvent(const Vec3& field, float time);
    void NotifyQuaternionEvent(const Quaternion& quaternion, float time);
    void NotifyTemperatureEvent(float temperature, float time);
    void NotifyOrientationEvent(const Quaternion& orientation, float time);
    void NotifyPositionEvent(const Vec3& position, float time);

private:
    void StartClientThread();
    void StopClientThread();

    std::atomic<bool> mTracking;
    std::atomic<bool> mShouldStop;
    Vec3 mPosition;
    Quaternion mRawOrientation;
    Quaternion mYawOrigin;
    Quaternion mOrientation;
    std::unique_ptr<ListenerSet> mListeners;
    std::unique_ptr<std::thread> mThread;
    std::unique_ptr<CurrentScene> mCurrentScene;
    std::unique_ptr<ClientThread> mClientThread;
    std::unique_ptr<std::recursive_mutex> mMutex;
    std::unique_ptr<std::vector<std::thread>> mEarlierThreads; // of a Start upon a Start
};

} // namespace qlt
