#include <qltkit/Tracking/Pose.h>

namespace qltkit
{

EyePose EyePoseOf(const Pose& pose, qlt::Params::Eye eye, const Person& person)
{
    const float side = eye == qlt::Params::EYE_LEFT ? -0.5f : 0.5f;
    const qlt::Vec3 fromNeck(side * person.ipdM, person.neckEyeVM, -person.neckEyeHM);
    return {qlt::Quaternion::Rotate(pose.orientation, fromNeck), pose.orientation};
}

} // namespace qltkit
