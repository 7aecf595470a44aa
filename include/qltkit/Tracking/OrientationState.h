// All that the orientation estimator knows, as a plain record: copy its bytes to save it. Angles
// are radians, times seconds, lengths metres. "World" has y up and a heading of its own.
#pragma once

#include <qltkit/Tracking/Rotation.h>

#include <array>
#include <cstdint>

namespace qltkit
{

/// What was fed, and what was wrong with it.
struct SampleCounts
{
    std::uint64_t used = 0;
    std::uint64_t repeated = 0;              // the time did not grow; not integrated
    std::uint64_t refused = 0;               // the gyroscope was not finite or absurd
    std::uint64_t refusedAccelerometers = 0; // the same of the accelerometer; the rest was used
    std::uint64_t lost = 0;                  // by the sequence numbers
    std::uint64_t gaps = 0;                  // too long to bridge: the inclination started anew
    std::uint64_t saturated = 0;             // with an axis at its limit
    std::uint64_t repaired = 0;              // saturated stretches put back
};

/// A stretch in which one axis is at its limit, and the first milliseconds after it.
struct SaturatedStretch
{
    bool active = false;   // the axis is at its limit
    bool ending = false;   // it has left it, and the slope behind is being measured
    double sign = 0.0;     // of the limit
    double limit = 0.0;    // the value there
    double seconds = 0.0;  // at the limit
    double after = 0.0;    // since then
    double slope = 0.0;    // before the limit, towards it, per second
    double total = 0.0;    // put back so far: radians or m/s
    double variance = 0.0; // of that
    Vector3 direction;     // of the axis in the world, times seconds at the limit
};

/// The errors that the filter estimates, in this order: the angle about world x, y, z; the bias of
/// the gyroscope x, y, z; velocity x, z; position x, z.
struct ErrorIndex
{
    static constexpr int ANGLE = 0;
    static constexpr int BIAS = 3;
    static constexpr int VELOCITY = 6;
    static constexpr int POSITION = 8;
    static constexpr int COUNT = 10;
};

using ErrorCovariance = std::array<std::array<double, ErrorIndex::COUNT>, ErrorIndex::COUNT>;

/// Sums over the samples since the filter's last step.
struct StepSums
{
    double seconds = 0.0;
    std::array<Vector3, 3> rows; // of the rotation matrix, times seconds
    Vector3 gyroscope;           // times seconds
    double rateSquares = 0.0;    // times seconds
    double accelerationSquares = 0.0;
};

/// Whether the sensor lies still.
struct RestState
{
    Vector3 rate;          // low-passed gyroscope
    Vector3 slowRate;      // the same over a longer time
    Vector3 acceleration;  // low-passed accelerometer
    double wander = 0.0;   // variance of `rate` about `slowRate`, per axis
    double seconds = 0.0;  // still without a break
    double learnt = 0.0;   // seconds of this rest that the bias was learned from
    double turning = 0.0;  // seconds of this rest in which the rate was too far off that bias
    bool known = false;    // the bias has been learned during a long rest
    Vector3 bias;          // as it was learned at rest
    double variance = 0.0; // of that, per axis
};

/// The bias per kelvin. It is learned at rest.
struct TemperatureState
{
    bool valid = false;
    double celsius = 0.0;
    Vector3 slope;
    Vector3 variance;       // of the slope
    Vector3 biasCovariance; // of the slope with the bias
};

struct OrientationState
{
    /// Changes whenever a record of an older version cannot be continued.
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
    std::uint32_t late = 0;      // samples in a row whose time went back
    std::uint32_t jumps = 0;     // changes of the orientation that no motion explains
    std::uint64_t elapsedUs = 0; // since the first sample

    Rotation orientation;
    Vector3 bias;
    Vector3 gyroscope;                // of the last sample
    Vector3 accelerometer;            // of the last usable one
    Vector3 gyroscopeSlope;           // low-passed, per second
    Vector3 accelerometerSlope;       // low-passed, per second
    std::array<double, 2> velocity{}; // horizontal: world x, z
    std::array<double, 2> position{};
    ErrorCovariance covariance{};
    StepSums step;

    Vector3 levelSum; // world acceleration times seconds, while leveling
    double levelSeconds = 0.0;
    Vector3 levelTurn; // the vertical seen from the body, times seconds

    Vector3 meanAcceleration; // in the world, low-passed
    double shaking = 0.0;     // variance of the acceleration about it
    double excursion = 0.0;   // square of the position beyond its own uncertainty

    RestState rest;
    TemperatureState temperature;
    std::array<SaturatedStretch, 6> stretches; // gyroscope x, y, z; accelerometer x, y, z
};

} // namespace qltkit
