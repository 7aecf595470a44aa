#include "Headset/ScriptMotion.h"

#include <algorithm>
#include <cmath>

#include "Headset/Radians.h"

namespace qltkit
{

namespace
{

using Point = HeadsetScript::Point;

constexpr double Point::*ANGLES[] = {&Point::yawDeg, &Point::pitchDeg, &Point::rollDeg};

/// The slope of the curve at a point between two segments with these lengths and mean slopes, by
/// Steffen's method. It is zero at a change of direction, and never so steep that the curve
/// overshoots.
double SlopeBetween(double length0, double slope0, double length1, double slope1)
{
    if (slope0 * slope1 <= 0.0)
    {
        return 0.0;
    }
    const double parabola = (slope0 * length1 + slope1 * length0) / (length0 + length1);
    const double least = std::min(std::abs(slope0), std::abs(slope1));
    const double size = 2.0 * std::min(least, 0.5 * std::abs(parabola));
    return slope0 < 0.0 ? -size : size;
}

/// The rates at all points. The head is at rest at the first and at the last point.
std::vector<Point> RatesAt(const std::vector<Point>& points)
{
    std::vector<Point> rates(points.size());
    for (std::size_t i = 1; i + 1 < points.size(); ++i)
    {
        const Point& before = points[i - 1];
        const Point& here = points[i];
        const Point& after = points[i + 1];
        const double length0 = here.atS - before.atS;
        const double length1 = after.atS - here.atS;
        for (const auto angle : ANGLES)
        {
            rates[i].*angle = SlopeBetween(length0, (here.*angle - before.*angle) / length0,
                                           length1, (after.*angle - here.*angle) / length1);
        }
    }
    return rates;
}

/// A value and its rate on a cubic curve.
struct OnCurve
{
    double value;
    double rate;
};

/// Evaluates the cubic through `from` and `to` with these rates, at `u` in [0, 1] of its length.
OnCurve Cubic(double from, double rateFrom, double to, double rateTo, double length, double u)
{
    const double rise = to - from;
    const double begin = rateFrom * length;
    const double end = rateTo * length;
    const double c2 = 3.0 * rise - 2.0 * begin - end;
    const double c3 = begin + end - 2.0 * rise;
    return {from + u * (begin + u * (c2 + u * c3)),
            (begin + u * (2.0 * c2 + 3.0 * u * c3)) / length};
}

HeadAngles InRadians(const Point& angles, const Point& rates)
{
    return {angles.yawDeg * RAD_PER_DEG,  angles.pitchDeg * RAD_PER_DEG,
            angles.rollDeg * RAD_PER_DEG, rates.yawDeg * RAD_PER_DEG,
            rates.pitchDeg * RAD_PER_DEG, rates.rollDeg * RAD_PER_DEG};
}

} // namespace

ScriptMotion::ScriptMotion(const HeadsetScript& script)
    : mKind(script.motion)
    , mRandom(script.motionSeed)
    , mTurns(mRandom)
    , mSpeed(script.speed)
    , mPoints(script.points)
    , mRates(RatesAt(mPoints))
{
}

HeadAngles ScriptMotion::At(double timeS)
{
    if (mKind == HeadsetScript::Motion::Angles)
    {
        return AlongPoints(timeS);
    }
    HeadAngles angles;
    if (mKind == HeadsetScript::Motion::Turns)
    {
        angles = mTurns.At(timeS * mSpeed);
        angles.yawRate *= mSpeed;
        angles.pitchRate *= mSpeed;
        angles.rollRate *= mSpeed;
    }
    return angles;
}

HeadAngles ScriptMotion::AlongPoints(double timeS)
{
    while (mNext < mPoints.size() && mPoints[mNext].atS <= timeS)
    {
        ++mNext;
    }
    if (mNext == 0 || mNext == mPoints.size())
    {
        return InRadians(mNext == 0 ? mPoints.front() : mPoints.back(), {});
    }
    const Point& from = mPoints[mNext - 1];
    const Point& to = mPoints[mNext];
    const double length = to.atS - from.atS;
    const double u = (timeS - from.atS) / length;
    Point angles;
    Point rates;
    for (const auto angle : ANGLES)
    {
        const OnCurve here = Cubic(from.*angle, mRates[mNext - 1].*angle, to.*angle,
                                   mRates[mNext].*angle, length, u);
        angles.*angle = here.value;
        rates.*angle = here.rate;
    }
    return InRadians(angles, rates);
}

} // namespace qltkit
