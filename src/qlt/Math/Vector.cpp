#define QLT_EMIT_INLINE
#include <qlt/Math/Vector.h>

#include "Math/FloatMath.h"
#include "Runtime/Check.h"

#include <cfloat>
#include <cmath>

#define QLT_SOURCE_FILE L"Math/Vector"

namespace qlt
{

const Vec3 Vec3::X_AXIS(1.0f, 0.0f, 0.0f);
const Vec3 Vec3::Y_AXIS(0.0f, 1.0f, 0.0f);
const Vec3 Vec3::Z_AXIS(0.0f, 0.0f, 1.0f);

Vec3& Vec3::operator/=(float rhs)
{
    QLT_CHECK(std::abs(rhs) > FLT_EPSILON);
    return *this *= 1.0f / rhs;
}

bool Vec3::IsZero() const
{
    return std::abs(mX) < FLT_EPSILON && std::abs(mY) < FLT_EPSILON && std::abs(mZ) < FLT_EPSILON;
}

void Vec3::ReportNoLength() { ReportAssertion(L"length > FLT_EPSILON", QLT_SOURCE_FILE, __LINE__); }

float Vec3::Angle(const Vec3& rhs) const
{
    QLT_CHECK(!IsZero());
    QLT_CHECK(!rhs.IsZero());
    return Atan2(Cross(rhs).Length(), Dot(rhs));
}

Vec3 Vec3::Project(const Vec3& rhs) const
{
    QLT_CHECK(!rhs.IsZero());
    return rhs * (Dot(rhs) / rhs.Dot(rhs));
}

Vec3 Vec3::ProjectOnPlane(const Vec3& normal) const
{
    QLT_CHECK(!normal.IsZero());
    return *this - Project(normal);
}

} // namespace qlt
