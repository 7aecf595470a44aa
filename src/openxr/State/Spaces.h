// The spaces of a session, and where one is in another. Needs no lock: everything is a value.
//
// LOCAL is the world: gravity's up, the heading and the eyes' height of the start. STAGE is LOCAL
// lowered to the floor. VIEW is the head, between the eyes.
#pragma once

#include "State/HandleTable.h"
#include "State/Rigid.h"

namespace qltxr
{

/// Who wears the headset; lengths in metres.
struct Person
{
    double ipdM;
    double neckToEyeUpM;
    double neckToEyeForwardM;
    double eyeHeightM; // of someone who stands
};

/// The default user of the headset's constants.
Person DefaultPerson();

/// The head at a moment, in LOCAL.
struct Head
{
    Rigid pose;
    Vector angularVelocity{}; // radians per second, in LOCAL's axes
    bool known = false;       // that is, an orientation was ever seen
    bool tracked = false;     // it is a measured one, not one that is held
};

/// The neck model: the head turns about the neck, which stays where it is.
Rigid HeadPose(const Turn& orientation, const Person& person);

struct SpaceOrigin
{
    bool isAction = false; // of a device that is never there
    XrReferenceSpaceType type = XR_REFERENCE_SPACE_TYPE_LOCAL;
    Rigid offset;
};

/// Where a space is in LOCAL; an action space is where LOCAL is.
Rigid PlaceOf(const SpaceOrigin& space, const Rigid& head, const Person& person);

/// Fills location and velocity, but for their types and chains. `velocity` may be null.
void Locate(const SpaceOrigin& space, const SpaceOrigin& base, const Head& head,
            const Person& person, XrSpaceLocation& location, XrSpaceVelocity* velocity);

/// True when the place of the space in the base depends on the head.
bool NeedsHead(const SpaceOrigin& space, const SpaceOrigin& base);

} // namespace qltxr
