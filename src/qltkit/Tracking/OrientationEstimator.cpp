#include <qltkit/Tracking/OrientationEstimator.h>

#include "Tracking/ErrorFilter.h"
#include "Tracking/Rest.h"
#include "Tracking/SaturationRepair.h"
#include "Tracking/StateCheck.h"

#include <algorithm>

namespace qltkit
{
namespace
{

using Phase = OrientationState::Phase;

constexpr double PI = 3.14159265358979323846;

constexpr double STEP_SECONDS = 0.0099; // ten samples with some jitter

// While leveling, the mean of the acceleration has an error: the change of the velocity divided by
// the time.
constexpr double LEVEL_SECONDS = 1.0;
constexpr double FIRST_VELOCITY_CHANGE = 0.7 * 1.4142135623730951; // m/s
constexpr double MAX_LEVEL_DEVIATION = 0.5;                        // radians

// Samples outside these limits are faults of the transfer or of the sensor.
constexpr double MAX_RATE = 70.0;          // rad/s on an axis
constexpr double MAX_ACCELERATION = 400.0; // m/s^2 on an axis
constexpr double MIN_ACCELERATION = 1e-3;  // a sensor that is off gives exactly zero

// Time: a step of at least HALF_RANGE_US is a step back. After more than MAX_LATE steps back in a
// row, the device has restarted its clock. A gap of more than MAX_BRIDGED_SECONDS is not bridged.
constexpr std::uint32_t HALF_RANGE_US = 0x80000000u;
constexpr std::uint32_t MAX_LATE = 32;
constexpr double MAX_BRIDGED_SECONDS = 1.0;
constexpr double LONG_STEP_SECONDS = 0.02; // samples are missing in a longer step
constexpr std::uint32_t MAX_LOST = 10000;  // a larger step restarts the count

// The possible change of the rate (rad/s^2) and of the acceleration during lost reports.
constexpr double UNSEEN_TURN = 1.0;
constexpr double UNSEEN_ACCELERATION = 1.0;
constexpr double UNSEEN_SHARE = 0.3; // a part of the difference between both sides of the gap

constexpr double SHAKING_MEAN_SECONDS = 0.5;
constexpr double SHAKING_SECONDS = 1.0;

bool Within(const Vector3& v, double limit)
{
    // NaN fails these comparisons, so it is outside.
    return std::fabs(v.x) <= limit && std::fabs(v.y) <= limit && std::fabs(v.z) <= limit;
}

bool UsableAccelerometer(const Vector3& v)
{
    return Within(v, MAX_ACCELERATION) && Dot(v, v) > MIN_ACCELERATION * MIN_ACCELERATION;
}

/// Adds a sample to the sums of the filter's step.
void SumUp(StepSums& sums, const Rotation& q, const Vector3& gyroscope, const Vector3& rate,
           double seconds)
{
    const double xx = q.x * q.x;
    const double yy = q.y * q.y;
    const double zz = q.z * q.z;
    const double t = 2.0 * seconds;
    sums.rows[0] +=
        {seconds - t * (yy + zz), t * (q.x * q.y - q.w * q.z), t * (q.x * q.z + q.w * q.y)};
    sums.rows[1] +=
        {t * (q.x * q.y + q.w * q.z), seconds - t * (xx + zz), t * (q.y * q.z - q.w * q.x)};
    sums.rows[2] +=
        {t * (q.x * q.z - q.w * q.y), t * (q.y * q.z + q.w * q.x), seconds - t * (xx + yy)};
    sums.gyroscope += gyroscope * seconds;
    sums.rateSquares += Dot(rate, rate) * seconds;
    sums.seconds += seconds;
}

double LevelDeviation(double seconds)
{
    return std::min(MAX_LEVEL_DEVIATION, FIRST_VELOCITY_CHANGE / (GRAVITY * (seconds + 1e-3)));
}

} // namespace

bool OrientationEstimator::Add(const ImuSample& sample)
{
    if (!Within(sample.gyroscope, MAX_RATE))
    {
        ++mState.counts.refused;
        return false;
    }
    if (mState.phase == Phase::Empty)
    {
        Begin(sample);
        return mState.phase != Phase::Empty;
    }
    if (!AcceptTime(sample))
    {
        return false;
    }
    const std::uint32_t passedUs = sample.timeUs - mState.timeUs;
    const std::uint32_t steps = sample.sequence - mState.sequence;
    mState.sequence = sample.sequence;
    mState.timeUs = sample.timeUs;
    mState.elapsedUs += passedUs;
    ++mState.counts.used;
    Advance(sample, passedUs * 1e-6, steps >= 1 && steps <= MAX_LOST ? steps : 1);
    mState.gyroscope = sample.gyroscope;
    return true;
}

void OrientationEstimator::Begin(const ImuSample& sample)
{
    if (!UsableAccelerometer(sample.accelerometer))
    {
        ++mState.counts.refusedAccelerometers;
        return;
    }
    ++mState.counts.used;
    mState.sequence = sample.sequence;
    mState.timeUs = sample.timeUs;
    for (std::size_t i = ErrorIndex::BIAS; i < ErrorIndex::VELOCITY; ++i)
    {
        mState.covariance[i][i] = FIRST_BIAS_DEVIATION * FIRST_BIAS_DEVIATION;
    }
    const double slope = FIRST_SLOPE_DEVIATION * FIRST_SLOPE_DEVIATION;
    mState.temperature.variance = {slope, slope, slope};
    StartAnew(sample);
}

/// Restarts the leveling at this sample. The heading and the bias stay.
void OrientationEstimator::StartAnew(const ImuSample& sample)
{
    mState.phase = Phase::Leveling;
    mState.gyroscope = sample.gyroscope;
    mState.gyroscopeSlope = mState.accelerometerSlope = {};
    mState.stretches = {};
    mState.rest.rate = mState.rest.slowRate = sample.gyroscope;
    mState.rest.seconds = mState.rest.learnt = 0.0;
    mState.levelSum = mState.levelTurn = {};
    mState.levelSeconds = 0.0;
    mState.shaking = mState.excursion = 0.0;
    ++mState.jumps;
    RestartFilter(mState, LevelDeviation(0.0), {});
    if (UsableAccelerometer(sample.accelerometer))
    {
        mState.accelerometer = mState.rest.acceleration = sample.accelerometer;
        Level(Rotate(mState.orientation, sample.accelerometer), 1e-3);
    }
}

bool OrientationEstimator::AcceptTime(const ImuSample& sample)
{
    const std::uint32_t passedUs = sample.timeUs - mState.timeUs;
    if (passedUs != 0 && passedUs < HALF_RANGE_US)
    {
        mState.late = 0;
        return true;
    }
    ++mState.counts.repeated;
    if (passedUs != 0 && ++mState.late > MAX_LATE)
    {
        mState.late = 0;
        ++mState.counts.gaps;
        mState.sequence = sample.sequence;
        mState.timeUs = sample.timeUs;
        StartAnew(sample);
    }
    return false;
}

void OrientationEstimator::Advance(const ImuSample& sample, double seconds, std::uint32_t steps)
{
    mState.counts.lost += steps - 1;
    if (seconds > MAX_BRIDGED_SECONDS)
    {
        ++mState.counts.gaps;
        WidenAngle(mState, {0.0, 1.0, 0.0},
                   std::min(PI, seconds * (UNSEEN_TURN + Length(mState.gyroscope))));
        StartAnew(sample);
        return;
    }
    // A gyroscope's sample stands for the time since the previous one. During lost reports the rate
    // is the mean of both sides.
    double missing = seconds - seconds / steps;
    missing = std::max(missing, seconds - LONG_STEP_SECONDS);
    const Vector3 rate = sample.gyroscope - mState.bias;
    const Vector3 change = mState.gyroscope - sample.gyroscope;
    mState.orientation =
        Normalized(mState.orientation * RotationBy(rate * seconds + change * (0.5 * missing)));
    const bool usable = UsableAccelerometer(sample.accelerometer);
    const Vector3& accelerometer = usable ? sample.accelerometer : mState.accelerometer;
    mState.counts.refusedAccelerometers += usable ? 0 : 1;
    FollowRest(mState.rest, sample.gyroscope, accelerometer, seconds);
    if (missing > 0.0)
    {
        const Vector3 jump = accelerometer - mState.accelerometer;
        const double turn = UNSEEN_TURN * missing + UNSEEN_SHARE * Length(change);
        const double speed = UNSEEN_ACCELERATION + UNSEEN_SHARE * Length(jump);
        WidenAngle(mState, turn * missing);
        WidenVelocity(mState, {1.0, 0.0, 0.0}, speed * missing);
        WidenVelocity(mState, {0.0, 0.0, 1.0}, speed * missing);
    }
    RepairSaturation(mState, sample, seconds);
    FollowSlopes(mState, sample, seconds);
    mState.accelerometer = accelerometer;
    const Vector3 acceleration = Rotate(mState.orientation, accelerometer);
    if (mState.phase == Phase::Leveling)
    {
        if (usable)
        {
            Level(acceleration, seconds);
        }
        return;
    }
    Track(sample, acceleration, usable, seconds);
}

void OrientationEstimator::Level(const Vector3& acceleration, double seconds)
{
    mState.levelSum += acceleration * seconds;
    mState.levelSeconds += seconds;
    if (Dot(mState.levelSum, mState.levelSum) > 0.0)
    {
        const Rotation up = RotationToUp(mState.levelSum);
        mState.orientation = Normalized(up * mState.orientation);
        mState.levelSum = Rotate(up, mState.levelSum);
    }
    mState.levelTurn += Rotate(mState.orientation.Conjugate(), {0.0, 1.0, 0.0}) * seconds;
    if (mState.levelSeconds >= LEVEL_SECONDS)
    {
        mState.phase = Phase::Tracking;
        mState.meanAcceleration = Rotate(mState.orientation, mState.accelerometer);
        mState.temperature.valid = false;
        RestartFilter(mState, LevelDeviation(mState.levelSeconds), mState.levelTurn);
    }
}

void OrientationEstimator::Track(const ImuSample& sample, const Vector3& acceleration, bool usable,
                                 double seconds)
{
    const Vector3 off = acceleration - mState.meanAcceleration;
    mState.meanAcceleration += off * Share(seconds, SHAKING_MEAN_SECONDS);
    mState.shaking += (Dot(off, off) - mState.shaking) * Share(seconds, SHAKING_SECONDS);

    const Vector3 rate = sample.gyroscope - mState.bias;
    SumUp(mState.step, mState.orientation, sample.gyroscope, rate, seconds);
    if (usable)
    {
        const Vector3 moved = acceleration - Vector3{0.0, GRAVITY, 0.0};
        mState.step.accelerationSquares += Dot(moved, moved) * seconds;
        const double change[] = {moved.x * seconds, moved.z * seconds};
        for (std::size_t i = 0; i < 2; ++i)
        {
            mState.position[i] += (mState.velocity[i] + 0.5 * change[i]) * seconds;
            mState.velocity[i] += change[i];
        }
    }
    else
    {
        constexpr double UNSEEN_DENSITY = 2.5; // (m/s)^2/s, for a head that moves freely
        WidenVelocity(mState, {1.0, 0.0, 0.0}, std::sqrt(UNSEEN_DENSITY * seconds));
        WidenVelocity(mState, {0.0, 0.0, 1.0}, std::sqrt(UNSEEN_DENSITY * seconds));
    }
    if (mState.step.seconds >= STEP_SECONDS)
    {
        FollowTemperature(mState, sample.temperature);
        FilterStep(mState, IsAtRest());
    }
}

Vector3 OrientationEstimator::GetBiasDeviation() const
{
    const ErrorCovariance& p = mState.covariance;
    constexpr std::size_t B = ErrorIndex::BIAS;
    return {std::sqrt(p[B][B]), std::sqrt(p[B + 1][B + 1]), std::sqrt(p[B + 2][B + 2])};
}

double OrientationEstimator::GetInclinationDeviation() const
{
    if (mState.phase == Phase::Leveling)
    {
        return LevelDeviation(mState.levelSeconds);
    }
    const ErrorCovariance& p = mState.covariance;
    return mState.phase == Phase::Empty ? PI : std::min(PI, std::sqrt(p[0][0] + p[2][2]));
}

double OrientationEstimator::GetHeadingDeviation() const
{
    return mState.phase == Phase::Empty ? PI : std::min(PI, std::sqrt(mState.covariance[1][1]));
}

bool OrientationEstimator::IsAtRest() const { return LiesStill(mState.rest); }

bool OrientationEstimator::Restore(const OrientationState& state)
{
    if (!IsSound(state))
    {
        return false;
    }
    mState = state;
    return true;
}

} // namespace qltkit
