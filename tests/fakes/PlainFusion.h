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
    Real x = 0, y = 0, z = 0;
};

template <typename Real>
struct Rotation
{
    Real w = 1, x = 0, y = 0, z = 0;
};

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
    const Real r = 1 / std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    return {q.w * r, q.x * r, q.y * r, q.z * r};
}

template <typename Real>
Rotation<Real> Turn(Real angle, const Vector<Real>& axis)
{
    const Real r = 1 / Length(axis);
    const auto half = static_cast<double>(angle / 2);
    const Real c = static_cast<Real>(std::cos(half)), s = static_cast<Real>(std::sin(half));
    return Normalized(Rotation<Real>{c, s * (axis.x * r), s * (axis.y * r), s * (axis.z * r)});
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
    Vector<Real> last; // angular velocity
    std::int64_t lastTimeNs = 0;

    void Step(const Vector<Real>& accelerometer, const Vector<Real>& gyroscope, std::int64_t nowNs)
    {
        const Vector<Real> omega{(gyroscope.x + last.x) / 2, (gyroscope.y + last.y) / 2,
                                 (gyroscope.z + last.z) / 2};
        const double elapsed = static_cast<double>(nowNs - lastTimeNs) / 1000000000.0;
        const Rotation<Real> predicted = Normalized(
            Product(orientation, Turn(static_cast<Real>(elapsed) * Length(omega), omega)));
        const Vector<Real> g = Rotated(predicted, accelerometer);
        const auto tilt = static_cast<Real>(std::acos(static_cast<double>(g.y / Length(g))));
        const Vector<Real> axis{g.z, 0, -g.x};
        const Real angle = tilt * static_cast<Real>(-0.001);
        orientation = Normalized(Product(Turn(angle, axis), predicted));
        last = gyroscope;
        lastTimeNs = nowNs;
    }

    Rotation<Real> Predicted(std::int64_t nowNs) const
    {
        const double ms = static_cast<double>(nowNs - lastTimeNs) / 1000000.0;
        const double angle = ms / 1000.0 * static_cast<double>(Length(last));
        return Normalized(Product(orientation, Turn(static_cast<Real>(angle), last)));
    }
};

} // namespace plain
