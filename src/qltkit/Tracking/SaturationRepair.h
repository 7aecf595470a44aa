// Restores the angle or the velocity that is lost while an axis is saturated.
#pragma once

#include <qltkit/Tracking/ImuSample.h>
#include <qltkit/Tracking/OrientationState.h>

namespace qltkit
{

/// Processes the six axes for a sample that came `seconds` after the previous one. It adds the
/// missing angle or velocity of a saturated stretch, and widens its uncertainty, both while the
/// stretch lasts and after its end. Call it after the rotation by the sample and before
/// FollowSlopes.
void RepairSaturation(OrientationState& state, const ImuSample& sample, double seconds);

/// Updates the low-passed slopes of both sensors with this sample.
void FollowSlopes(OrientationState& state, const ImuSample& sample, double seconds);

} // namespace qltkit
