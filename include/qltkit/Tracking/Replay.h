#pragma once

#include <qlt/Math/Quaternion.h>
#include <qltkit/Capture/Recording.h>
#include <qltkit/Export.h>
#include <qltkit/Tracking/HeadTracker.h>

#include <vector>

namespace qltkit
{

/// Computes the orientation after each report of a recording, without a tracker and without a
/// thread. PoseFilter::Core gives the bits of qlt::Hmd in a process that tracks nothing else.
/// PoseFilter::Kit gives the orientations of OrientationEstimator; a report that it does not use
/// has the orientation of the report before. Any thread.
QLTKIT_API std::vector<qlt::Quaternion> Replay(const Recording& recording,
                                               PoseFilter filter = PoseFilter::Core);

} // namespace qltkit
