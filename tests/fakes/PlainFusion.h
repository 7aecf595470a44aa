// The orientation filter written down plainly, step by step and without the library: what the
// library is compared with, to the last bit in single precision and within rounding in double.
#pragma once

#include <cmath>
#include <cstdint>

namespace plain
{

template <typename Real>
struct Vector
{
    Real x = 0;
    Real y = 0;
    Real z = 0;
};

template <typename Real>
struct Rotation
{
    Real w = 1;
    Real x = 0;
    Real y = 0;
    Real z = 0;
};

/// A function of the 64-bit mathematics, rounded.
template <typename Real>
Real Rounded(double (*function)(double), Real x)
{
    return static_cast<Real>(function(static_cast<double>(x)));
}

template <typename Real>
Real Length(const Vector<Real>& v)
{
    return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
}

template <typename Real>
Rotation<Real> Product(const Rotation<Real>& a, const Rotation<Real>& b)
{
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z,
            a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y + a.y * b.w + a.z * b.x - a.x * b.z,
            a.w * b.z + a.z * b.w + a.x * b.y - a.y * b.x};
}

template <typename Real>
Rotation<Real> Normalized(const Rotation<Real>& q)
{
    const Real norm = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    const Real r = 1 / norm;
    return {q.w * r, q.x * r, q.y * r, q.z * r};
}

template <typename Real>
Rotation<Real> Turn(Real angle, const Vector<Real>& axis)
{
    const Real r = 1 / Length(axis);
    const Real half = angle * static_cast<Real>(0.5);
    const Real s = Rounded<Real>(std::sin, half);
    return Normalized(Rotation<Real>{Rounded<Real>(std::cos, half), s * (axis.x * r),
                                     s * (axis.y * r), s * (axis.z * r)});
}

template <typename Real>
Vector<Real> Rotated(const Rotation<Real>& q, const Vector<Real>& p)
{
    const Real r = 1 / (q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    const Rotation<Real> inverse{q.w * r, -q.x * r, -q.y * r, -q.z * r};
    const Rotation<Real> result = Product(Product(q, Rotation<Real>{0, p.x, p.y, p.z}), inverse);
    return {result.x, result.y, result.z};
}

/// No axis may be exactly zero.
template <typename Real>
struct Fusion
{
    Rotation<Real> orientation;
    Vector<Real> lastAngularVelocity;
    std::int64_t lastTimeNs = 0;

    void Step(const Vector<Real>& accelerometer, const Vector<Real>& gyroscope, std::int64_t nowNs)
    {
        const Real half = static_cast<Real>(0.5);
        const Vector<Real> omega{(gyroscope.x + lastAngularVelocity.x) * half,
                                 (gyroscope.y + lastAngularVelocity.y) * half,
                                 (gyroscope.z + lastAngularVelocity.z) * half};
        const auto elapsed =
            static_cast<Real>(static_cast<double>(nowNs - lastTimeNs) / 1000000000.0);
        const Rotation<Real> predicted =
            Normalized(Product(orientation, Turn(elapsed * Length(omega), omega)));
        const Vector<Real> g = Rotated(predicted, accelerometer);
        const Real tilt = Rounded<Real>(std::acos, g.y / Length(g));
        const Vector<Real> axis{g.z, 0, -g.x};
        const Real angle = tilt * static_cast<Real>(-0.001);
        orientation = Normalized(Product(Turn(angle, axis), predicted));
        lastAngularVelocity = gyroscope;
        lastTimeNs = nowNs;
    }

    Rotation<Real> Predicted(std::int64_t nowNs) const
    {
        const auto speed = static_cast<double>(Length(lastAngularVelocity));
        const double ms = static_cast<double>(nowNs - lastTimeNs) / 1000000.0;
        const auto angle = static_cast<Real>(ms / 1000.0 * speed);
        return Normalized(Product(orientation, Turn(angle, lastAngularVelocity)));
    }
};

} // namespace plain
