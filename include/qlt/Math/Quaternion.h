#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Vector.h>

namespace qlt
{

/// A quaternion in single precision with the scalar first: w, x, y, z in memory. Products are
/// Hamilton products: (a * b) rotates by b first and then by a. Coordinates are right-handed, and
/// angles are in radians.
///
///     const qlt::Quaternion head = tracker.CopyOrientation();
///     const qlt::Vec3 gaze = qlt::Quaternion::Rotate(head, qlt::Vec3(0.0f, 0.0f, -1.0f));
///
/// deliberate: a default quaternion is all zero and not a rotation, because engines fill in its
/// values. Start from Quaternion::Identity.
///
/// No operation throws. Different threads may use different quaternions.
class QLT_API Quaternion
{
public:
    /// The rotation that turns nothing: (1, 0, 0, 0).
    static const Quaternion Identity;

    /// Creates the zero quaternion, which is no rotation.
    QLT_INLINE constexpr Quaternion()
        : mW(0.0f)
    {
    }

    /// Creates a quaternion from its four components. They are not normalised.
    QLT_INLINE constexpr Quaternion(float w, float x, float y, float z)
        : mW(w)
        , mV(x, y, z)
    {
    }

    /// Creates a quaternion from its scalar part and its vector part. They are not normalised.
    QLT_INLINE constexpr Quaternion(float w, const Vec3& v)
        : mW(w)
        , mV(v)
    {
    }

    /// The scalar part: the cosine of half the angle of a rotation.
    QLT_INLINE constexpr float w() const { return mW; }

    /// The first component of the vector part.
    QLT_INLINE constexpr float x() const { return mV.x(); }

    /// The second component of the vector part.
    QLT_INLINE constexpr float y() const { return mV.y(); }

    /// The third component of the vector part.
    QLT_INLINE constexpr float z() const { return mV.z(); }

    /// The vector part: the unit axis of a rotation times the sine of half its angle.
    QLT_INLINE constexpr const Vec3& v() const { return mV; }

    /// The scalar part, for writing.
    QLT_INLINE float& w() { return mW; }

    /// The first component of the vector part, for writing.
    QLT_INLINE float& x() { return mV.x(); }

    /// The second component of the vector part, for writing.
    QLT_INLINE float& y() { return mV.y(); }

    /// The third component of the vector part, for writing.
    QLT_INLINE float& z() { return mV.z(); }

    /// The vector part, for writing.
    QLT_INLINE Vec3& v() { return mV; }

    /// Multiplies every component by `s`.
    QLT_INLINE Quaternion& operator*=(float s)
    {
        mW *= s;
        mV *= s;
        return *this;
    }

    /// Adds `b`, component by component.
    QLT_INLINE Quaternion& operator+=(const Quaternion& b)
    {
        mW += b.mW;
        mV += b.mV;
        return *this;
    }

    /// Subtracts `b`, component by component.
    QLT_INLINE Quaternion& operator-=(const Quaternion& b)
    {
        mW -= b.mW;
        mV -= b.mV;
        return *this;
    }

    /// Multiplies by 1 / `rhs`. A |rhs| not above FLT_EPSILON is reported as an assertion; the
    /// operation divides all the same.
    Quaternion& operator/=(float rhs);

    /// The squared norm: the sum of the squares of the four components.
    QLT_INLINE float Norm2() const { return mV.Length2() + mW * mW; }

    /// The norm, which is the square root of Norm2. A rotation has the norm 1.
    QLT_INLINE float Norm() const { return std::sqrt(Norm2()); }

    /// Scales to norm 1. A norm not above FLT_EPSILON is reported as an assertion, and the
    /// quaternion keeps its value.
    QLT_INLINE void Normalize()
    {
        const float norm = Norm();
        if (norm > FLT_EPSILON)
        {
            *this *= 1.0f / norm;
        }
        else
        {
            ReportNoNorm();
        }
    }

    /// The multiplicative inverse, which is the conjugate of a unit quaternion. deliberate: it is
    /// the inverse despite its name, because Rotate relies on it. A squared norm not above
    /// FLT_EPSILON is reported as an assertion and gives an unchanged copy.
    QLT_INLINE Quaternion Conjugate() const
    {
        const float norm2 = Norm2();
        if (!(norm2 > FLT_EPSILON))
        {
            ReportNoNorm2();
            if (norm2 <= FLT_EPSILON)
            {
                return *this;
            }
        }
        const float r = 1.0f / norm2;
        return Quaternion(mW * r, -x() * r, -y() * r, -z() * r);
    }

    /// `p` rotated by `q`. A `q` of any norm rotates without scaling.
    static Vec3 Rotate(const Quaternion& q, const Vec3& p);

    /// The rotation by `angle` radians about `axis`, which may have any length. A zero axis reports
    /// the assertion of Vec3::Normalize and gives (cos(angle / 2), 0, 0, 0), normalised.
    static Quaternion RotationQuaternion(float angle, Vec3 axis);

    /// The same orientation in Unity's axes: (-w, x, y, -z).
    static Quaternion ConvertToUnity(const Quaternion& q);

    /// The same orientation in Unreal's axes: (-w, -z, x, y).
    static Quaternion ConvertToUnreal(const Quaternion& q);

private:
    /// Report the assertions of Normalize and Conjugate.
    static void ReportNoNorm();
    static void ReportNoNorm2();

    float mW;
    Vec3 mV;
};

/// The Hamilton product, which rotates by `b` first and then by `a`.
QLT_API_INLINE Quaternion operator*(const Quaternion& a, const Quaternion& b)
{
    return Quaternion(a.w() * b.w() - a.x() * b.x() - a.y() * b.y() - a.z() * b.z(),
                      a.w() * b.x() + a.x() * b.w() + a.y() * b.z() - a.z() * b.y(),
                      a.w() * b.y() + a.y() * b.w() + a.z() * b.x() - a.x() * b.z(),
                      a.w() * b.z() + a.z() * b.w() + a.x() * b.y() - a.y() * b.x());
}

/// The quaternion with every component multiplied by `s`.
QLT_API_INLINE Quaternion operator*(const Quaternion& q, const float& s)
{
    return Quaternion(q.w() * s, q.v() * s);
}

/// The quaternion with every component multiplied by `s`.
QLT_API_INLINE Quaternion operator*(const float& s, const Quaternion& q)
{
    return Quaternion(q.w() * s, q.v() * s);
}

/// The vector part of q * (0, p). It is no rotation; Quaternion::Rotate rotates.
QLT_API_INLINE Vec3 operator*(const Quaternion& q, const Vec3& p)
{
    return (q * Quaternion(0.0f, p)).v();
}

/// The vector part of (0, p) * q. It is no rotation.
QLT_API_INLINE Vec3 operator*(const Vec3& p, const Quaternion& q)
{
    return (Quaternion(0.0f, p) * q).v();
}

/// The sum a + b, component by component.
QLT_API_INLINE Quaternion operator+(const Quaternion& a, const Quaternion& b)
{
    return Quaternion(a.w() + b.w(), a.v() + b.v());
}

/// The difference a - b, component by component.
QLT_API_INLINE Quaternion operator-(const Quaternion& a, const Quaternion& b)
{
    return Quaternion(a.w() - b.w(), a.v() - b.v());
}

/// Multiplies by 1 / `s`. deliberate: unlike operator/= it asserts nothing, because compiled
/// clients divide by zero on purpose with it.
QLT_API_INLINE Quaternion operator/(const Quaternion& q, float s)
{
    const float r = 1.0f / s;
    return Quaternion(q.w() * r, q.v() * r);
}

QLT_INLINE Vec3 Quaternion::Rotate(const Quaternion& q, const Vec3& p)
{
    return (q * Quaternion(0.0f, p) * q.Conjugate()).v();
}

} // namespace qlt
