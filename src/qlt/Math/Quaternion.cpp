#define QLT_EMIT_INLINE
#include <qlt/Math/Quaternion.h>

#include "Math/FloatMath.h"
#include "Runtime/Check.h"

#include <cfloat>
#include <cmath>

#define QLT_SOURCE_FILE L"Math/Quaternion"

namespace qlt
{

const Quaternion Quaternion::Identity(1.0f, 0.0f, 0.0f, 0.0f);

Quaternion& Quaternion::operator/=(float rhs)
{
    QLT_CHECK(std::abs(rhs) > FLT_EPSILON);
    return *this *= 1.0f / rhs;
}

void Quaternion::Normalize()
{
    const float norm = Norm();
    QLT_CHECK(norm > FLT_EPSILON);
    if (norm > FLT_EPSILON)
    {
        *this *= 1.0f / norm;
    }
}

Quaternion Quaternion::Conjugate() const
{
    const float norm2 = Norm2();
    QLT_CHECK(norm2 > FLT_EPSILON);
    if (norm2 <= FLT_EPSILON)
    {
        return *this;
    }
    const float r = 1.0f / norm2;
    return Quaternion(mW * r, -x() * r, -y() * r, -z() * r);
}

Vec3 Quaternion::Rotate(const Quaternion& q, const Vec3& p)
{
    return (q * Quaternion(0.0f, p) * q.Conjugate()).v();
}

Quaternion Quaternion::RotationQuaternion(float angle, Vec3 axis)
{
    axis.Normalize();
    const float half = angle * 0.5f;
    Quaternion rotation(Cos(half), Sin(half) * axis);
    rotation.Normalize();
    return rotation;
}

Quaternion Quaternion::ConvertToUnity(const Quaternion& q)
{
    return Quaternion(-q.w(), q.x(), q.y(), -q.z());
}

Quaternion Quaternion::ConvertToUnreal(const Quaternion& q)
{
    return Quaternion(-q.w(), -q.z(), q.x(), q.y());
}

} // namespace qlt
