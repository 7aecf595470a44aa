// The spaces of a session and the poses between them. Everything is a value, so there is no lock.
//
// LOCAL is the world. Its up direction comes from gravity, and its heading and height are those of
// the eyes at the start. STAGE is LOCAL lowered to the floor. VIEW is the head, between the eyes.
#pragma once

#include "State/HandleTable.h"
#include "State/Rigid.h"

namespace qltxr
{

/// The measures of the user in metres.
struct Person
{
    double ipdM;
    double neckToEyeUpM;
    double neckToEyeForwardM;
    double eyeHeightM; // the height of the eyes of the standing user
};

/// Returns the default user of the headset's constants.
Person DefaultPerson();

/// The state of the head at one time, in LOCAL.
struct Head
{
    Rigid pose;
    Vector angularVelocity{}; // in radians per second, about the axes of LOCAL
    bool known = false;       // an orientation has been measured at least once
    bool tracked = false;     // the orientation is measured and not held
};

/// The pose of the head by the neck model: the head turns about the neck, and the neck does not
/// move.
Rigid HeadPose(const Turn& orientation, const Person& person);

struct SpaceOrigin
{
    bool isAction = false; // the space of a device, which never exists
    XrReferenceSpaceType type = XR_REFERENCE_SPACE_TYPE_LOCAL;
    Rigid offset;
};

/// Returns the pose of a space in LOCAL. An action space has the pose of LOCAL.
Rigid PlaceOf(const SpaceOrigin& space, const Rigid& head, const Person& person);

/// Fills location and velocity. Types and chains stay as they are. `velocity` may be null.
void Locate(const SpaceOrigin& space, const SpaceOrigin& base, const Head& head,
            const Person& person, XrSpaceLocation& location, XrSpaceVelocity* velocity);

/// True when the pose of the space in the base space depends on the head.
bool NeedsHead(const SpaceOrigin& space, const SpaceOrigin& base);

} // namespace qltxr
