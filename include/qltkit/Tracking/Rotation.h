#pragma once

#include <cmath>

namespace qltkit
{

/// A vector in double precision, for long sums of small steps. The components have the unit that
/// the user gives them. The same input gives the same bits on every system, because this header
/// uses only + - * / and the square root. Different threads may use different vectors.
struct Vector3
{
    /// The component to the right.
    double x = 0.0;

    /// The upward component.
    double y = 0.0;

    /// The backward component.
    double z = 0.0;

    /// The component with this index: 0 is x, 1 is y, and every other value is z.
    constexpr double operator[](int axis) const { return axis == 0 ? x : axis == 1 ? y : z; }

    /// The same component, for writing.
    constexpr double& operator[](int axis) { return axis == 0 ? x : axis == 1 ? y : z; }

    /// Adds `b` to this vector, component by component.
    constexpr Vector3& operator+=(const Vector3& b)
    {
        x += b.x;
        y += b.y;
        z += b.z;
        return *this;
    }
};

/// The sum a + b, component by component.
constexpr Vector3 operator+(const Vector3& a, const Vector3& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

/// The difference a - b, component by component.
constexpr Vector3 operator-(const Vector3& a, const Vector3& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

/// The vector with every component multiplied by `s`.
constexpr Vector3 operator*(const Vector3& v, double s) { return {v.x * s, v.y * s, v.z * s}; }

/// The dot product: |a| |b| times the cosine of the angle between them.
constexpr double Dot(const Vector3& a, const Vector3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// The right-handed cross product a x b. It is perpendicular to both vectors.
constexpr Vector3 Cross(const Vector3& a, const Vector3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The Euclidean length.
inline double Length(const Vector3& v) { return std::sqrt(Dot(v, v)); }

/// A rotation as a unit quaternion in double precision, with the scalar part w first. It turns body
/// vectors into world vectors, and (a * b) rotates by b first. The default is the identity. No
/// operation normalises its result unless it says so. Different threads may use different
/// rotations.
struct Rotation
{
    /// The scalar part: the cosine of half the angle.
    double w = 1.0;

    /// The first component of the vector part, which is the unit axis times the sine of half the
    /// angle.
    double x = 0.0;

    /// The second component of the vector part.
    double y = 0.0;

    /// The third component of the vector part.
    double z = 0.0;

    /// The inverse of a rotation of length 1.
    constexpr Rotation Conjugate() const { return {w, -x, -y, -z}; }
};

/// The Hamilton product, which rotates by `b` first and then by `a`.
constexpr Rotation operator*(const Rotation& a, const Rotation& b)
{
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z,
            a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
            a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
}

/// Returns `q` scaled to length 1. A `q` of zero gives NaN.
inline Rotation Normalized(const Rotation& q)
{
    const double s = 1.0 / std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
    return {q.w * s, q.x * s, q.y * s, q.z * s};
}

/// Returns `v` rotated by `q`, which must have length 1. The formula is v + w t + u x t, with the
/// vector part u of `q` and t = 2 u x v. It is the product q v q* with fewer multiplications.
constexpr Vector3 Rotate(const Rotation& q, const Vector3& v)
{
    const Vector3 u{q.x, q.y, q.z};
    const Vector3 t = Cross(u, v) * 2.0;
    return v + t * q.w + Cross(u, t);
}

/// The rotation by |r| radians about `r`, the exponential map: (cos(|r| / 2), r sin(|r| / 2) /
/// |r|). `r` may have any length, and zero gives the identity. The result has length 1 within
/// rounding.
inline Rotation RotationBy(const Vector3& r)
{
    const double x = 0.25 * Dot(r, r); // the square of half the angle
    if (x > 1.0)
    {
        const Rotation half = RotationBy(r * 0.5);
        return half * half;
    }
    // These are the series of the cosine and of sin(a) / a. The omitted terms are below 1e-15.
    double c = x * (1.0 / 40320.0);
    double s = x * (1.0 / 362880.0);
    if (x > 0.0025)
    {
        constexpr double C[] = {1.0 / 20922789888000.0, -1.0 / 87178291200.0, 1.0 / 479001600.0,
                                -1.0 / 3628800.0};
        constexpr double S[] = {1.0 / 355687428096000.0, -1.0 / 1307674368000.0, 1.0 / 6227020800.0,
                                -1.0 / 39916800.0};
        c += x * x * (C[3] + x * (C[2] + x * (C[1] + x * C[0])));
        s += x * x * (S[3] + x * (S[2] + x * (S[1] + x * S[0])));
    }
    c = 1.0 + x * (-1.0 / 2.0 + x * (1.0 / 24.0 + x * (-1.0 / 720.0 + c)));
    s = 1.0 + x * (-1.0 / 6.0 + x * (1.0 / 120.0 + x * (-1.0 / 5040.0 + s)));
    s *= 0.5;
    return {c, r.x * s, r.y * s, r.z * s};
}

/// The rotation vector of `q`, with a length of at most pi. This is the logarithmic map and the
/// inverse of RotationBy. `q` must have length 1; `q` and -q give the same vector.
inline Vector3 RotationVector(const Rotation& q)
{
    const Vector3 v = Vector3{q.x, q.y, q.z} * (q.w < 0.0 ? -1.0 : 1.0);
    const double sine = Length(v);
    if (sine < 1e-12)
    {
        return v * 2.0;
    }
    // t is the tangent of a quarter, then of an eighth, then of a sixteenth of the angle. The
    // series of the arctangent then converges fast.
    double t = sine / (1.0 + std::fabs(q.w));
    t /= 1.0 + std::sqrt(1.0 + t * t);
    t /= 1.0 + std::sqrt(1.0 + t * t);
    const double u = -t * t;
    double series = 0.0;
    for (int i = 19; i > 0; i -= 2)
    {
        series = 1.0 / i + u * series;
    }
    return v * (16.0 * t * series / sine);
}

/// The shortest rotation that turns `v` to +y. `v` may have any length except zero, which gives
/// NaN. For a `v` that points straight down it is the half turn about x.
inline Rotation RotationToUp(const Vector3& v)
{
    const Vector3 u = v * (1.0 / Length(v));
    const double w = std::sqrt(0.5 * std::fmax(0.0, u.y + 1.0));
    if (w < 1e-6)
    {
        return {0.0, 1.0, 0.0, 0.0};
    }
    return {w, -u.z / (2.0 * w), 0.0, u.x / (2.0 * w)};
}

} // namespace qltkit
