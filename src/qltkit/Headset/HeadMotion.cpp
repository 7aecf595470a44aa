#include <qltkit/Headset/HeadMotion.h>

#include <cmath>

#include "Headset/Radians.h"
#include "Headset/Random.h"

namespace qltkit
{

namespace
{

/// Peak speeds of the minimum-jerk step and of the bump, for amplitude 1 and length 1.
constexpr double STEP_PEAK_RATE = 1.875;
constexpr double BUMP_PEAK_RATE = 3.4346;

} // namespace

void HeadMotion::NextMove()
{
    if (mKind == Kind::Turn)
    {
        mYaw += mAmplitude;
    }
    mBeginS += mLengthS;
    mAmplitude = 0.0;
    const double peakRate = Uniform(mRandom, 60.0, 300.0) * RAD_PER_DEG;
    const double side = Uniform(mRandom, -1.0, 1.0) < 0.0 ? -1.0 : 1.0;
    const double choice = Uniform(mRandom, 0.0, 1.0);
    const double size = Uniform(mRandom, 0.3, 1.0) * RAD_PER_DEG;
    if (choice < 0.25)
    {
        mKind = Kind::Rest;
        mLengthS = Uniform(mRandom, 0.3, 1.5);
    }
    else if (choice < 0.6)
    {
        mKind = Kind::Turn;
        mAmplitude = side * size * 150.0;
        mLengthS = STEP_PEAK_RATE * std::abs(mAmplitude) / peakRate;
    }
    else
    {
        mKind = choice < 0.85 ? Kind::Nod : Kind::Tilt;
        mAmplitude = side * size * 40.0;
        mLengthS = BUMP_PEAK_RATE * std::abs(mAmplitude) / peakRate;
    }
}

HeadAngles HeadMotion::At(double timeS)
{
    while (timeS >= mBeginS + mLengthS)
    {
        NextMove();
    }
    const double u = (timeS - mBeginS) / mLengthS;
    const double v = 1.0 - u;
    // Both curves have zero first and second derivatives at their ends: 10u^3 - 15u^4 + 6u^5 and 64
    // u^3 v^3.
    const double step = u * u * u * (10.0 - 15.0 * u + 6.0 * u * u);
    const double stepRate = 30.0 * u * u * v * v / mLengthS;
    const double bump = 64.0 * u * u * u * v * v * v;
    const double bumpRate = 192.0 * u * u * v * v * (v - u) / mLengthS;

    HeadAngles angles;
    angles.yaw = mYaw;
    if (mKind == Kind::Turn)
    {
        angles.yaw += mAmplitude * step;
        angles.yawRate = mAmplitude * stepRate;
    }
    else if (mKind == Kind::Nod)
    {
        angles.pitch = mAmplitude * bump;
        angles.pitchRate = mAmplitude * bumpRate;
    }
    else if (mKind == Kind::Tilt)
    {
        angles.roll = mAmplitude * bump;
        angles.rollRate = mAmplitude * bumpRate;
    }
    return angles;
}

} // namespace qltkit
