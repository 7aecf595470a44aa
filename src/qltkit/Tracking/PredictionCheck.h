// How far predictions are from what came.
#pragma once

#include <qltkit/Tracking/Rotation.h>

#include <cstdint>
#include <deque>

namespace qltkit
{

class PredictionCheck
{
public:
    explicit PredictionCheck(std::int64_t aheadUs)
        : mAheadUs(aheadUs)
    {
    }

    /// The orientation at a time that does not fall, and what is predicted there for later. The
    /// angle, in degrees, to what was predicted for this time; NaN where that is not known, after a
    /// pause for one. Only what was predicted after `fromUs` counts in the root mean square.
    double Add(std::int64_t timeUs, const Rotation& orientation, const Rotation& predicted,
               std::int64_t fromUs);

    /// Degrees; NaN before anything was compared.
    double Rms() const;

private:
    struct Pending
    {
        std::int64_t dueUs;
        Rotation predicted;
    };

    const std::int64_t mAheadUs;
    std::deque<Pending> mPending;
    std::int64_t mTimeUs = 0;
    Rotation mOrientation;
    double mSquares = 0.0;
    double mCompared = 0.0;
};

} // namespace qltkit
