#pragma once

#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>
#include <qltkit/Export.h>

#include <cstdint>

namespace qltkit
{

/// The state of a tracker. Every pose carries it, so a program can tell the user why the picture
/// stands still.
enum class PoseState : std::int32_t
{
    /// No report has arrived yet.
    NeverSeen,

    /// Reports arrive.
    Tracking,

    /// The last report is older than 100 ms, but no read has failed.
    Held,

    /// The headset was unplugged, or a read failed.
    Lost,
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

    /// The number of reports so far, up to the last report that the pose includes.
    std::uint64_t reportNumber = 0;

    /// The sequence number that the headset gave this report.
    std::uint32_t sequence = 0;

    /// The state of the tracker at the time of the call, also for a pose of the past.
    PoseState state = PoseState::NeverSeen;

    /// The beginning of this state in nanoseconds of the tracker's clock. Tracking begins at the
    /// first pose, Held at the last pose, and Lost at the read that failed.
    std::int64_t sinceNs = 0;

    /// True when the tracker knows no pose for the requested time. `timeNs` is then the nearest
    /// time that it knows.
    bool clamped = false;
};

/// The measures of a user's head in metres. The head turns about the neck. The defaults are those
/// of qlt::Params.
struct Person
{
    /// The distance between the pupils.
    float ipdM = qlt::Params::USER_IPD_M;

    /// The forward distance from the neck to the eyes.
    float neckEyeHM = qlt::Params::USER_NECK_EYE_H_M;

    /// The upward distance from the neck to the eyes.
    float neckEyeVM = qlt::Params::USER_NECK_EYE_V_M;
};

/// The pose of an eye in the world. A plain value.
struct EyePose
{
    /// The position in metres from the neck, in world coordinates.
    qlt::Vec3 position;

    /// The orientation of the eye, which is that of the head.
    qlt::Quaternion orientation = qlt::Quaternion::Identity;
};

/// Computes the pose of an eye from the pose of the head. The eye is at (-ipdM / 2, neckEyeVM,
/// -neckEyeHM) in head coordinates for the left eye, and at +ipdM / 2 for the right eye. Any value
/// of `eye` except EYE_LEFT means the right eye. Any thread.
QLTKIT_API EyePose EyePoseOf(const Pose& pose, qlt::Params::Eye eye, const Person& person = {});

} // namespace qltkit
