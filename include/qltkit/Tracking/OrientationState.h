#pragma once

#include <qltkit/Tracking/Rotation.h>

#include <array>
#include <cstdint>

namespace qltkit
{

/// The number of samples that the estimator took, and of the faults in them.
struct SampleCounts
{
    std::uint64_t used = 0;
    std::uint64_t repeated = 0;              // the time did not increase; not integrated
    std::uint64_t refused = 0;               // the gyroscope was absurd or not finite
    std::uint64_t refusedAccelerometers = 0; // the same for the accelerometer alone
    std::uint64_t lost = 0;                  // reports missing by their sequence numbers
    std::uint64_t gaps = 0;                  // gaps too long to bridge: the inclination restarted
    std::uint64_t saturated = 0;             // samples with an axis at its limit
    std::uint64_t repaired = 0;              // saturated stretches whose loss was restored
};

/// A saturated stretch of one axis: the time at the limit, and the first milliseconds after it.
struct SaturatedStretch
{
    bool active = false;   // the axis is at its limit
    bool ending = false;   // the axis has left the limit; the slope after it is being measured
    double sign = 0.0;     // the sign of the limit
    double limit = 0.0;    // the value at the limit
    double seconds = 0.0;  // the time at the limit
    double after = 0.0;    // the time since the limit
    double slope = 0.0;    // the slope towards the limit before it, per second
    double total = 0.0;    // the restored amount so far: radians or m/s
    double variance = 0.0; // of the restored amount
    Vector3 direction;     // the axis in the world, integrated over the time at the limit
};

/// The errors that the filter estimates, in this order: the angle about world x, y, z; the bias of
/// the gyroscope about body x, y, z; the velocity along world x, z; the position along world x, z.
/// The constants are the first index of each group.
struct ErrorIndex
{
    static constexpr int ANGLE = 0;
    static constexpr int BIAS = 3;
    static constexpr int VELOCITY = 6;
    static constexpr int POSITION = 8;
    static constexpr int COUNT = 10;
};

/// The covariance of these errors, as a symmetric matrix.
using ErrorCovariance = std::array<std::array<double, ErrorIndex::COUNT>, ErrorIndex::COUNT>;

/// Integrals over the samples since the filter's last step: each sample counts with its seconds.
struct StepSums
{
    double seconds = 0.0;
    std::array<Vector3, 3> rows; // the rows of the rotation matrix
    Vector3 gyroscope;
    double rateSquares = 0.0;
    double accelerationSquares = 0.0;
};

/// The detection of rest, and the bias that was learned at rest.
struct RestState
{
    Vector3 rate;          // low-passed gyroscope
    Vector3 slowRate;      // the same over a longer time
    Vector3 acceleration;  // low-passed accelerometer
    double wander = 0.0;   // variance of `rate` about `slowRate`, per axis
    double seconds = 0.0;  // how long the sensor has been still without a break
    double learnt = 0.0;   // seconds of this rest that taught the bias
    double turning = 0.0;  // seconds of this rest in which the rate was too far from `bias`
    bool known = false;    // the bias has been learned during a long rest
    Vector3 bias;          // the bias as learned at rest
    double variance = 0.0; // of `bias`, per axis
};

/// The change of the bias per kelvin. The estimator learns it at rest.
struct TemperatureState
{
    bool valid = false;
    double celsius = 0.0;
    Vector3 slope;
    Vector3 variance;       // of the slope
    Vector3 biasCovariance; // of the slope with the bias
};

/// The whole state of an orientation estimator as a plain record. Copy its bytes to save it. Angles
/// are in radians, times in seconds and lengths in metres, unless a name says otherwise. "World"
/// means a frame with y up and a heading of its own.
struct OrientationState
{
    /// The number of the record's format. A record with another number cannot be continued.
    static constexpr std::uint32_t VERSION = 1;

    enum class Phase : std::uint32_t
    {
        Empty,    // no usable sample yet
        Leveling, // the inclination is the mean of the samples so far
        Tracking, // the filter runs
    };

    std::uint32_t version = VERSION;
    Phase phase = Phase::Empty;
    SampleCounts counts;

    std::uint32_t sequence = 0; // of the last sample used
    std::uint32_t timeUs = 0;
    std::uint32_t late = 0;      // consecutive samples whose time went back
    std::uint32_t jumps = 0;     // corrections that changed the orientation without a motion
    std::uint64_t elapsedUs = 0; // since the first sample

    Rotation orientation;
    Vector3 bias;
    Vector3 gyroscope;                // of the last sample
    Vector3 accelerometer;            // of the last usable sample
    Vector3 gyroscopeSlope;           // low-passed, per second
    Vector3 accelerometerSlope;       // low-passed, per second
    std::array<double, 2> velocity{}; // horizontal, along world x, z
    std::array<double, 2> position{};
    ErrorCovariance covariance{};
    StepSums step;

    Vector3 levelSum; // while leveling: the integral of the acceleration in the world
    double levelSeconds = 0.0;
    Vector3 levelTurn; // while leveling: the integral of the vertical in the body's axes

    Vector3 meanAcceleration; // in the world, low-passed
    double shaking = 0.0;     // variance of the acceleration about that mean
    double excursion = 0.0;   // excess of the squared position over its variance, low-passed

    RestState rest;
    TemperatureState temperature;
    std::array<SaturatedStretch, 6> stretches; // gyroscope x, y, z; accelerometer x, y, z
};

} // namespace qltkit
