// The orientation filter of the headset: integrates the gyroscope over the time that has really
// passed and pulls the result slowly towards gravity, which removes drift in pitch and roll. Drift
// in yaw is not corrected.
//
// Orientations turn sensor coordinates into world coordinates: right-handed, y up, -z forward. One
// thread at a time.
#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>
#include <qlt/Runtime/Clock.h>

#include <memory>

namespace qlt
{

class QLT_API SensorFusion
{
public:
    /// Starts at the identity; the first step integrates from now on.
    SensorFusion();

    /// The same on another clock, which must outlive this.
    explicit SensorFusion(Clock& clock);
    ~SensorFusion();
    SensorFusion(const SensorFusion&) = delete;
    SensorFusion& operator=(const SensorFusion&) = delete;

    /// One step with an acceleration of any scale (only its direction counts; a zero one makes the
    /// orientation NaN) and an angular velocity in radians per second. deliberate: `magnetometer`
    /// and `dt` change nothing, the step reads the clock. A rotation axis of exactly zero reports
    /// the assertion of Vec3::Normalize and counts as no rotation.
    void Fuse(const Vec3& accelerometer, const Vec3& gyroscope, const Vec3& magnetometer, float dt);

    /// The orientation after the last step; the reference stays valid and follows later steps.
    const Quaternion& GetQuaternion() const;

    /// The orientation extrapolated with the last angular velocity to this moment. deliberate: `dt`
    /// changes nothing.
    Quaternion GetPredictedQuaternion(float dt) const;

    /// Back to the identity. The last angular velocity and time stay, so that a prediction still
    /// extrapolates.
    void Reset();

private:
    struct QLT_LOCAL State;
    std::unique_ptr<State> mState;
};

} // namespace qlt
