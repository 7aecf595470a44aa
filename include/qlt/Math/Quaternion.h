// Single-precision quaternions: w, x, y, z in memory, the scalar first. Products are Hamilton
// products: (a * b) rotates by b first and then by a. Right-handed, angles in radians.
//
// A default quaternion is all zero and no rotation; start from `Quaternion::Identity` (deliberate:
// engines fill default ones). Any thread may use them.
#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Vector.h>

namespace qlt
{

class QLT_API Quaternion
{
public:
    static const Quaternion Identity;

    QLT_INLINE constexpr Quaternion()
        : mW(0.0f)
    {
    }
    QLT_INLINE constexpr Quaternion(float w, float x, float y, float z)
        : mW(w)
        , mV(x, y, z)
    {
    }
    QLT_INLINE constexpr Quaternion(float w, const Vec3& v)
        : mW(w)
        , mV(v)
    {
    }

    QLT_INLINE constexpr float w() const { return mW; }
    QLT_INLINE constexpr float x() const { return mV.x(); }
    QLT_INLINE constexpr float y() const { return mV.y(); }
    QLT_INLINE constexpr float z() const { return mV.z(); }
    QLT_INLINE constexpr const Vec3& v() const { return mV; }
    QLT_INLINE float& w() { return mW; }
    QLT_INLINE float& x() { return mV.x(); }
    QLT_INLINE float& y() { return mV.y(); }
    QLT_INLINE float& z() { return mV.z(); }
    QLT_INLINE Vec3& v() { return mV; }

    QLT_INLINE Quaternion& operator*=(float s)
    {
        mW *= s;
        mV *= s;
        return *this;
    }

    QLT_INLINE Quaternion& operator+=(const Quaternion& b)
    {
        mW += b.mW;
        mV += b.mV;
        return *this;
    }

    QLT_INLINE Quaternion& operator-=(const Quaternion& b)
    {
        mW -= b.mW;
        mV -= b.mV;
        return *this;
    }

    /// Multiplies by 1 / `rhs`. Asserts |rhs| > FLT_EPSILON and divides all the same.
    Quaternion& operator/=(float rhs);

    QLT_INLINE float Norm2() const { return mV.Length2() + mW * mW; }
    QLT_INLINE float Norm() const { return std::sqrt(Norm2()); }

    /// Scales to norm 1. Asserts that the norm is above FLT_EPSILON; otherwise the quaternion keeps
    /// its value.
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

    /// The multiplicative inverse (deliberate, despite the name: `Rotate` relies on it), which is
    /// the conjugate of a unit quaternion. Asserts that the squared norm is above FLT_EPSILON;
    /// otherwise an unchanged copy.
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

    /// `p` rotated by `q`; a `q` of any norm rotates without scaling.
    static Vec3 Rotate(const Quaternion& q, const Vec3& p);

    /// The rotation by `angle` radians about `axis`, of any length. A zero axis reports the
    /// assertion of Vec3::Normalize and gives (cos(angle / 2), 0, 0, 0) normalised.
    static Quaternion RotationQuaternion(float angle, Vec3 axis);

    /// The same orientation in Unity's axes: (-w, x, y, -z).
    static Quaternion ConvertToUnity(const Quaternion& q);

    /// The same orientation in Unreal's axes: (-w, -z, x, y).
    static Quaternion ConvertToUnreal(const Quaternion& q);

private:
    /// The assertions of Normalize and Conjugate.
    static void ReportNoNorm();
    static void ReportNoNorm2();

    float mW;
    Vec3 mV;
};

/// The Hamilton product.
QLT_API_INLINE Quaternion operator*(const Quaternion& a, const Quaternion& b)
{
    return Quaternion(a.w() * b.w() - a.x() * b.x() - a.y() * b.y() - a.z() * b.z(),
                      a.w() * b.x() + a.x() * b.w() + a.y() * b.z() - a.z() * b.y(),
                      a.w() * b.y() + a.y() * b.w() + a.z() * b.x() - a.x() * b.z(),
                      a.w() * b.z() + a.z() * b.w() + a.x() * b.y() - a.y() * b.x());
}

QLT_API_INLINE Quaternion operator*(const Quaternion& q, const float& s)
{
    return Quaternion(q.w() * s, q.v() * s);
}

QLT_API_INLINE Quaternion operator*(const float& s, const Quaternion& q)
{
    return Quaternion(q.w() * s, q.v() * s);
}

/// The vector part of q * (0, p); not a rotation, see Quaternion::Rotate.
QLT_API_INLINE Vec3 operator*(const Quaternion& q, const Vec3& p)
{
    return (q * Quaternion(0.0f, p)).v();
}

/// The vector part of (0, p) * q; not a rotation.
QLT_API_INLINE Vec3 operator*(const Vec3& p, const Quaternion& q)
{
    return (Quaternion(0.0f, p) * q).v();
}

QLT_API_INLINE Quaternion operator+(const Quaternion& a, const Quaternion& b)
{
    return Quaternion(a.w() + b.w(), a.v() + b.v());
}

QLT_API_INLINE Quaternion operator-(const Quaternion& a, const Quaternion& b)
{
    return Quaternion(a.w() - b.w(), a.v() - b.v());
}

/// Multiplies by 1 / `s`. deliberate: no assertion here, unlike operator/=.
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
