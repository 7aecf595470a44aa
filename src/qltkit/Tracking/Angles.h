// Angles between orientations, and orientations between two times.
#pragma once

#include <qltkit/Tracking/Rotation.h>

#include <cstdint>

namespace qltkit
{

constexpr double DEGREES_PER_RADIAN = 57.29577951308232;

/// The longest step between two orientations that is interpolated.
constexpr std::int64_t LONGEST_STEP_US = 50000;

inline double AngleBetween(const Rotation& a, const Rotation& b)
{
    return Length(RotationVector(Normalized(a.Conjugate() * b)));
}

/// The angle between both verticals, as the body sees them.
inline double InclinationBetween(const Rotation& a, const Rotation& b)
{
    const Vector3 up{0.0, 1.0, 0.0};
    const Vector3 u = Rotate(a.Conjugate(), up);
    const Vector3 v = Rotate(b.Conjugate(), up);
    return std::atan2(Length(Cross(u, v)), Dot(u, v));
}

/// The turn about the vertical from `b` to `a`, from -2 pi to 2 pi.
inline double HeadingBetween(const Rotation& a, const Rotation& b)
{
    const Rotation r = a * b.Conjugate();
    return 2.0 * std::atan2(r.y, r.w);
}

/// The orientation at `timeUs`, which is not before `fromUs` and not after `toUs`.
inline Rotation Between(std::int64_t fromUs, const Rotation& from, std::int64_t toUs,
                        const Rotation& to, double timeUs)
{
    const auto begin = static_cast<double>(fromUs);
    const auto end = static_cast<double>(toUs);
    if (timeUs >= end)
    {
        return to;
    }
    const Vector3 turn = RotationVector(Normalized(from.Conjugate() * to));
    return from * RotationBy(turn * ((timeUs - begin) / (end - begin)));
}

} // namespace qltkit
