// Quaternion::RotationQuaternion for the inside of the library, where the filter needs it inlined.
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
