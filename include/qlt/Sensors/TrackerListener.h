// The call-backs of a tracker; override those you need.
//
// They run on the tracker's processing thread while it holds its lock: be quick. They may call the
// tracker's getters, ResetYawOrigin, AddListener and RemoveListener, but not Stop. References end
// with the call. `time` is in seconds: of simulated time for the simulator, a count
// of reports in steps of 0.001 for the headset.
#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>

namespace qlt
{

/// deliberate: the order of the operations is the order of the virtual slots that compiled clients
/// rely on.
class QLT_API TrackerListener
{
public:
    virtual ~TrackerListener();

    /// g, in the tracker's frame.
    virtual void OnAccelerometerEvent(const Vec3& acceleration, float time);

    /// Radians per second, in the tracker's frame.
    virtual void OnGyroscopeEvent(const Vec3& angularVelocity, float time);

    /// Gauss, in the tracker's frame.
    virtual void OnMagnetometerEvent(const Vec3& field, float time);

    /// The device's own estimate, without the yaw origin.
    virtual void OnQuaternionEvent(const Quaternion& quaternion, float time);

    /// Degrees Celsius.
    virtual void OnTemperatureEvent(float temperature, float time);

    /// The fused orientation with the yaw origin applied, as GetOrientation returns it.
    virtual void OnOrientationEvent(const Quaternion& orientation, float time);

    /// Metres.
    virtual void OnPositionEvent(const Vec3& position, float time);
};

} // namespace qlt
