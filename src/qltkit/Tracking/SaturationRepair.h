// Puts back what a saturated axis has cut off.
//
//        /\      the true value; the slopes on both sides of the limit make a triangle,
//       /..\     and a smooth peak fills a part of it
//    --+----+-- limit
//     /      \                                                                            .
#pragma once

#include <qltkit/Tracking/ImuSample.h>
#include <qltkit/Tracking/OrientationState.h>

namespace qltkit
{

/// Follows the six axes over a sample that came `seconds` after the last one. When a stretch has
/// ended, adds the missing angle or velocity and widens its uncertainty. Call it after the rotation
/// of the sample and before FollowSlopes.
void RepairSaturation(OrientationState& state, const ImuSample& sample, double seconds);

/// Low-passes the slopes of both sensors up to this sample.
void FollowSlopes(OrientationState& state, const ImuSample& sample, double seconds);

} // namespace qltkit
