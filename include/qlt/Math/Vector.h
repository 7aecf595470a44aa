#pragma once

#include <qlt/Export.h>

#include <cfloat>
#include <cmath>

namespace qlt
{

/// Two floats, x and y, without padding, so an array of Vec2 is an array of texture coordinates.
/// The default is zero. The components have the unit that the user gives them. Different threads
/// may use different vectors.
class QLT_API Vec2
{
public:
    /// Creates the zero vector.
    QLT_INLINE constexpr Vec2()
        : mX(0.0f)
        , mY(0.0f)
    {
    }

    /// Creates a vector from its components.
    QLT_INLINE constexpr Vec2(float x, float y)
        : mX(x)
        , mY(y)
    {
    }

    /// The component to the right.
    QLT_INLINE constexpr float x() const { return mX; }

    /// The upward component.
    QLT_INLINE constexpr float y() const { return mY; }

    /// The component to the right, for writing.
    QLT_INLINE float& x() { return mX; }

    /// The upward component, for writing.
    QLT_INLINE float& y() { return mY; }

private:
    float mX;
    float mY;
};

/// Three floats, x, y and z, without padding, so an array of Vec3 is a vertex array. The default is
/// zero. The tolerance for zero is FLT_EPSILON. The components have the unit that the user gives
/// them.
///
///     const qlt::Vec3 toTarget = target - head;
///     const float angle = qlt::Vec3(0.0f, 0.0f, -1.0f).Angle(toTarget); // 0 is straight ahead
///
/// No operation throws. Different threads may use different vectors.
class QLT_API Vec3
{
public:
    /// The unit vector to the right: (1, 0, 0).
    static const Vec3 X_AXIS;

    /// The unit vector upward: (0, 1, 0).
    static const Vec3 Y_AXIS;

    /// The unit vector backward: (0, 0, 1).
    static const Vec3 Z_AXIS;

    /// Creates the zero vector.
    QLT_INLINE constexpr Vec3()
        : mX(0.0f)
        , mY(0.0f)
        , mZ(0.0f)
    {
    }

    /// Creates a vector from its components.
    QLT_INLINE constexpr Vec3(float x, float y, float z)
        : mX(x)
        , mY(y)
        , mZ(z)
    {
    }

    /// The component to the right.
    QLT_INLINE constexpr float x() const { return mX; }

    /// The upward component.
    QLT_INLINE constexpr float y() const { return mY; }

    /// The backward component.
    QLT_INLINE constexpr float z() const { return mZ; }

    /// The component to the right, for writing.
    QLT_INLINE float& x() { return mX; }

    /// The upward component, for writing.
    QLT_INLINE float& y() { return mY; }

    /// The backward component, for writing.
    QLT_INLINE float& z() { return mZ; }

    /// The vector of the opposite direction.
    QLT_INLINE Vec3 operator-() const { return Vec3(-mX, -mY, -mZ); }

    /// A copy of this vector.
    QLT_INLINE Vec3 operator+() const { return *this; }

    /// Multiplies every component by `s`.
    QLT_INLINE Vec3& operator*=(float s)
    {
        mX *= s;
        mY *= s;
        mZ *= s;
        return *this;
    }

    /// Adds `b`, component by component.
    QLT_INLINE Vec3& operator+=(const Vec3& b)
    {
        mX += b.mX;
        mY += b.mY;
        mZ += b.mZ;
        return *this;
    }

    /// Subtracts `b`, component by component.
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

    /// The squared length, x^2 + y^2 + z^2 in this order.
    QLT_INLINE float Length2() const { return mX * mX + mY * mY + mZ * mZ; }

    /// The length, which is the square root of Length2.
    QLT_INLINE float Length() const { return std::sqrt(Length2()); }

    /// True when the absolute value of every component is below FLT_EPSILON.
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

/// The sum a + b, component by component.
QLT_API_INLINE Vec3 operator+(const Vec3& a, const Vec3& b)
{
    return Vec3(a.x() + b.x(), a.y() + b.y(), a.z() + b.z());
}

/// The difference a - b, component by component.
QLT_API_INLINE Vec3 operator-(const Vec3& a, const Vec3& b)
{
    return Vec3(a.x() - b.x(), a.y() - b.y(), a.z() - b.z());
}

/// The vector with every component multiplied by `s`.
QLT_API_INLINE Vec3 operator*(const Vec3& v, float s)
{
    return Vec3(v.x() * s, v.y() * s, v.z() * s);
}

/// The vector with every component multiplied by `s`.
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
