#include "Tracking/TruthCheck.h"

#include "Tracking/Angles.h"

#include <algorithm>
#include <limits>

namespace qltkit
{

TruthCheck::Errors TruthCheck::Compare(std::int64_t timeUs, const Rotation& orientation,
                                       const Rotation& truth, bool counts)
{
    Errors errors;
    errors.inclination = InclinationBetween(orientation, truth) * DEGREES_PER_RADIAN;
    const double heading = HeadingBetween(orientation, truth) * DEGREES_PER_RADIAN;
    if (!mStarted)
    {
        mStarted = true;
        mFirstHeading = heading;
        mHeading = heading;
        mFirstUs = timeUs;
    }
    mHeading = heading - 360.0 * std::round((heading - mHeading) / 360.0);
    errors.heading = mHeading - mFirstHeading;
    if (counts)
    {
        const double minute = static_cast<double>(timeUs - mFirstUs) / 60e6;
        mSquares += errors.inclination * errors.inclination;
        mMost = std::max(mMost, errors.inclination);
        mCount += 1.0;
        mMinutes += minute;
        mHeadings += errors.heading;
        mMinutesSquared += minute * minute;
        mProducts += minute * errors.heading;
    }
    return errors;
}

double TruthCheck::InclinationRms() const { return std::sqrt(mSquares / mCount); }

double TruthCheck::InclinationMost() const
{
    return mCount > 0.0 ? mMost : std::numeric_limits<double>::quiet_NaN();
}

double TruthCheck::DriftPerMinute() const
{
    const double spread = mMinutesSquared - mMinutes * mMinutes / mCount;
    return spread > 0.0 ? (mProducts - mMinutes * mHeadings / mCount) / spread
                        : std::numeric_limits<double>::quiet_NaN();
}

} // namespace qltkit
