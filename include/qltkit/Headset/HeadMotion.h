#pragma once

#include <qltkit/Export.h>

#include <random>

namespace qltkit
{

/// The orientation of the head: turns about y (yaw), then x (pitch), then z (roll). Angles are in
/// radians and rates in radians per second.
struct HeadAngles
{
    double yaw = 0.0;
    double pitch = 0.0;
    double roll = 0.0;
    double yawRate = 0.0;
    double pitchRate = 0.0;
    double rollRate = 0.0;
};

/// The smooth motion of a head that turns, nods, tilts and rests, with a known orientation at every
/// moment. The same seed gives the same motion on every system. The highest speed is 300 degrees
/// per second. One thread at a time.
class QLTKIT_API HeadMotion
{
public:
    /// Starts with a rest of one second, upright and facing forward. The motion draws from
    /// `random`, which must outlive it.
    explicit HeadMotion(std::mt19937_64& random)
        : mRandom(random)
    {
    }

    /// The angles at `timeS`, in seconds from the start. The times of successive calls must not
    /// decrease.
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
    double mAmplitude = 0.0; // radians; a turn stays, a nod and a tilt return
    double mYaw = 0.0;       // before the current move
};

} // namespace qltkit
