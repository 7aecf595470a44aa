#include "Tracking/PredictionCheck.h"

#include "Tracking/Angles.h"

#include <limits>

namespace qltkit
{

double PredictionCheck::Add(std::int64_t timeUs, const Rotation& orientation,
                            const Rotation& predicted, std::int64_t fromUs)
{
    if (timeUs - mTimeUs > LONGEST_STEP_US)
    {
        mPending.clear();
    }
    double error = std::numeric_limits<double>::quiet_NaN();
    for (; !mPending.empty() && mPending.front().dueUs <= timeUs; mPending.pop_front())
    {
        const Pending& pending = mPending.front();
        const Rotation then =
            Between(mTimeUs, mOrientation, timeUs, orientation, static_cast<double>(pending.dueUs));
        error = AngleBetween(pending.predicted, then) * DEGREES_PER_RADIAN;
        if (pending.dueUs - mAheadUs >= fromUs)
        {
            mSquares += error * error;
            mCompared += 1.0;
        }
    }
    mPending.push_back({timeUs + mAheadUs, predicted});
    mTimeUs = timeUs;
    mOrientation = orientation;
    return error;
}

double PredictionCheck::Rms() const { return std::sqrt(mSquares / mCompared); }

} // namespace qltkit
