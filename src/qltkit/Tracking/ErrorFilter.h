// The Kalman filter over the errors of the estimate. It takes one step for every ten milliseconds
// of samples.
#pragma once

#include <qltkit/Tracking/OrientationState.h>

namespace qltkit
{

/// Standard gravity in m/s^2.
constexpr double GRAVITY = 9.80665;

constexpr double RADIANS_PER_DEGREE = 0.017453292519943295;

/// Initial standard deviation of the bias in rad/s.
constexpr double FIRST_BIAS_DEVIATION = 0.5 * RADIANS_PER_DEGREE;

/// Initial standard deviation of the bias per kelvin in rad/s/K.
constexpr double FIRST_SLOPE_DEVIATION = 0.02 * RADIANS_PER_DEGREE;

/// Propagates the covariance over the samples in `state.step`, observes velocity, position and (at
/// rest) the bias, corrects the state and clears the sums.
void FilterStep(OrientationState& state, bool atRest);

/// Adds `deviation`^2 (rad^2) to the variance of the angle about `axis`, a world vector with a
/// length of at most 1.
void WidenAngle(OrientationState& state, const Vector3& axis, double deviation);

/// Adds `deviation`^2 (rad^2) to the variance of the angle about every axis.
void WidenAngle(OrientationState& state, double deviation);

/// Adds `deviation`^2 ((m/s)^2) to the variance of the horizontal velocity along `axis`.
void WidenVelocity(OrientationState& state, const Vector3& axis, double deviation);

/// Forgets velocity, position and inclination. The inclination gets `angleDeviation` as its
/// standard deviation. The knowledge about bias and heading stays. `turn` is the vertical in the
/// body's axes, integrated over the seconds in which the unknown bias turned the heading.
void RestartFilter(OrientationState& state, double angleDeviation, const Vector3& turn);

} // namespace qltkit
