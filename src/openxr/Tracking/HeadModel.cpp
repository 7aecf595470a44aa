#include "Tracking/HeadModel.h"

#include <cmath>

namespace qltxr
{

namespace
{

Turn AboutY(double angle) { return {std::cos(0.5 * angle), 0.0, std::sin(0.5 * angle), 0.0}; }

/// The heading of the direction that the head faces. When the head faces straight up or down, it is
/// the heading of the top of the head.
double HeadingOf(const Turn& orientation)
{
    constexpr double STEEP = 0.99;
    Vector forward = orientation * Vector{0.0, 0.0, -1.0};
    if (std::fabs(forward[1]) > STEEP)
    {
        forward = orientation * Vector{0.0, forward[1] < 0.0 ? 1.0 : -1.0, 0.0};
    }
    return std::atan2(-forward[0], -forward[2]);
}

} // namespace

Head HeadModel::At(XrTime time) const
{
    const HeadMoment moment = mSource->At(time);
    const Turn toLocal = AboutY(-mForward.load(std::memory_order_relaxed));
    return {HeadPose(toLocal * moment.orientation, mPerson), toLocal * moment.angularVelocity,
            moment.known, moment.tracked};
}

Rigid HeadModel::Recentre(XrTime time)
{
    const double heading = HeadingOf(mSource->At(time).orientation);
    const double before = mForward.exchange(heading, std::memory_order_relaxed);
    return {AboutY(heading - before), {}};
}

} // namespace qltxr
