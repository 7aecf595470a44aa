#pragma once

#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>
#include <qltkit/Export.h>

#include <cstdint>

namespace qltkit
{

/// How a tracker fares.
enum class PoseState : std::int32_t
{
    NeverSeen, // no report has come yet
    Tracking,  // reports come
    Held,      // the last report is older than 100 ms, but no read has failed
    Lost,      // the headset was unplugged, or a read failed
};

/// Where the head was, is or will be at a moment of the tracker's clock. A plain value.
struct Pose
{
    /// Turns head coordinates into world coordinates: right-handed, x right, y up, -z forward. The
    /// identity before the first report.
    qlt::Quaternion orientation = qlt::Quaternion::Identity;

    /// About the head's own axes, radians per second. Of a predicted pose: that of the last report.
    qlt::Vec3 angularVelocity;

    /// The moment of the pose, nanoseconds of the tracker's clock.
    std::int64_t timeNs = 0;

    /// The same moment by the headset's clock, microseconds without its wrap. The count starts anew
    /// after the headset was lost.
    std::int64_t deviceTimeUs = 0;

    /// The last report in the pose: how many reports had come by then, itself included, and the
    /// number that the headset gave it.
    std::uint64_t reportNumber = 0;
    std::uint32_t sequence = 0;

    /// How the tracker fares at the time of the call, also for a pose of the past. It has done so
    /// since `sinceNs`, nanoseconds of the tracker's clock: Tracking since the first pose, Held
    /// since the last pose, Lost since the read that failed.
    PoseState state = PoseState::NeverSeen;
    std::int64_t sinceNs = 0;

    /// True when the tracker knows no pose of the moment that was asked for. `timeNs` is then the
    /// nearest moment that it knows.
    bool clamped = false;
};

/// The measures of a user's head, metres: the distance between the pupils, and the distances from
/// the neck, about which the head turns, to the eyes, forward (H) and up (V).
struct Person
{
    float ipdM = qlt::Params::USER_IPD_M;
    float neckEyeHM = qlt::Params::USER_NECK_EYE_H_M;
    float neckEyeVM = qlt::Params::USER_NECK_EYE_V_M;
};

/// Where an eye is in the world. The position is in metres from the neck.
struct EyePose
{
    qlt::Vec3 position;
    qlt::Quaternion orientation = qlt::Quaternion::Identity;
};

/// The pose of an eye of a head with that pose. Any value but EYE_LEFT means the right eye. Any
/// thread.
QLTKIT_API EyePose EyePoseOf(const Pose& pose, qlt::Params::Eye eye, const Person& person = {});

} // namespace qltkit
