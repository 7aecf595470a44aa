#pragma once

#include <qltkit/Headset/HeadMotion.h>
#include <qltkit/Headset/HeadsetScript.h>

#include <cstddef>
#include <random>
#include <vector>

namespace qltkit
{

/// Computes the motion of the head that a script describes.
class ScriptMotion
{
public:
    explicit ScriptMotion(const HeadsetScript& script);

    /// The times of successive calls must not decrease.
    HeadAngles At(double timeS);

private:
    HeadAngles AlongPoints(double timeS);

    const HeadsetScript::Motion mKind;
    std::mt19937_64 mRandom; // it comes before the turns, because they draw from it
    HeadMotion mTurns;
    const double mSpeed;
    std::vector<HeadsetScript::Point> mPoints;
    std::vector<HeadsetScript::Point> mRates; // the rates at the points, in degrees per second
    std::size_t mNext = 0;                    // the first point that has not been reached yet
};

} // namespace qltkit
