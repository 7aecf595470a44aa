// Runs a recording through a filter as fast as possible.
#pragma once

#include <qlt/Math/Quaternion.h>
#include <qltkit/Capture/Recording.h>

#include <vector>

struct Replayed
{
    std::vector<qlt::Quaternion> orientations; // the orientation after each report
    double seconds = 0.0; // the duration from the start of tracking to the last event
};

/// Runs the recording through the headset tracker, which uses the core's filter. The recording must
/// not be empty.
Replayed ReplayCore(const qltkit::Recording& recording);

/// Runs the recording through the kit's estimator.
Replayed ReplayKit(const qltkit::Recording& recording);
