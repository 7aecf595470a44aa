#define QLT_EMIT_INLINE
#include <qlt/Math/Quaternion.h>

#include "Math/AxisRotation.h"
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

void Quaternion::ReportNoNorm()
{
    ReportAssertion(L"norm > FLT_EPSILON", QLT_SOURCE_FILE, __LINE__);
}

void Quaternion::ReportNoNorm2()
{
    ReportAssertion(L"norm2 > FLT_EPSILON", QLT_SOURCE_FILE, __LINE__);
}

Quaternion Quaternion::RotationQuaternion(float angle, Vec3 axis)
{
    return AxisRotation(angle, axis);
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
