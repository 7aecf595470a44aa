#pragma once

#include <qltkit/Export.h>
#include <qltkit/Tracking/ImuSample.h>
#include <qltkit/Tracking/OrientationState.h>

namespace qltkit
{

/// Estimates the orientation of the head from gyroscope and accelerometer. docs/tracking.md
/// explains the method and lists its accuracy.
///
/// Feed it every report in order, and read the orientation at any time:
///
///     qltkit::OrientationEstimator estimator;
///     for (const qlt::SensorReport& report : recording.reports)
///     {
///         estimator.Add(qltkit::ReadImuSample(report));
///     }
///     const qltkit::Rotation& head = estimator.GetOrientation();
///
/// During the first second the estimator averages the direction of gravity. After that a filter
/// estimates the angle, the bias of the gyroscope and the motion. A headset that lies still teaches
/// it the bias.
///
/// An estimator is a plain value: it takes samples and holds a state, and a copy continues
/// independently. It reads no clock, allocates nothing and has no lock. One thread at a time may
/// use an object. The same samples give the same bits on every system.
class QLTKIT_API OrientationEstimator
{
public:
    /// Takes the next sample, in the order of the reports. Returns false when the sample was not
    /// used. There are three reasons, and GetState().counts shows which one it was:
    ///
    /// - The time did not increase. More than 32 steps back in a row restart the leveling.
    /// - A value of the gyroscope is not finite or is above 70 rad/s.
    /// - The very first accelerometer value is zero, not finite or above 400 m/s^2.
    ///
    /// A later sample with an unusable accelerometer is used for its gyroscope alone. A gap of more
    /// than one second restarts the leveling and keeps the heading.
    bool Add(const ImuSample& sample);

    /// The rotation from body to world, y up, at the time of the last used sample. The heading is
    /// zero at the start and drifts slowly. The rotation is the identity before the first usable
    /// sample. The reference follows later samples.
    const Rotation& GetOrientation() const { return mState.orientation; }

    /// The angular velocity at the last sample in rad/s, about the body's axes and without the
    /// bias.
    Vector3 GetAngularVelocity() const { return mState.gyroscope - mState.bias; }

    /// The estimated bias of the gyroscope in rad/s, about the body's axes.
    const Vector3& GetBias() const { return mState.bias; }

    /// The standard deviation of the bias for each axis, in rad/s.
    Vector3 GetBiasDeviation() const;

    /// The standard deviation of the angle to the vertical, in radians. It is at most pi. Before
    /// the first usable sample it is pi.
    double GetInclinationDeviation() const;

    /// The standard deviation of the heading since the start, in radians. It is at most pi. No
    /// sensor of the estimator measures the heading.
    double GetHeadingDeviation() const;

    /// True when the sensor has been still for at least 1.5 s. Still means three things: the
    /// gyroscope is within 2 degrees per second of its mean, this mean is within 2 degrees per
    /// second of the learned bias, and the accelerometer is within 0.5 m/s^2 of its mean.
    bool IsAtRest() const;

    /// The whole state. A program may save or inspect it. The reference follows later samples.
    const OrientationState& GetState() const { return mState; }

    /// Continues from a saved state. The call changes nothing and returns false when the state has
    /// another version, an unknown phase, a number that is not finite, a negative variance, or an
    /// orientation that is not of length 1.
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
