#include "State/Rigid.h"

#include "State/Failure.h"

#include <cmath>

namespace qltxr
{

namespace
{

double Norm2(const XrQuaternionf& q)
{
    const double w = q.w;
    const double x = q.x;
    const double y = q.y;
    const double z = q.z;
    return w * w + x * x + y * y + z * z;
}

} // namespace

Turn operator*(const Turn& a, const Turn& b)
{
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z,
            a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y + a.y * b.w + a.z * b.x - a.x * b.z,
            a.w * b.z + a.z * b.w + a.x * b.y - a.y * b.x};
}

Vector Turn::operator*(const Vector& v) const
{
    const Turn turned = *this * Turn{0.0, v[0], v[1], v[2]} * Inverse();
    return {turned.x, turned.y, turned.z};
}

Rigid Rigid::Inverse() const
{
    const Turn back = turn.Inverse();
    const Vector moved = back * place;
    return {back, {-moved[0], -moved[1], -moved[2]}};
}

Rigid operator*(const Rigid& a, const Rigid& b) { return {a.turn * b.turn, a * b.place}; }

Rigid FromPose(const XrPosef& pose)
{
    const XrQuaternionf& q = pose.orientation;
    const double scale = 1.0 / std::sqrt(Norm2(q));
    return {{q.w * scale, q.x * scale, q.y * scale, q.z * scale},
            {pose.position.x, pose.position.y, pose.position.z}};
}

XrPosef ToPose(const Rigid& rigid)
{
    const Turn& t = rigid.turn;
    return {{static_cast<float>(t.x), static_cast<float>(t.y), static_cast<float>(t.z),
             static_cast<float>(t.w)},
            ToVector(rigid.place)};
}

XrVector3f ToVector(const Vector& v)
{
    return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

void RequirePose(const XrPosef& pose)
{
    constexpr double TOLERANCE = 0.01;
    // The norm is not finite when a component is not finite.
    const double norm = std::sqrt(Norm2(pose.orientation));
    const XrVector3f& p = pose.position;
    const bool placed = std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
    Require(placed && std::fabs(norm - 1.0) <= TOLERANCE, XR_ERROR_POSE_INVALID);
}

} // namespace qltxr
