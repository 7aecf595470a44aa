// Computes a calibration from still poses and from the turns between them.
#pragma once

#include <qltkit/Tracking/Calibrator.h>

#include <vector>

namespace qltkit
{

/// The mean values of the sensors while the headset was still.
struct StillPose
{
    Vector3 acceleration; // m/s^2
    Vector3 rate;         // rad/s
};

/// The motion from one pose to a later one. It begins and ends while the headset is still.
struct RecordedTurn
{
    struct Part
    {
        Vector3 rate; // rad/s
        double seconds;
    };

    std::size_t from = 0; // indices of poses
    std::size_t to = 0;
    std::vector<Part> parts;
};

/// Fits the calibration. The first pose is the long rest. There must be a pose for each of the six
/// sides. Throws Error when the measurements contradict each other.
CalibrationResult FitCalibration(const std::vector<StillPose>& poses,
                                 const std::vector<RecordedTurn>& turns);

} // namespace qltkit
