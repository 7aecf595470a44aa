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

/// The base of every source of head poses: Hmd for the headset and SimulatorTracker for synthetic
/// motion.
///
/// Between Start and Stop the tracker's own processing thread raises events. Every event updates
/// the pose that the getters return and is passed to the listeners. The application owns its
/// listeners. It removes them and stops the tracker before it destroys the tracker:
///
///     tracker.AddListener(listener);
///     tracker.Start();
///     Draw(tracker.CopyOrientation());
///     tracker.Stop();
///     tracker.RemoveListener(listener);
///
/// One thread at a time may call Start and Stop; any thread may call everything else at any time. A
/// recursive mutex guards the pose, the listeners and the thread. Listeners are called with it
/// held. Orientations turn head coordinates into world coordinates: right-handed, y up, -z forward.
///
/// deliberate: compiled clients rely on the order of the virtual operations, so it never changes.
class QLT_API Tracker
{
public:
    /// Creates an idle tracker with the zero position and the identity.
    Tracker();

    /// Asserts that the tracker is stopped and has no listeners. It also stops a started tracker,
    /// but too late for the members of a subclass. A subclass must therefore call EndProcessing in
    /// its own destructor.
    virtual ~Tracker();

    Tracker(const Tracker&) = delete;
    Tracker& operator=(const Tracker&) = delete;

    /// Starts the processing thread and the conversation with the host service, and returns true.
    /// When the service library is missing or refuses, nothing is reported and there are no object
    /// poses. A call on a started tracker is reported as an assertion and starts another thread.
    /// Throws std::system_error when the system starts no thread.
    bool Start();

    /// Ends the thread and the conversation, waits until both have ended and returns true. A call
    /// on an idle tracker is reported as an assertion. So is a call after a Start at which the
    /// service library refused. Throws VRException when the service refuses to disconnect. A
    /// listener must not call it, because it would wait for itself.
    bool Stop();

    /// True when the tracker is started. Any thread, without a lock.
    bool IsTracking() const;

    /// True when the device is connected; true for a tracker without a device.
    virtual bool IsConnected() const;

    /// Registers a listener, which must live until it is removed. A registered listener is reported
    /// as an assertion. Listeners are called in the order of their addresses. A listener may call
    /// this from inside an event; the new listener is called from the next event on.
    void AddListener(TrackerListener& listener);

    /// Removes a listener; after the return it is not called any more. An unknown listener is
    /// reported as an assertion. A listener may call this from inside an event, for itself and for
    /// others.
    void RemoveListener(TrackerListener& listener);

    /// The last orientation with the yaw origin applied. The reference follows later events without
    /// a lock; CopyOrientation gives four values that belong to the same event.
    const Quaternion& GetOrientation() const;

    /// The last orientation with the yaw origin applied, copied under the lock. Any thread.
    Quaternion CopyOrientation() const;

    /// The last position in metres. The reference follows later events without a lock.
    const Vec3& GetPosition() const;

    /// The last position in metres, copied under the lock. Any thread.
    Vec3 CopyPosition() const;

    /// The orientation expected in `dt` seconds. deliberate: a tracker without a prediction of its
    /// own, like Hmd and SimulatorTracker, ignores `dt` and returns the last orientation with the
    /// yaw origin applied once more.
    Quaternion GetPredictedOrientation(float dt) const;

    /// The position that is expected in `dt` seconds, in metres. It is the last position.
    virtual Vec3 GetPredictedPosition(float dt) const;

    /// Makes the current heading the forward direction (-z) and keeps pitch and roll. No listener
    /// is called. A head that looks straight up or down, or exactly forward or backward, reports
    /// assertions of Vec3 and gets the result of the formulas. Any thread.
    void ResetYawOrigin();

    /// The position in metres of an object that the host service tracks. A missing object has the
    /// zero position. Object 0 is the head. deliberate: an object whose confidence is below
    /// FLT_EPSILON has the zero position and keeps its orientation. Throws VRException when the
    /// service fails. Any thread.
    Vec3 GetObjectPosition(std::uint64_t index) const;

    /// The orientation of an object that the host service tracks. A missing object has the
    /// identity. Throws VRException when the service fails. Any thread.
    Quaternion GetObjectOrientation(std::uint64_t index) const;

    /// The position of object 0, which is the head. Throws VRException when the service fails. Any
    /// thread.
    Vec3 GetClientPosition() const;

protected:
    /// The prediction of GetPredictedOrientation, which applies the yaw origin to it.
    virtual Quaternion GetPredictedQuaternion(float dt) const;

    /// The body of the processing thread. It raises events until ShouldStop is true. An exception
    /// that leaves it ends the process.
    virtual void DoProcess() = 0;

    /// True when Stop waits for DoProcess to return. Any thread, without a lock.
    bool ShouldStop() const;

    /// Asks the processing thread to end and waits for it; the tracker does not become idle. The
    /// destructor of a subclass calls it. Otherwise the thread of a tracker that nobody stopped
    /// could use destroyed members of the subclass.
    void EndProcessing();

    /// Raises an event on the calling thread. The call passes the acceleration in g and `time` to
    /// every listener under the lock. An idle tracker is reported as an assertion. The same holds
    /// for the other operations.
    void NotifyAccelerometerEvent(const Vec3& acceleration, float time);

    /// Raises an event with an angular velocity in radians per second.
    void NotifyGyroscopeEvent(const Vec3& angularVelocity, float time);

    /// Raises an event with a magnetic field in gauss.
    void NotifyMagnetometerEvent(const Vec3& field, float time);

    /// Raises an event with the device's own estimate of the orientation.
    void NotifyQuaternionEvent(const Quaternion& quaternion, float time);

    /// Raises an event with a temperature in degrees Celsius.
    void NotifyTemperatureEvent(float temperature, float time);

    /// Stores the orientation, applies the yaw origin to it and raises an event with the result.
    void NotifyOrientationEvent(const Quaternion& orientation, float time);

    /// Stores the position in metres and raises an event with it.
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
    std::unique_ptr<std::vector<std::thread>> mEarlierThreads; // of a tracker started twice
};

} // namespace qlt
