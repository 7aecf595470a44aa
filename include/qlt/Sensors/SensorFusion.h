#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>
#include <qlt/Runtime/Clock.h>

#include <memory>

namespace qlt
{

/// The orientation filter of the headset. It integrates the gyroscope over the time that has passed
/// and pulls the result slowly towards gravity, which removes the drift of pitch and roll. It does
/// not correct the drift of yaw.
///
/// Orientations turn sensor coordinates into world coordinates: right-handed, y up, -z forward. One
/// thread at a time may use an object.
class QLT_API SensorFusion
{
public:
    /// Starts at the identity. The first step integrates over the time since this call.
    SensorFusion();

    /// Does the same with another clock, which must outlive the filter.
    explicit SensorFusion(Clock& clock);
    ~SensorFusion();
    SensorFusion(const SensorFusion&) = delete;
    SensorFusion& operator=(const SensorFusion&) = delete;

    /// Takes one step. Only the direction of `accelerometer` counts, so it may have any scale; a
    /// zero vector makes the orientation NaN. `gyroscope` is an angular velocity in radians per
    /// second. deliberate: `magnetometer` and `dt` change nothing, because the step reads the
    /// clock. A rotation axis of exactly zero reports the assertion of Vec3::Normalize and turns
    /// nothing.
    void Fuse(const Vec3& accelerometer, const Vec3& gyroscope, const Vec3& magnetometer, float dt);

    /// The orientation after the last step. The reference stays valid and follows later steps.
    const Quaternion& GetQuaternion() const;

    /// The orientation, extrapolated with the last angular velocity to the moment of the call.
    /// deliberate: `dt` changes nothing.
    Quaternion GetPredictedQuaternion(float dt) const;

    /// Sets the orientation to the identity. The last angular velocity and time stay, so a
    /// prediction still extrapolates.
    void Reset();

private:
    struct QLT_LOCAL State;
    std::unique_ptr<State> mState;
};

} // namespace qlt
