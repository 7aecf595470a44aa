// How far the orientations of a filter are from measured ones.
#pragma once

#include <qltkit/Tracking/Rotation.h>

#include <cstdint>

namespace qltkit
{

class TruthCheck
{
public:
    /// Degrees. The heading's error is 0 at the first comparison and has no jumps of a turn.
    struct Errors
    {
        double inclination = 0.0;
        double heading = 0.0;
    };

    /// Compares at a time; `counts` says whether the figures have it, too.
    Errors Compare(std::int64_t timeUs, const Rotation& orientation, const Rotation& truth,
                   bool counts);

    /// Degrees; NaN before anything counted.
    double InclinationRms() const;
    double InclinationMost() const;

    /// The slope of the straight line through the heading's error, degrees per minute; NaN before
    /// two times counted.
    double DriftPerMinute() const;

private:
    double mHeading = 0.0;
    double mFirstHeading = 0.0;
    bool mStarted = false;
    std::int64_t mFirstUs = 0;
    double mMost = 0.0;
    double mSquares = 0.0;

    // Of what counted: how many, and sums of minutes, headings and their products.
    double mCount = 0.0;
    double mMinutes = 0.0;
    double mHeadings = 0.0;
    double mMinutesSquared = 0.0;
    double mProducts = 0.0;
};

} // namespace qltkit
