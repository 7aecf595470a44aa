#pragma once

#include <qltkit/Tracking/OrientationState.h>

namespace qltkit
{

/// True when the estimator can continue from a saved record: its version is known, its orientation
/// is a rotation and its numbers are finite. One number that is not finite would spread to all
/// others.
bool IsSound(const OrientationState& state);

} // namespace qltkit
