#pragma once

#include <qltkit/Tracking/OrientationState.h>

namespace qltkit
{

/// Whether a saved record can be continued: its version is known, its orientation is a rotation and
/// its numbers are finite. One broken number would spread to all others.
bool IsSound(const OrientationState& state);

} // namespace qltkit
