// Positions and rotations in double precision, to combine the poses of a program.
#pragma once

#include <openxr/openxr.h>

#include <array>

namespace qltxr
{

using Vector = std::array<double, 3>;

inline Vector operator+(const Vector& a, const Vector& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

inline Vector operator-(const Vector& a, const Vector& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline Vector Cross(const Vector& a, const Vector& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// A rotation as a unit quaternion.
struct Turn
{
    double w = 1.0;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    Turn Inverse() const { return {w, -x, -y, -z}; }
    Vector operator*(const Vector& v) const;
};

/// Rotates by `b` first and then by `a`.
Turn operator*(const Turn& a, const Turn& b);

/// A position and a rotation. It rotates a point first and then moves it.
struct Rigid
{
    Turn turn;
    Vector place{};

    Rigid Inverse() const;
    Vector operator*(const Vector& point) const { return turn * point + place; }
};

Rigid operator*(const Rigid& a, const Rigid& b);

/// Normalises the quaternion of the pose.
Rigid FromPose(const XrPosef& pose);
XrPosef ToPose(const Rigid& rigid);
XrVector3f ToVector(const Vector& v);

/// Throws XR_ERROR_POSE_INVALID for a quaternion whose length differs from 1 by more than 1 %, and
/// for values that are not finite.
void RequirePose(const XrPosef& pose);

} // namespace qltxr
