#pragma once

#include <qltkit/Tracking/Rotation.h>

#include <array>
#include <cstdint>

namespace qltkit
{

/// The number of samples that the estimator took, and of the faults in them. The counts only grow.
struct SampleCounts
{
    /// Samples that changed the state.
    std::uint64_t used = 0;

    /// Samples whose time did not increase. They were not integrated.
    std::uint64_t repeated = 0;

    /// Samples whose gyroscope value was absurd or not finite.
    std::uint64_t refused = 0;

    /// Samples whose accelerometer value was absurd or not finite.
    std::uint64_t refusedAccelerometers = 0;

    /// Reports that are missing according to the sequence numbers.
    std::uint64_t lost = 0;

    /// Gaps that were too long to bridge. The inclination restarted after each of them.
    std::uint64_t gaps = 0;

    /// Samples with at least one axis at its limit.
    std::uint64_t saturated = 0;

    /// Saturated stretches whose loss was restored.
    std::uint64_t repaired = 0;
};

/// A saturated stretch of one axis: the time at the limit, and the first milliseconds after it. The
/// estimator restores the part of the peak that the sensor has cut off. Values are in the unit of
/// the sensor: rad/s or m/s^2.
struct SaturatedStretch
{
    /// True while the axis is at its limit.
    bool active = false;

    /// True when the axis has left the limit and the slope after it is being measured.
    bool ending = false;

    /// The sign of the limit: 1 or -1.
    double sign = 0.0;

    /// The value at the limit.
    double limit = 0.0;

    /// The time at the limit in seconds.
    double seconds = 0.0;

    /// The time since the limit in seconds.
    double after = 0.0;

    /// The slope towards the limit before it, per second. It is not negative.
    double slope = 0.0;

    /// The restored amount so far: radians or m/s.
    double total = 0.0;

    /// The variance of the restored amount.
    double variance = 0.0;

    /// The direction of the axis in the world, integrated over the time at the limit.
    Vector3 direction;
};

/// The errors that the filter estimates. The constants are the first index of each group.
struct ErrorIndex
{
    /// The angle about world x, y and z in radians.
    static constexpr int ANGLE = 0;

    /// The bias of the gyroscope about body x, y and z in rad/s.
    static constexpr int BIAS = 3;

    /// The velocity along world x and z in m/s.
    static constexpr int VELOCITY = 6;

    /// The position along world x and z in metres.
    static constexpr int POSITION = 8;

    /// The number of errors.
    static constexpr int COUNT = 10;
};

/// The covariance of these errors, as a symmetric matrix. Both indices are those of ErrorIndex.
using ErrorCovariance = std::array<std::array<double, ErrorIndex::COUNT>, ErrorIndex::COUNT>;

/// Integrals over the samples since the filter's last step: each sample counts with its seconds.
/// The filter takes a step about every 10 ms.
struct StepSums
{
    /// The length of the step so far.
    double seconds = 0.0;

    /// The rows of the rotation matrix from body to world.
    std::array<Vector3, 3> rows;

    /// The angular velocity with the bias, in rad/s times seconds.
    Vector3 gyroscope;

    /// The square of the angular velocity without the bias.
    double rateSquares = 0.0;

    /// The square of the acceleration in the world without gravity.
    double accelerationSquares = 0.0;
};

/// The detection of rest, and the bias that was learned at rest. Rates are in rad/s about the
/// body's axes, and accelerations are in m/s^2.
struct RestState
{
    /// The gyroscope after a low-pass of 0.25 s.
    Vector3 rate;

    /// The same over a longer time: a low-pass of 2 s after the first one.
    Vector3 slowRate;

    /// The accelerometer after a low-pass of 0.25 s.
    Vector3 acceleration;

    /// The variance of `rate` about `slowRate`, per axis.
    double wander = 0.0;

    /// The time for which the sensor has been still without a break.
    double seconds = 0.0;

    /// The seconds of this rest that taught the bias.
    double learnt = 0.0;

    /// The seconds of this rest in which the rate was too far from `bias`.
    double turning = 0.0;

    /// True when the bias has been learned during a long rest.
    bool known = false;

    /// The bias as learned at rest.
    Vector3 bias;

    /// The variance of `bias`, per axis.
    double variance = 0.0;
};

/// The change of the bias per kelvin. The estimator learns it at rest.
struct TemperatureState
{
    /// True when `celsius` holds a temperature.
    bool valid = false;

    /// The temperature of the last step in degrees Celsius.
    double celsius = 0.0;

    /// The change of the bias in rad/s per kelvin, for each axis.
    Vector3 slope;

    /// The variance of the slope.
    Vector3 variance;

    /// The covariance of the slope with the bias.
    Vector3 biasCovariance;
};

/// The whole state of an orientation estimator as a plain record. Copy its bytes to save it, and
/// give it to OrientationEstimator::Restore to continue. Angles are in radians, times in seconds
/// and lengths in metres, unless a name says otherwise. "World" means a frame with y up and a
/// heading of its own.
struct OrientationState
{
    /// The number of the record's format. A record with another number cannot be continued.
    static constexpr std::uint32_t VERSION = 1;

    /// The phases of an estimator. Each one follows the phase before it, and a long gap leads back
    /// to Leveling.
    enum class Phase : std::uint32_t
    {
        /// No usable sample has come yet.
        Empty,

        /// The inclination is the mean of the samples so far.
        Leveling,

        /// The filter runs.
        Tracking,
    };

    /// The format of this record.
    std::uint32_t version = VERSION;

    /// The phase of the estimator.
    Phase phase = Phase::Empty;

    /// The numbers of samples and of their faults.
    SampleCounts counts;

    /// The sequence number of the last sample used.
    std::uint32_t sequence = 0;

    /// The device time of the last sample used, which wraps after 2^32 microseconds.
    std::uint32_t timeUs = 0;

    /// The number of consecutive samples whose time went back.
    std::uint32_t late = 0;

    /// The number of corrections that changed the orientation without a motion.
    std::uint32_t jumps = 0;

    /// The device time since the first sample.
    std::uint64_t elapsedUs = 0;

    /// The rotation from body to world.
    Rotation orientation;

    /// The bias of the gyroscope about the body's axes.
    Vector3 bias;

    /// The gyroscope of the last sample.
    Vector3 gyroscope;

    /// The accelerometer of the last usable sample.
    Vector3 accelerometer;

    /// The change of the gyroscope per second, low-passed.
    Vector3 gyroscopeSlope;

    /// The change of the accelerometer per second, low-passed.
    Vector3 accelerometerSlope;

    /// The horizontal velocity along world x and z. The filter pulls it towards zero.
    std::array<double, 2> velocity{};

    /// The horizontal position along world x and z since the filter's start. The filter pulls it
    /// towards zero, because a head stays near its place.
    std::array<double, 2> position{};

    /// The uncertainty of the estimate.
    ErrorCovariance covariance{};

    /// The sums for the filter's next step.
    StepSums step;

    /// While leveling: the integral of the acceleration in the world.
    Vector3 levelSum;

    /// While leveling: the seconds that `levelSum` covers.
    double levelSeconds = 0.0;

    /// While leveling: the integral of the vertical in the body's axes.
    Vector3 levelTurn;

    /// The acceleration in the world, low-passed.
    Vector3 meanAcceleration;

    /// The variance of the acceleration about that mean, in (m/s^2)^2.
    double shaking = 0.0;

    /// The excess of the squared position over its variance, low-passed.
    double excursion = 0.0;

    /// The detection of rest.
    RestState rest;

    /// The influence of the temperature on the bias.
    TemperatureState temperature;

    /// The saturated stretches of gyroscope x, y and z, then of accelerometer x, y and z.
    std::array<SaturatedStretch, 6> stretches;
};

} // namespace qltkit
