// The Kalman filter over the errors of the estimate: one step for every ten milliseconds of
// samples.
#pragma once

#include <qltkit/Tracking/OrientationState.h>

namespace qltkit
{

/// Standard gravity in m/s^2.
constexpr double GRAVITY = 9.80665;

constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;

/// First standard deviation of the bias, rad/s.
constexpr double FIRST_BIAS_DEVIATION = 0.5 * RADIANS_PER_DEGREE;

/// First standard deviation of the bias per kelvin, rad/s/K.
constexpr double FIRST_SLOPE_DEVIATION = 0.02 * RADIANS_PER_DEGREE;

/// Propagates the covariance over the samples in `state.step`, takes in what is known about
/// velocity, position and bias, corrects the state and clears the sums.
void FilterStep(OrientationState& state, bool atRest);

/// Adds `deviation`^2 to the variance of the angle about `axis`, a world vector of length 1 or
/// less.
void WidenAngle(OrientationState& state, const Vector3& axis, double deviation);

/// The same about every axis.
void WidenAngle(OrientationState& state, double deviation);

/// Adds to the variance of the horizontal velocity along `axis`, in m/s.
void WidenVelocity(OrientationState& state, const Vector3& axis, double deviation);

/// Forgets velocity, position and inclination, whose deviations become those given. What is known
/// of the bias and the heading stays; `turn` is the vertical seen from the body, summed over
/// seconds in which the heading turned with the unknown bias.
void RestartFilter(OrientationState& state, double angleDeviation, const Vector3& turn);

} // namespace qltkit
