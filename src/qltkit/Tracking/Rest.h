// Detects rest, and follows the temperature. Both change the knowledge about the gyroscope's bias
// outside the filter.
#pragma once

#include <qltkit/Tracking/OrientationState.h>

#include <algorithm>

namespace qltkit
{

/// The share of the input that a low-pass with this time constant takes in one step.
inline double Share(double seconds, double timeConstant)
{
    return std::min(1.0, seconds / timeConstant);
}

/// Takes a sample that came `seconds` after the previous one.
void FollowRest(RestState& rest, const Vector3& gyroscope, const Vector3& accelerometer,
                double seconds);

/// True when the sensor has been still long enough to learn from it.
bool LiesStill(const RestState& rest);

/// Corrects the bias for a change of the temperature by the learned slope. Absurd temperatures
/// change nothing.
void FollowTemperature(OrientationState& state, double celsius);

} // namespace qltkit
