#pragma once

#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>
#include <qltkit/Export.h>

#include <cstdint>

namespace qltkit
{

/// The state of a tracker.
enum class PoseState : std::int32_t
{
    NeverSeen, // no report has arrived yet
    Tracking,  // reports arrive
    Held,      // the last report is older than 100 ms, but no read has failed
    Lost,      // the headset was unplugged, or a read failed
};

/// The pose of the head at one moment of the tracker's clock: in the past, now or in the future. A
/// plain value.
struct Pose
{
    /// Turns head coordinates into world coordinates: right-handed, x right, y up, -z forward. The
    /// identity before the first report.
    qlt::Quaternion orientation = qlt::Quaternion::Identity;

    /// The angular velocity about the head's own axes in radians per second. A predicted pose has
    /// the angular velocity of the last report.
    qlt::Vec3 angularVelocity;

    /// The time of the pose in nanoseconds of the tracker's clock.
    std::int64_t timeNs = 0;

    /// The time of the pose in microseconds of the headset's clock without its wrap. The count
    /// restarts after a loss of the headset.
    std::int64_t deviceTimeUs = 0;

    /// The last report that the pose includes: the number of reports so far including it, and the
    /// sequence number that the headset gave it.
    std::uint64_t reportNumber = 0;
    std::uint32_t sequence = 0;

    /// The state of the tracker at the time of the call, also for a pose of the past. `sinceNs` is
    /// the beginning of this state in nanoseconds of the tracker's clock. Tracking begins at the
    /// first pose, Held at the last pose, and Lost at the read that failed.
    PoseState state = PoseState::NeverSeen;
    std::int64_t sinceNs = 0;

    /// True when the tracker knows no pose for the requested time. `timeNs` is then the nearest
    /// time that it knows.
    bool clamped = false;
};

/// The measures of a user's head in metres: the distance between the pupils, and the distances from
/// the neck to the eyes, forward (H) and up (V). The head turns about the neck.
struct Person
{
    float ipdM = qlt::Params::USER_IPD_M;
    float neckEyeHM = qlt::Params::USER_NECK_EYE_H_M;
    float neckEyeVM = qlt::Params::USER_NECK_EYE_V_M;
};

/// The pose of an eye in the world. The position is in metres from the neck.
struct EyePose
{
    qlt::Vec3 position;
    qlt::Quaternion orientation = qlt::Quaternion::Identity;
};

/// Computes the pose of an eye from the pose of the head. Any value of `eye` except EYE_LEFT means
/// the right eye. Any thread.
QLTKIT_API EyePose EyePoseOf(const Pose& pose, qlt::Params::Eye eye, const Person& person = {});

} // namespace qltkit
