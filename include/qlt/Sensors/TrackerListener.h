#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>

namespace qlt
{

/// The call-backs of a tracker. Override those that you need; the others do nothing.
///
/// They run on the tracker's processing thread while it holds its lock, so they must be quick. They
/// may call the tracker's getters, ResetYawOrigin, AddListener and RemoveListener, but not Stop.
/// The references are valid during the call. `time` is in seconds: simulated time for the
/// simulator, and a count of reports in steps of 0.001 for the headset. All vectors are in the
/// tracker's frame: x right, y up, -z forward.
///
/// deliberate: compiled clients rely on the order of the operations, so it never changes.
class QLT_API TrackerListener
{
public:
    virtual ~TrackerListener();

    /// A calibrated acceleration in g.
    virtual void OnAccelerometerEvent(const Vec3& acceleration, float time);

    /// A calibrated angular velocity in radians per second.
    virtual void OnGyroscopeEvent(const Vec3& angularVelocity, float time);

    /// A magnetic field in gauss.
    virtual void OnMagnetometerEvent(const Vec3& field, float time);

    /// The device's own estimate of the orientation, without the yaw origin.
    virtual void OnQuaternionEvent(const Quaternion& quaternion, float time);

    /// The temperature of the sensor in degrees Celsius.
    virtual void OnTemperatureEvent(float temperature, float time);

    /// The fused orientation with the yaw origin applied, as GetOrientation returns it.
    virtual void OnOrientationEvent(const Quaternion& orientation, float time);

    /// The position of the head in metres.
    virtual void OnPositionEvent(const Vec3& position, float time);
};

} // namespace qlt
