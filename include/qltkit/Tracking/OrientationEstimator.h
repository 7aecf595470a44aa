#pragma once

#include <qltkit/Export.h>
#include <qltkit/Tracking/ImuSample.h>
#include <qltkit/Tracking/OrientationState.h>

namespace qltkit
{

/// Estimates the orientation of the head from gyroscope and accelerometer. docs/tracking.md
/// explains the method and lists its accuracy.
///
/// An estimator is a plain value: it takes samples and holds a state. It reads no clock, allocates
/// nothing and has no lock. One thread at a time may use an object. The same samples give the same
/// bits on every system.
class QLTKIT_API OrientationEstimator
{
public:
    /// Takes the next sample, in the order of the reports. Returns false when the sample was not
    /// used: its time did not increase, or its gyroscope value was not finite or was absurd.
    /// GetState().counts shows the reason.
    bool Add(const ImuSample& sample);

    /// The rotation from body to world, y up, at the time of the last used sample. The heading is
    /// zero at the start and drifts slowly. The identity before the first usable sample.
    const Rotation& GetOrientation() const { return mState.orientation; }

    /// The angular velocity at the last sample in rad/s, about the body's axes and without the
    /// bias.
    Vector3 GetAngularVelocity() const { return mState.gyroscope - mState.bias; }

    /// The bias of the gyroscope in rad/s, and its standard deviation for each axis.
    const Vector3& GetBias() const { return mState.bias; }
    Vector3 GetBiasDeviation() const;

    /// The standard deviation of the angle to the vertical, and of the heading since the start.
    /// Both are in radians and at most pi.
    double GetInclinationDeviation() const;
    double GetHeadingDeviation() const;

    /// True when the sensor has been still for at least 1.5 s.
    bool IsAtRest() const;

    /// The whole state. A program may save or inspect it.
    const OrientationState& GetState() const { return mState; }

    /// Continues from a saved state. A state of another version or with numbers that are not finite
    /// changes nothing, and the result is false.
    bool Restore(const OrientationState& state);

private:
    void Begin(const ImuSample& sample);
    bool AcceptTime(const ImuSample& sample);
    void Advance(const ImuSample& sample, double seconds, std::uint32_t steps);
    void Level(const Vector3& acceleration, double seconds);
    void Track(const ImuSample& sample, const Vector3& acceleration, bool usable, double seconds);
    void StartAnew(const ImuSample& sample);

    OrientationState mState;
};

} // namespace qltkit
