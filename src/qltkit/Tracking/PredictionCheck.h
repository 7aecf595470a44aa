// Compares predictions with the orientations that came later.
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

    /// Adds the orientation at `timeUs`, and the prediction made at this time. The times must not
    /// decrease. Returns the angle in degrees between `orientation` and the earlier prediction for
    /// this time. The result is NaN when there is no such prediction, for example after a pause.
    /// The root mean square covers the predictions that were made at `fromUs` or later.
    double Add(std::int64_t timeUs, const Rotation& orientation, const Rotation& predicted,
               std::int64_t fromUs);

    /// The root mean square in degrees. It is NaN before the first comparison.
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
