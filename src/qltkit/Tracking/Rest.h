// What is seen of the gyroscope's bias beside the filter: whether the sensor lies still, and the
// temperature.
#pragma once

#include <qltkit/Tracking/OrientationState.h>

#include <algorithm>

namespace qltkit
{

/// The part of a step that a low-pass with this time constant takes.
inline double Share(double seconds, double timeConstant)
{
    return std::min(1.0, seconds / timeConstant);
}

/// Follows the samples, of which this one came `seconds` after the last.
void FollowRest(RestState& rest, const Vector3& gyroscope, const Vector3& accelerometer,
                double seconds);

/// The sensor has been lying still for long enough to learn from it.
bool LiesStill(const RestState& rest);

/// Lets the temperature move the bias by what has been learned. Absurd temperatures change nothing.
void FollowTemperature(OrientationState& state, double celsius);

} // namespace qltkit
