// The body of Quaternion::RotationQuaternion. It is inline, because the filter calls it for every
// report.
#pragma once

#include <qlt/Math/Quaternion.h>

#include "Math/FloatMath.h"

namespace qlt
{

inline Quaternion AxisRotation(float angle, Vec3 axis)
{
    axis.Normalize();
    const float half = angle * 0.5f;
    Quaternion rotation(Cos(half), Sin(half) * axis);
    rotation.Normalize();
    return rotation;
}

} // namespace qlt
