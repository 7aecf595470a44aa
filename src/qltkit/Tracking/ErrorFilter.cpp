#include "Tracking/ErrorFilter.h"

#include <algorithm>

namespace qltkit
{
namespace
{

constexpr int ANGLE = ErrorIndex::ANGLE;
constexpr int BIAS = ErrorIndex::BIAS;
constexpr int VELOCITY = ErrorIndex::VELOCITY;
constexpr int POSITION = ErrorIndex::POSITION;
constexpr int COUNT = ErrorIndex::COUNT;

using Errors = std::array<double, COUNT>;

constexpr double Square(double x) { return x * x; }

// The noise of the angle has two parts. One is constant, in rad^2/s. The other grows with the rate,
// because scale and axes of a gyroscope have errors of some tenths of a percent.
constexpr double ANGLE_NOISE = Square(0.05 * RADIANS_PER_DEGREE);
constexpr double ANGLE_NOISE_PER_RATE = Square(0.001);

// Growth of the bias variance per second: at rest, in motion after the bias has been learned at
// rest, and in motion before that.
constexpr double BIAS_GROWTH_AT_REST = Square(0.003 * RADIANS_PER_DEGREE);
constexpr double BIAS_GROWTH = Square(0.005 * RADIANS_PER_DEGREE);
constexpr double BIAS_GROWTH_UNKNOWN = Square(0.01 * RADIANS_PER_DEGREE);
constexpr double MAX_BIAS_VARIANCE = Square(2.0 * FIRST_BIAS_DEVIATION);

// The noise of the velocity has two parts. One is constant, in (m/s)^2/s. The other grows with the
// acceleration, because scale, axes and timing of an accelerometer have errors of some percent.
constexpr double VELOCITY_NOISE = Square(0.01);
constexpr double VELOCITY_NOISE_PER_ACCELERATION = Square(0.03);

// The spread of the head's position and velocity with a correlation time of half a second. It has a
// constant part, and a part per m/s^2 of shaking.
constexpr double POSITION_DENSITY = Square(0.06);
constexpr double POSITION_DENSITY_PER_SHAKING = Square(0.02);
constexpr double VELOCITY_DENSITY = Square(0.4);
constexpr double VELOCITY_DENSITY_PER_SHAKING = Square(0.03);
constexpr double EXCURSION_SECONDS = 2.0; // time constant that detects a walk
constexpr double VELOCITY_DENSITY_AT_REST = Square(0.02);

constexpr double FIRST_VELOCITY_VARIANCE = Square(0.7);
constexpr double FIRST_POSITION_VARIANCE = Square(0.2);

// Rest: REST_DENSITY is the noise of the bias seen at rest, in (rad/s)^2 s. The bias counts as
// known after KNOWN_AFTER_SECONDS. A rate that is more than MAX_DEVIATIONS from the known bias is a
// turn, but for at most MAX_TURN_SECONDS.
constexpr double REST_DENSITY = Square(0.01 * RADIANS_PER_DEGREE);
constexpr double WANDER_SECONDS = 2.0;
constexpr double KNOWN_AFTER_SECONDS = 10.0;
constexpr double MAX_DEVIATIONS = 4.0;
constexpr double MAX_TURN_SECONDS = 120.0; // no head turns evenly for longer

/// M = F * M, where F propagates the errors over one step. The bias changes the angle. The angle
/// tilts gravity into the velocity. The velocity changes the position.
void MoveRows(ErrorCovariance& m, const StepSums& step)
{
    const double t = step.seconds;
    for (int j = 0; j < COUNT; ++j)
    {
        double turn[3];
        for (int i = 0; i < 3; ++i)
        {
            const Vector3& row = step.rows[i];
            turn[i] = -(row.x * m[BIAS][j] + row.y * m[BIAS + 1][j] + row.z * m[BIAS + 2][j]);
        }
        const double dx = -GRAVITY * t * (m[ANGLE + 2][j] + 0.5 * turn[2]);
        const double dz = GRAVITY * t * (m[ANGLE][j] + 0.5 * turn[0]);
        m[POSITION][j] += t * (m[VELOCITY][j] + 0.5 * dx);
        m[POSITION + 1][j] += t * (m[VELOCITY + 1][j] + 0.5 * dz);
        m[VELOCITY][j] += dx;
        m[VELOCITY + 1][j] += dz;
        for (int i = 0; i < 3; ++i)
        {
            m[ANGLE + i][j] += turn[i];
        }
    }
}

void Transpose(ErrorCovariance& m)
{
    for (int i = 0; i < COUNT; ++i)
    {
        for (int j = 0; j < i; ++j)
        {
            std::swap(m[i][j], m[j][i]);
        }
    }
}

/// Rounding makes the two halves differ, and the difference would grow without limit. So average
/// them.
void MakeSymmetric(ErrorCovariance& m)
{
    for (int i = 0; i < COUNT; ++i)
    {
        for (int j = 0; j < i; ++j)
        {
            m[i][j] = m[j][i] = 0.5 * (m[i][j] + m[j][i]);
        }
    }
}

void AddNoise(OrientationState& state, bool atRest)
{
    ErrorCovariance& p = state.covariance;
    const StepSums& step = state.step;
    const double angle = ANGLE_NOISE * step.seconds + ANGLE_NOISE_PER_RATE * step.rateSquares;
    const double growth = atRest             ? BIAS_GROWTH_AT_REST
                          : state.rest.known ? BIAS_GROWTH
                                             : BIAS_GROWTH_UNKNOWN;
    for (int i = 0; i < 3; ++i)
    {
        p[ANGLE + i][ANGLE + i] += angle;
        if (p[BIAS + i][BIAS + i] < MAX_BIAS_VARIANCE)
        {
            p[BIAS + i][BIAS + i] += growth * step.seconds;
        }
    }
    const double velocity =
        VELOCITY_NOISE * step.seconds + VELOCITY_NOISE_PER_ACCELERATION * step.accelerationSquares;
    p[VELOCITY][VELOCITY] += velocity;
    p[VELOCITY + 1][VELOCITY + 1] += velocity;
    state.rest.variance += BIAS_GROWTH_AT_REST * step.seconds;
}

/// Processes an observation of the error `index` with the value `seen` and this variance.
void Observe(ErrorCovariance& p, Errors& errors, int index, double seen, double variance)
{
    const std::array<double, COUNT> column = p[index]; // symmetric
    const double gain = 1.0 / (column[index] + variance);
    const double innovation = gain * (seen - errors[index]);
    for (int i = 0; i < COUNT; ++i)
    {
        errors[i] += column[i] * innovation;
        const double g = column[i] * gain;
        for (int j = 0; j < COUNT; ++j)
        {
            p[i][j] -= g * column[j];
        }
    }
}

void ObserveMotion(OrientationState& state, Errors& errors)
{
    ErrorCovariance& p = state.covariance;
    const double t = state.step.seconds;
    const std::array<double, 2>& x = state.position;
    const double own = p[POSITION][POSITION] + p[POSITION + 1][POSITION + 1];
    const double beyond = std::max(0.0, 0.5 * (x[0] * x[0] + x[1] * x[1] - own));
    state.excursion += (beyond - state.excursion) * std::min(1.0, t / EXCURSION_SECONDS);
    const double position =
        POSITION_DENSITY + POSITION_DENSITY_PER_SHAKING * state.shaking + state.excursion;
    const double velocity = VELOCITY_DENSITY + VELOCITY_DENSITY_PER_SHAKING * state.shaking;
    for (int i = 0; i < 2; ++i)
    {
        Observe(p, errors, POSITION + i, -x[i], position / t);
    }
    for (int i = 0; i < 2; ++i)
    {
        Observe(p, errors, VELOCITY + i, -state.velocity[i], velocity / t);
    }
}

/// A slow turn that begins at rest is no bias, because a known bias does not change so fast.
bool LooksLikeATurn(const RestState& rest)
{
    const double limit = Square(MAX_DEVIATIONS) * (rest.variance + REST_DENSITY);
    const Vector3 off = rest.rate - rest.bias;
    return rest.known && Dot(off, off) > limit;
}

/// Handles a turn that lasts too long. It was a change of the bias.
void ForgetBias(OrientationState& state)
{
    for (int i = BIAS; i < VELOCITY; ++i)
    {
        state.covariance[i][i] += Square(FIRST_BIAS_DEVIATION);
    }
    state.rest.known = false;
    state.rest.learnt = 0.0;
}

Vector3 BiasVariance(const ErrorCovariance& p)
{
    return {p[BIAS][BIAS], p[BIAS + 1][BIAS + 1], p[BIAS + 2][BIAS + 2]};
}

/// Corrects the slope as far as it correlates with the bias. Observations of the bias in motion are
/// too rough to learn the slope from.
void FollowSlope(OrientationState& state, const Errors& errors, const Vector3& before, bool learn)
{
    TemperatureState& t = state.temperature;
    const Vector3 after = BiasVariance(state.covariance);
    for (int i = 0; i < 3; ++i)
    {
        const double share = t.biasCovariance[i] / before[i];
        t.biasCovariance[i] = share * std::min(before[i], after[i]);
        if (learn)
        {
            t.slope[i] += share * errors[BIAS + i];
            t.variance[i] -= share * share * (before[i] - after[i]);
        }
    }
}

/// Returns true when the bias was learned.
bool ObserveRest(OrientationState& state, Errors& errors)
{
    ErrorCovariance& p = state.covariance;
    RestState& rest = state.rest;
    const double t = state.step.seconds;
    for (int i = 0; i < 2; ++i)
    {
        Observe(p, errors, VELOCITY + i, -state.velocity[i], VELOCITY_DENSITY_AT_REST / t);
    }
    if (LooksLikeATurn(rest))
    {
        rest.turning += t;
        if (rest.turning < MAX_TURN_SECONDS)
        {
            return false;
        }
        ForgetBias(state);
    }
    rest.turning = 0.0;
    const Vector3 off = state.step.gyroscope * (1.0 / t) - state.bias;
    const double density = REST_DENSITY + WANDER_SECONDS * rest.wander;
    for (int i = 0; i < 3; ++i)
    {
        Observe(p, errors, BIAS + i, off[i], density / t);
    }
    rest.learnt += t;
    rest.known = rest.known || rest.learnt > KNOWN_AFTER_SECONDS;
    rest.bias = state.bias + Vector3{errors[BIAS], errors[BIAS + 1], errors[BIAS + 2]};
    const Vector3 variance = BiasVariance(p);
    rest.variance = std::max({variance.x, variance.y, variance.z});
    return true;
}

/// Moves the errors out of the filter into the estimate.
void Correct(OrientationState& state, const Errors& errors)
{
    const Vector3 angle{errors[ANGLE], errors[ANGLE + 1], errors[ANGLE + 2]};
    state.orientation = Normalized(RotationBy(angle) * state.orientation);
    state.bias += Vector3{errors[BIAS], errors[BIAS + 1], errors[BIAS + 2]};
    for (int i = 0; i < 2; ++i)
    {
        state.velocity[i] += errors[VELOCITY + i];
        state.position[i] += errors[POSITION + i];
    }
}

} // namespace

void FilterStep(OrientationState& state, bool atRest)
{
    MoveRows(state.covariance, state.step);
    Transpose(state.covariance); // gives F * P * F', because P is symmetric
    MoveRows(state.covariance, state.step);
    MakeSymmetric(state.covariance);
    AddNoise(state, atRest);
    Errors errors{};
    const Vector3 before = BiasVariance(state.covariance);
    ObserveMotion(state, errors);
    const bool learned = atRest && ObserveRest(state, errors);
    if (!atRest)
    {
        state.rest.learnt = state.rest.turning = 0.0;
    }
    FollowSlope(state, errors, before, learned);
    Correct(state, errors);
    state.step = StepSums();
}

void WidenAngle(OrientationState& state, const Vector3& axis, double deviation)
{
    const double variance = deviation * deviation;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            state.covariance[ANGLE + i][ANGLE + j] += variance * axis[i] * axis[j];
        }
    }
}

void WidenAngle(OrientationState& state, double deviation)
{
    for (int i = 0; i < 3; ++i)
    {
        state.covariance[ANGLE + i][ANGLE + i] += deviation * deviation;
    }
}

void WidenVelocity(OrientationState& state, const Vector3& axis, double deviation)
{
    const double variance = deviation * deviation;
    const double along[] = {axis.x, axis.z};
    for (int i = 0; i < 2; ++i)
    {
        for (int j = 0; j < 2; ++j)
        {
            state.covariance[VELOCITY + i][VELOCITY + j] += variance * along[i] * along[j];
        }
    }
}

void RestartFilter(OrientationState& state, double angleDeviation, const Vector3& turn)
{
    ErrorCovariance& p = state.covariance;
    const ErrorCovariance before = p;
    p = {};
    p[ANGLE][ANGLE] = p[ANGLE + 2][ANGLE + 2] = Square(angleDeviation);
    p[ANGLE + 1][ANGLE + 1] = before[ANGLE + 1][ANGLE + 1];
    for (int i = BIAS; i < VELOCITY; ++i)
    {
        for (int j = BIAS; j < VELOCITY; ++j)
        {
            p[i][j] = before[i][j];
            p[ANGLE + 1][i] -= p[i][j] * turn[j - BIAS];
        }
        p[i][ANGLE + 1] = p[ANGLE + 1][i];
        p[ANGLE + 1][ANGLE + 1] -= p[ANGLE + 1][i] * turn[i - BIAS];
    }
    for (int i = 0; i < 2; ++i)
    {
        p[VELOCITY + i][VELOCITY + i] = FIRST_VELOCITY_VARIANCE;
        p[POSITION + i][POSITION + i] = FIRST_POSITION_VARIANCE;
    }
    state.velocity = {};
    state.position = {};
    state.step = StepSums();
}

} // namespace qltkit
