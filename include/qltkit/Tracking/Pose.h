// Where the head was, is or will be at a moment of the host's clock. Plain values.
//
// Orientations turn head coordinates into world coordinates: right-handed, x right, y up, -z
// forward.
#pragma once

#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>
#include <qltkit/Export.h>

#include <cstdint>

namespace qltkit
{

enum class PoseState : std::int32_t
{
    NeverSeen, // no report has come yet
    Tracking,  // reports come
    Held,      // the next report is overdue by more than 100 ms, but no read has failed
    Lost,      // the headset was unplugged, or a read failed
};

struct Pose
{
    /// The identity while no report has come.
    qlt::Quaternion orientation = qlt::Quaternion::Identity;

    /// About the head's own axes, radians per second.
    qlt::Vec3 angularVelocity;

    /// The moment at which this holds, nanoseconds of the tracker's clock.
    std::int64_t timeNs = 0;

    /// The same moment by the headset's clock, microseconds without its wrap. It starts anew when
    /// the headset has been lost.
    std::int64_t deviceTimeUs = 0;

    /// The last report that the pose is made of: how many had come with it, and the number that the
    /// headset gave it.
    std::uint64_t reportNumber = 0;
    std::uint32_t sequence = 0;

    /// How the tracker fares now, whatever moment the pose is of, and since when: Tracking since
    /// its first pose, Held since its last one, Lost since the read that failed. Nanoseconds of the
    /// tracker's clock.
    PoseState state = PoseState::NeverSeen;
    std::int64_t sinceNs = 0;

    /// The moment that was asked for is out of reach, and this is the nearest one within it.
    bool clamped = false;
};

/// The measures of a user's head, metres: between the pupils, and from the neck, about which the
/// head turns, forward and up to the eyes.
struct Person
{
    float ipdM = qlt::Params::USER_IPD_M;
    float neckEyeHM = qlt::Params::USER_NECK_EYE_H_M;
    float neckEyeVM = qlt::Params::USER_NECK_EYE_V_M;
};

/// `position` is where the eye is in the world, metres from the neck.
struct EyePose
{
    qlt::Vec3 position;
    qlt::Quaternion orientation = qlt::Quaternion::Identity;
};

/// Where an eye is when the head has that pose. Any value but EYE_LEFT is the right eye. Any
/// thread.
QLTKIT_API EyePose EyePoseOf(const Pose& pose, qlt::Params::Eye eye, const Person& person = {});

} // namespace qltkit
