// The orientation of the head from gyroscope and accelerometer. docs/tracking.md explains the
// method and lists its accuracy.
//
// A pure value: samples in, state out. It reads no clock, allocates nothing and has no lock; one
// thread at a time may use an object. The same samples give the same bits on every system.
#pragma once

#include <qltkit/Export.h>
#include <qltkit/Tracking/ImuSample.h>
#include <qltkit/Tracking/OrientationState.h>

namespace qltkit
{

class QLTKIT_API OrientationEstimator
{
public:
    /// Takes the next sample in the order of the reports. False when it was not used: its time did
    /// not grow, or its gyroscope was not finite or absurd. GetState().counts says which.
    bool Add(const ImuSample& sample);

    /// Body to world, y up, at the time of the last sample used. The heading is zero at the start
    /// and drifts slowly. The identity before the first usable sample.
    const Rotation& GetOrientation() const { return mState.orientation; }

    /// At the last sample, about the body's axes, without the bias, in rad/s.
    Vector3 GetAngularVelocity() const { return mState.gyroscope - mState.bias; }

    /// Of the gyroscope, in rad/s, and its standard deviation per axis.
    const Vector3& GetBias() const { return mState.bias; }
    Vector3 GetBiasDeviation() const;

    /// Standard deviations in radians, at most pi: of the angle to the vertical, and of the heading
    /// since the start.
    double GetInclinationDeviation() const;
    double GetHeadingDeviation() const;

    /// The sensor has been lying still for at least 1.5 s.
    bool IsAtRest() const;

    /// The whole state, to be saved or inspected.
    const OrientationState& GetState() const { return mState; }

    /// Continues from a saved state. False, and nothing changes, when it has another version or its
    /// numbers are not finite.
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
