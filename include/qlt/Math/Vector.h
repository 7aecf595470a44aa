#pragma once

#include <qlt/Export.h>

#include <cfloat>
#include <cmath>

namespace qlt
{

/// Two floats, x and y, without padding, so an array of Vec2 is an array of texture coordinates.
/// The default is zero. Different threads may use different vectors.
class QLT_API Vec2
{
public:
    QLT_INLINE constexpr Vec2()
        : mX(0.0f)
        , mY(0.0f)
    {
    }
    QLT_INLINE constexpr Vec2(float x, float y)
        : mX(x)
        , mY(y)
    {
    }

    QLT_INLINE constexpr float x() const { return mX; }
    QLT_INLINE constexpr float y() const { return mY; }
    QLT_INLINE float& x() { return mX; }
    QLT_INLINE float& y() { return mY; }

private:
    float mX;
    float mY;
};

/// Three floats, x, y and z, without padding, so an array of Vec3 is a vertex array. The default is
/// zero. The tolerance for zero is FLT_EPSILON. Different threads may use different vectors.
class QLT_API Vec3
{
public:
    static const Vec3 X_AXIS;
    static const Vec3 Y_AXIS;
    static const Vec3 Z_AXIS;

    QLT_INLINE constexpr Vec3()
        : mX(0.0f)
        , mY(0.0f)
        , mZ(0.0f)
    {
    }
    QLT_INLINE constexpr Vec3(float x, float y, float z)
        : mX(x)
        , mY(y)
        , mZ(z)
    {
    }

    QLT_INLINE constexpr float x() const { return mX; }
    QLT_INLINE constexpr float y() const { return mY; }
    QLT_INLINE constexpr float z() const { return mZ; }
    QLT_INLINE float& x() { return mX; }
    QLT_INLINE float& y() { return mY; }
    QLT_INLINE float& z() { return mZ; }

    QLT_INLINE Vec3 operator-() const { return Vec3(-mX, -mY, -mZ); }
    QLT_INLINE Vec3 operator+() const { return *this; }

    QLT_INLINE Vec3& operator*=(float s)
    {
        mX *= s;
        mY *= s;
        mZ *= s;
        return *this;
    }

    QLT_INLINE Vec3& operator+=(const Vec3& b)
    {
        mX += b.mX;
        mY += b.mY;
        mZ += b.mZ;
        return *this;
    }

    QLT_INLINE Vec3& operator-=(const Vec3& b)
    {
        mX -= b.mX;
        mY -= b.mY;
        mZ -= b.mZ;
        return *this;
    }

    /// Multiplies by 1 / `rhs`. A |rhs| not above FLT_EPSILON is reported as an assertion; the
    /// operation divides all the same.
    Vec3& operator/=(float rhs);

    /// The dot product. The product of the y components is the first summand.
    QLT_INLINE float Dot(const Vec3& b) const { return b.mY * mY + b.mX * mX + b.mZ * mZ; }

    /// The right-handed cross product of this vector with `b`.
    QLT_INLINE Vec3 Cross(const Vec3& b) const
    {
        return Vec3(mY * b.mZ - mZ * b.mY, mZ * b.mX - mX * b.mZ, mX * b.mY - mY * b.mX);
    }

    /// The squared length and the length.
    QLT_INLINE float Length2() const { return mX * mX + mY * mY + mZ * mZ; }
    QLT_INLINE float Length() const { return std::sqrt(Length2()); }

    /// Whether the absolute value of every component is below FLT_EPSILON.
    bool IsZero() const;

    /// Scales to length 1. A length not above FLT_EPSILON is reported as an assertion, and the
    /// vector keeps its value.
    QLT_INLINE void Normalize()
    {
        const float length = Length();
        if (length > FLT_EPSILON)
        {
            *this *= 1.0f / length;
        }
        else
        {
            ReportNoLength();
        }
    }

    /// The unsigned angle to `rhs` in radians, 0 to pi. It is atan2(|a x b|, a . b), which is exact
    /// for nearly parallel vectors, too. A zero vector is reported as an assertion; the operation
    /// computes all the same.
    float Angle(const Vec3& rhs) const;

    /// The projection of this vector onto `rhs`, which may have any length. A zero `rhs` is
    /// reported as an assertion; the operation divides all the same.
    Vec3 Project(const Vec3& rhs) const;

    /// This vector without its part along `normal`, which may have any length. A zero `normal` is
    /// reported as an assertion; the operation divides all the same.
    Vec3 ProjectOnPlane(const Vec3& normal) const;

private:
    /// Reports the assertion of Normalize.
    static void ReportNoLength();

    float mX;
    float mY;
    float mZ;
};

QLT_API_INLINE Vec3 operator+(const Vec3& a, const Vec3& b)
{
    return Vec3(a.x() + b.x(), a.y() + b.y(), a.z() + b.z());
}

QLT_API_INLINE Vec3 operator-(const Vec3& a, const Vec3& b)
{
    return Vec3(a.x() - b.x(), a.y() - b.y(), a.z() - b.z());
}

QLT_API_INLINE Vec3 operator*(const Vec3& v, float s)
{
    return Vec3(v.x() * s, v.y() * s, v.z() * s);
}

QLT_API_INLINE Vec3 operator*(float s, const Vec3& v)
{
    return Vec3(v.x() * s, v.y() * s, v.z() * s);
}

/// Multiplies by 1 / `s`. deliberate: unlike operator/= it asserts nothing, because compiled
/// clients divide by zero on purpose with it.
QLT_API_INLINE Vec3 operator/(const Vec3& v, float s)
{
    const float r = 1.0f / s;
    return Vec3(v.x() * r, v.y() * r, v.z() * r);
}

} // namespace qlt
