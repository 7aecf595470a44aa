// The orientation filter written down plainly, step by step and without the library.
#pragma once

#include <cmath>
#include <cstdint>

namespace plain
{
namespace // not inline, which would tell the compiler more than the library tells it
{

struct Vector
{
    float x = 0, y = 0, z = 0;
};

struct Rotation
{
    float w = 1, x = 0, y = 0, z = 0;
};

float Length(const Vector& v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

Rotation Product(const Rotation& a, const Rotation& b)
{
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z,
            a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y + a.y * b.w + a.z * b.x - a.x * b.z,
            a.w * b.z + a.z * b.w + a.x * b.y - a.y * b.x};
}

Rotation Normalized(const Rotation& q)
{
    const float r = 1 / std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    return {q.w * r, q.x * r, q.y * r, q.z * r};
}

Rotation Inverse(const Rotation& q)
{
    const float r = 1 / (q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    return {q.w * r, -q.x * r, -q.y * r, -q.z * r};
}

Rotation Turn(float angle, const Vector& axis)
{
    const float r = 1 / Length(axis);
    const auto half = static_cast<double>(angle / 2);
    const auto s = static_cast<float>(std::sin(half));
    return Normalized(
        {static_cast<float>(std::cos(half)), s * (axis.x * r), s * (axis.y * r), s * (axis.z * r)});
}

Vector Rotated(const Rotation& q, const Vector& p)
{
    const Rotation result = Product(Product(q, {0, p.x, p.y, p.z}), Inverse(q));
    return {result.x, result.y, result.z};
}

/// No axis may be exactly zero.
struct Fusion
{
    Rotation orientation;
    Vector last; // angular velocity
    std::int64_t lastTimeNs = 0;

    void Step(const Vector& accelerometer, const Vector& gyroscope, std::int64_t nowNs)
    {
        const Vector omega{(gyroscope.x + last.x) / 2, (gyroscope.y + last.y) / 2,
                           (gyroscope.z + last.z) / 2};
        const auto elapsed =
            static_cast<float>(static_cast<double>(nowNs - lastTimeNs) / 1000000000.0);
        const Rotation predicted =
            Normalized(Product(orientation, Turn(elapsed * Length(omega), omega)));
        const Vector g = Rotated(predicted, accelerometer);
        const auto tilt = static_cast<float>(std::acos(static_cast<double>(g.y / Length(g))));
        orientation = Normalized(Product(Turn(tilt * -0.001f, {g.z, 0, -g.x}), predicted));
        last = gyroscope;
        lastTimeNs = nowNs;
    }

    Rotation Predicted(std::int64_t nowNs) const
    {
        const double ms = static_cast<double>(nowNs - lastTimeNs) / 1000000.0;
        const double angle = ms / 1000.0 * static_cast<double>(Length(last));
        return Normalized(Product(orientation, Turn(static_cast<float>(angle), last)));
    }
};

} // namespace
} // namespace plain
