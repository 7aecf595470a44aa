// Compares the orientations of a filter with measured orientations.
#pragma once

#include <qltkit/Tracking/Rotation.h>

#include <cstdint>

namespace qltkit
{

class TruthCheck
{
public:
    /// The errors of one moment in degrees. The error of the heading is 0 at the first comparison.
    /// It is unwrapped, so it has no jumps of 360 degrees.
    struct Errors
    {
        double inclination = 0.0;
        double heading = 0.0;
    };

    /// Compares the orientations of one moment. The figures include it when `counts` is set.
    Errors Compare(std::int64_t timeUs, const Rotation& orientation, const Rotation& truth,
                   bool counts);

    /// Root mean squares in degrees. Both are NaN before the first comparison that counts.
    double InclinationRms() const;
    double InclinationMost() const;

    /// The slope of the straight line through the error of the heading, in degrees per minute. NaN
    /// before two comparisons count.
    double DriftPerMinute() const;

private:
    double mHeading = 0.0;
    double mFirstHeading = 0.0;
    bool mStarted = false;
    std::int64_t mFirstUs = 0;
    double mMost = 0.0;
    double mSquares = 0.0;

    // The number of comparisons that count, and sums over them.
    double mCount = 0.0;
    double mMinutes = 0.0;
    double mHeadings = 0.0;
    double mMinutesSquared = 0.0;
    double mProducts = 0.0;
};

} // namespace qltkit
