// The orientation filter, written step by step and without the library. The benchmark compares the
// bits and the speed of the library with it.
#pragma once

#include <cmath>
#include <cstdint>

namespace plain
{

struct Vector
{
    float x = 0;
    float y = 0;
    float z = 0;
};

struct Rotation
{
    float w = 1;
    float x = 0;
    float y = 0;
    float z = 0;
};

/// A function in double precision whose result is rounded to single precision.
inline float Rounded(double (*function)(double), float x)
{
    return static_cast<float>(function(static_cast<double>(x)));
}

inline float Length(const Vector& v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

inline Rotation Product(const Rotation& a, const Rotation& b)
{
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z,
            a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y + a.y * b.w + a.z * b.x - a.x * b.z,
            a.w * b.z + a.z * b.w + a.x * b.y - a.y * b.x};
}

inline Rotation Normalized(const Rotation& q)
{
    const float r = 1 / std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    return {q.w * r, q.x * r, q.y * r, q.z * r};
}

inline Rotation Turn(float angle, const Vector& axis)
{
    const float r = 1 / Length(axis);
    const float half = angle * 0.5f;
    const float s = Rounded(std::sin, half);
    return Normalized(
        {Rounded(std::cos, half), s * (axis.x * r), s * (axis.y * r), s * (axis.z * r)});
}

inline Vector Rotated(const Rotation& q, const Vector& p)
{
    const float r = 1 / (q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    const Rotation inverse{q.w * r, -q.x * r, -q.y * r, -q.z * r};
    const Rotation result = Product(Product(q, {0, p.x, p.y, p.z}), inverse);
    return {result.x, result.y, result.z};
}

/// No axis may be exactly zero.
struct Fusion
{
    Rotation orientation;
    Vector lastAngularVelocity;
    std::int64_t lastTimeNs = 0;

    void Step(const Vector& accelerometer, const Vector& gyroscope, std::int64_t nowNs)
    {
        const Vector omega{(gyroscope.x + lastAngularVelocity.x) * 0.5f,
                           (gyroscope.y + lastAngularVelocity.y) * 0.5f,
                           (gyroscope.z + lastAngularVelocity.z) * 0.5f};
        const auto elapsed =
            static_cast<float>(static_cast<double>(nowNs - lastTimeNs) / 1000000000.0);
        const Rotation predicted =
            Normalized(Product(orientation, Turn(elapsed * Length(omega), omega)));
        const Vector g = Rotated(predicted, accelerometer);
        const float tilt = Rounded(std::acos, g.y / Length(g));
        orientation = Normalized(Product(Turn(tilt * -0.001f, {g.z, 0, -g.x}), predicted));
        lastAngularVelocity = gyroscope;
        lastTimeNs = nowNs;
    }

    Rotation Predicted(std::int64_t nowNs) const
    {
        const auto speed = static_cast<double>(Length(lastAngularVelocity));
        const double ms = static_cast<double>(nowNs - lastTimeNs) / 1000000.0;
        const auto angle = static_cast<float>(ms / 1000.0 * speed);
        return Normalized(Product(orientation, Turn(angle, lastAngularVelocity)));
    }
};

} // namespace plain
