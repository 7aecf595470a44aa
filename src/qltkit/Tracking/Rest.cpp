#include "Tracking/Rest.h"

#include "Tracking/ErrorFilter.h"

namespace qltkit
{
namespace
{

constexpr double MEAN_SECONDS = 0.25;
constexpr double SLOW_SECONDS = 2.0;
constexpr double MAX_RATE = 2.0 * RADIANS_PER_DEGREE;
constexpr double MAX_ACCELERATION = 0.5;
constexpr double REST_AFTER_SECONDS = 1.5;

constexpr double MIN_CELSIUS = -60.0;
constexpr double MAX_CELSIUS = 150.0;

} // namespace

void FollowRest(RestState& rest, const Vector3& gyroscope, const Vector3& accelerometer,
                double seconds)
{
    const double share = Share(seconds, MEAN_SECONDS);
    const double slowShare = Share(seconds, SLOW_SECONDS);
    rest.rate += (gyroscope - rest.rate) * share;
    rest.acceleration += (accelerometer - rest.acceleration) * share;
    const Vector3 off = rest.rate - rest.slowRate;
    rest.slowRate += off * slowShare;
    rest.wander += (Dot(off, off) / 3.0 - rest.wander) * slowShare;

    const Vector3 rate = gyroscope - rest.rate;
    const Vector3 acceleration = accelerometer - rest.acceleration;
    const Vector3 turn = rest.rate - rest.bias;
    const bool still = Dot(rate, rate) < MAX_RATE * MAX_RATE &&
                       Dot(turn, turn) < MAX_RATE * MAX_RATE &&
                       Dot(acceleration, acceleration) < MAX_ACCELERATION * MAX_ACCELERATION;
    rest.seconds = still ? rest.seconds + seconds : 0.0;
}

bool LiesStill(const RestState& rest) { return rest.seconds >= REST_AFTER_SECONDS; }

void FollowTemperature(OrientationState& state, double celsius)
{
    TemperatureState& t = state.temperature;
    if (!(celsius > MIN_CELSIUS && celsius < MAX_CELSIUS))
    {
        return;
    }
    const double change = t.valid ? celsius - t.celsius : 0.0;
    t.valid = true;
    t.celsius = celsius;
    double widest = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        state.bias[i] += t.slope[i] * change;
        state.rest.bias[i] += t.slope[i] * change;
        double& variance = state.covariance[ErrorIndex::BIAS + i][ErrorIndex::BIAS + i];
        variance += change * (2.0 * t.biasCovariance[i] + change * t.variance[i]);
        t.biasCovariance[i] += change * t.variance[i];
        widest = std::max(widest, t.variance[i]);
    }
    state.rest.variance += change * change * widest;
}

} // namespace qltkit
