#pragma once

#include <qltkit/Export.h>

#include <random>

namespace qltkit
{

/// The orientation of the head as turns about y (yaw), then x (pitch), then z (roll), and the
/// speeds of these turns. A positive yaw turns the head to its left, a positive pitch raises the
/// face, and a positive roll tilts the head to its left. A plain value.
struct HeadAngles
{
    /// The turn about the vertical in radians.
    double yaw = 0.0;

    /// The turn about the axis through the ears in radians.
    double pitch = 0.0;

    /// The turn about the axis of sight in radians.
    double roll = 0.0;

    /// The change of `yaw` in radians per second.
    double yawRate = 0.0;

    /// The change of `pitch` in radians per second.
    double pitchRate = 0.0;

    /// The change of `roll` in radians per second.
    double rollRate = 0.0;
};

/// The smooth motion of a head that turns, nods, tilts and rests, with a known orientation at every
/// moment. The same seed gives the same motion on every system.
///
///     std::mt19937_64 random(7);
///     qltkit::HeadMotion motion(random);
///     const qltkit::HeadAngles angles = motion.At(2.5);
///
/// A turn covers up to 150 degrees and stays; it is a minimum-jerk step (Flash and Hogan 1985). A
/// nod and a tilt cover up to 40 degrees and return. The highest speed of a movement is 60 to 300
/// degrees per second. One thread at a time may use an object.
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
    /// decrease, because the motion forgets its past movements.
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
