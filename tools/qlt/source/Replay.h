// A recording through a filter, as fast as it goes.
#pragma once

#include <qlt/Math/Quaternion.h>
#include <qltkit/Capture/Recording.h>

#include <vector>

struct Replayed
{
    std::vector<qlt::Quaternion> orientations; // after each report
    double seconds = 0.0; // that the replay took, from the start of tracking to the last event
};

/// Through the headset tracker, and so through the core's filter. The recording is not empty.
Replayed ReplayCore(const qltkit::Recording& recording);

/// Through the kit's estimator.
Replayed ReplayKit(const qltkit::Recording& recording);
