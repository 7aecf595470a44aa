#include "Tracking/SaturationRepair.h"

#include "Tracking/ErrorFilter.h"

#include <algorithm>

namespace qltkit
{
namespace
{

constexpr int GYROSCOPE_AXES = 3;

constexpr double SLOPE_SECONDS = 0.003;
constexpr double AFTER_SECONDS = 0.0039; // four samples with some jitter

// The part of the triangle that the peak fills, and the standard deviation of the restored amount
// as a part of it. The peak of a rate is round like a parabola, which fills two thirds. The peaks
// of a shaken accelerometer are pointed.
constexpr double GYROSCOPE_PART = 0.6;
constexpr double GYROSCOPE_DEVIATION = 1.0;
constexpr double ACCELEROMETER_PART = 1.0;
constexpr double ACCELEROMETER_DEVIATION = 0.5;

Vector3 UnitAxis(int i) { return {i == 0 ? 1.0 : 0.0, i == 1 ? 1.0 : 0.0, i == 2 ? 1.0 : 0.0}; }

/// The area of the triangle beyond the limit: two slopes meet above a base of `seconds`.
double Triangle(double slopeBefore, double slopeAfter, double seconds)
{
    const double sum = slopeBefore + slopeAfter;
    return sum > 0.0 ? 0.5 * seconds * seconds * slopeBefore * slopeAfter / sum : 0.0;
}

/// Updates the restored amount to the area of this triangle, along a world direction.
void PutBack(OrientationState& state, SaturatedStretch& stretch, int axis, double slopeAfter,
             const Vector3& direction)
{
    const bool gyroscope = axis < GYROSCOPE_AXES;
    const double total = (gyroscope ? GYROSCOPE_PART : ACCELEROMETER_PART) *
                         Triangle(stretch.slope, slopeAfter, stretch.seconds);
    const double deviation = (gyroscope ? GYROSCOPE_DEVIATION : ACCELEROMETER_DEVIATION) * total;
    const double variance = deviation * deviation;
    const double wider = std::sqrt(std::max(0.0, variance - stretch.variance));
    const Vector3 change = direction * (stretch.sign * (total - stretch.total));
    stretch.total = total;
    stretch.variance = std::max(variance, stretch.variance);
    if (gyroscope)
    {
        state.orientation = Normalized(RotationBy(change) * state.orientation);
        WidenAngle(state, direction, wider);
        return;
    }
    state.levelSum += change;
    state.velocity[0] += change.x;
    state.velocity[1] += change.z;
    WidenVelocity(state, direction, wider);
}

/// Ends a stretch. `slopeAfter` is the slope after it, or the slope before it when none was
/// measured.
void EndStretch(OrientationState& state, SaturatedStretch& stretch, int axis, double slopeAfter)
{
    stretch.ending = false;
    PutBack(state, stretch, axis, slopeAfter, stretch.direction * (1.0 / stretch.seconds));
    ++state.counts.repaired;
    state.jumps += axis < GYROSCOPE_AXES ? 1 : 0;
}

void BeginStretch(SaturatedStretch& stretch, double value, double slope)
{
    stretch = SaturatedStretch();
    stretch.active = true;
    stretch.sign = value < 0.0 ? -1.0 : 1.0;
    stretch.slope = std::max(0.0, stretch.sign * slope);
}

void FollowAxis(OrientationState& state, int axis, bool saturated, double value, double slope,
                double seconds)
{
    SaturatedStretch& stretch = state.stretches[static_cast<std::size_t>(axis)];
    if (saturated)
    {
        if (stretch.ending)
        {
            EndStretch(state, stretch, axis, stretch.slope); // the next stretch begins at once
        }
        if (!stretch.active)
        {
            BeginStretch(stretch, value, slope);
        }
        stretch.limit = value;
        stretch.seconds += seconds;
        const Vector3 direction = Rotate(state.orientation, UnitAxis(axis % GYROSCOPE_AXES));
        stretch.direction += direction * seconds;
        PutBack(state, stretch, axis, stretch.slope,
                direction); // treats the stretch as if it ended now
        return;
    }
    stretch.ending = stretch.ending || stretch.active;
    stretch.active = false;
    if (stretch.ending)
    {
        stretch.after += seconds;
        if (stretch.after >= AFTER_SECONDS)
        {
            const double fall = stretch.sign * (stretch.limit - value);
            EndStretch(state, stretch, axis, std::max(0.0, fall / stretch.after));
        }
    }
}

void FollowSlope(double& slope, double value, double last, bool saturated, double seconds)
{
    const double difference = saturated ? 0.0 : (value - last) / seconds;
    slope = saturated ? 0.0 : slope + (difference - slope) * seconds / (SLOPE_SECONDS + seconds);
}

} // namespace

void RepairSaturation(OrientationState& state, const ImuSample& sample, double seconds)
{
    for (int axis = 0; axis < 2 * GYROSCOPE_AXES; ++axis)
    {
        const bool saturated = (sample.saturated >> axis & 1) != 0;
        const SaturatedStretch& stretch = state.stretches[static_cast<std::size_t>(axis)];
        if (saturated || stretch.active || stretch.ending)
        {
            const bool gyroscope = axis < GYROSCOPE_AXES;
            const int i = axis % GYROSCOPE_AXES;
            FollowAxis(state, axis, saturated,
                       (gyroscope ? sample.gyroscope : sample.accelerometer)[i],
                       (gyroscope ? state.gyroscopeSlope : state.accelerometerSlope)[i], seconds);
        }
    }
    state.counts.saturated += sample.saturated != 0 ? 1 : 0;
}

void FollowSlopes(OrientationState& state, const ImuSample& sample, double seconds)
{
    const auto follow =
        [seconds](Vector3& slope, const Vector3& value, const Vector3& last, unsigned saturated)
    {
        for (int i = 0; i < 3; ++i)
        {
            FollowSlope(slope[i], value[i], last[i], (saturated >> i & 1u) != 0, seconds);
        }
    };
    follow(state.gyroscopeSlope, sample.gyroscope, state.gyroscope,
           sample.saturated >> ImuSample::GYROSCOPE_BITS);
    follow(state.accelerometerSlope, sample.accelerometer, state.accelerometer,
           sample.saturated >> ImuSample::ACCELEROMETER_BITS);
}

} // namespace qltkit
