// A head that turns, nods, tilts and rests: smooth motion with a known orientation at every moment.
#pragma once

#include <qltkit/Export.h>

#include <random>

namespace qltkit
{

/// Where the head is: turns about y (yaw), then x (pitch), then z (roll), radians and radians per
/// second.
struct HeadAngles
{
    double yaw = 0.0;
    double pitch = 0.0;
    double roll = 0.0;
    double yawRate = 0.0;
    double pitchRate = 0.0;
    double rollRate = 0.0;
};

/// The same seed gives the same motion on every system. Peak speeds reach 300 degrees a second.
class QLTKIT_API HeadMotion
{
public:
    /// Starts with a rest of one second, upright and facing forward.
    explicit HeadMotion(std::mt19937_64& random)
        : mRandom(random)
    {
    }

    /// The angles at `timeS`; the times of successive calls must not decrease.
    HeadAngles At(double timeS);

private:
    enum class Kind
    {
        Rest,
        Turn,
        Nod,
        Tilt,
    };

    void NextMove();

    std::mt19937_64& mRandom;
    Kind mKind = Kind::Rest;
    double mBeginS = 0.0;
    double mLengthS = 1.0;
    double mAmplitude = 0.0; // radians: a turn stays, a nod and a tilt come back
    double mYaw = 0.0;       // before the current move
};

} // namespace qltkit
