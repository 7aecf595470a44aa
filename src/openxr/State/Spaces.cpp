#include "State/Spaces.h"

#include <qlt/Sensors/Params.h>

namespace qltxr
{

using qlt::Params;

namespace
{

constexpr double STANDING_NECK_M = 1.55; // qlt view uses the same height

bool IsView(const SpaceOrigin& space)
{
    return !space.isAction && space.type == XR_REFERENCE_SPACE_TYPE_VIEW;
}

XrSpaceLocationFlags FlagsOf(bool known, bool orientationTracked, bool positionTracked)
{
    if (!known)
    {
        return 0;
    }
    return XR_SPACE_LOCATION_ORIENTATION_VALID_BIT | XR_SPACE_LOCATION_POSITION_VALID_BIT |
           (orientationTracked ? XR_SPACE_LOCATION_ORIENTATION_TRACKED_BIT : 0) |
           (positionTracked ? XR_SPACE_LOCATION_POSITION_TRACKED_BIT : 0);
}

Vector NeckToEye(const Person& person)
{
    return {0.0, person.neckToEyeUpM, -person.neckToEyeForwardM};
}

/// The velocities of a space in its base.
struct Motion
{
    Vector linear{};
    Vector angular{};
};

/// Returns the motion in the axes of the base. One of the two spaces must be on the head.
Motion MotionOf(const SpaceOrigin& space, const SpaceOrigin& base, const Head& head,
                const Person& person)
{
    const SpaceOrigin& onHead = IsView(space) ? space : base;
    const Rigid place = PlaceOf(base, head.pose, person);
    const Vector fromNeck = NeckToEye(person) + onHead.offset.place;
    Motion motion{Cross(head.angularVelocity, head.pose.turn * fromNeck), head.angularVelocity};
    if (!IsView(space)) // seen from the head, the world moves in the opposite direction
    {
        const Vector apart = PlaceOf(space, head.pose, person).place - place.place;
        const Vector swept = Cross(head.angularVelocity, apart);
        motion = {Vector{} - motion.linear - swept, Vector{} - motion.angular};
    }
    const Turn toBase = place.turn.Inverse();
    return {toBase * motion.linear, toBase * motion.angular};
}

} // namespace

Person DefaultPerson()
{
    const double up = Params::USER_NECK_EYE_V_M;
    return {Params::USER_IPD_M, up, Params::USER_NECK_EYE_H_M, STANDING_NECK_M + up};
}

Rigid HeadPose(const Turn& orientation, const Person& person)
{
    const Vector neckToEye = NeckToEye(person);
    return {orientation, orientation * neckToEye - neckToEye};
}

Rigid PlaceOf(const SpaceOrigin& space, const Rigid& head, const Person& person)
{
    if (space.isAction)
    {
        return {};
    }
    switch (space.type)
    {
    case XR_REFERENCE_SPACE_TYPE_VIEW:
        return head * space.offset;
    case XR_REFERENCE_SPACE_TYPE_LOCAL:
        return space.offset;
    default: // STAGE and LOCAL_FLOOR
        return Rigid{{}, {0.0, -person.eyeHeightM, 0.0}} * space.offset;
    }
}

bool NeedsHead(const SpaceOrigin& space, const SpaceOrigin& base)
{
    return IsView(space) != IsView(base);
}

void Locate(const SpaceOrigin& space, const SpaceOrigin& base, const Head& head,
            const Person& person, XrSpaceLocation& location, XrSpaceVelocity* velocity)
{
    const bool needsHead = NeedsHead(space, base);
    const bool known = !space.isAction && !base.isAction && (!needsHead || head.known);
    // When the head is not needed, either both spaces are fixed or both are on the head. The pose
    // of the head then has no influence.
    const Rigid place = known ? PlaceOf(base, needsHead ? head.pose : Rigid{}, person).Inverse() *
                                    PlaceOf(space, needsHead ? head.pose : Rigid{}, person)
                              : Rigid{};
    location.pose = ToPose(place);
    location.locationFlags = FlagsOf(known, !needsHead || head.tracked, !needsHead);
    if (velocity == nullptr)
    {
        return;
    }
    const Motion motion = known && needsHead ? MotionOf(space, base, head, person) : Motion{};
    velocity->linearVelocity = ToVector(motion.linear);
    velocity->angularVelocity = ToVector(motion.angular);
    velocity->velocityFlags =
        known ? XR_SPACE_VELOCITY_LINEAR_VALID_BIT | XR_SPACE_VELOCITY_ANGULAR_VALID_BIT : 0;
}

} // namespace qltxr
