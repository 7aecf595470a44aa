// How the core's filter and the kit's estimator did on a capture: series to draw, stretches to
// mark, the worst moments, and figures. Pure: reports in, numbers out.
//
// Figures, worst moments and drift count from five seconds after the first report on, when every
// filter has settled; those against a truth from five seconds after its first row on.
#pragma once

#include <qlt/Math/Quaternion.h>
#include <qlt/Sensors/SensorReport.h>
#include <qltkit/Export.h>
#include <qltkit/Tracking/OrientationState.h>
#include <qltkit/Tracking/Rotation.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace qltkit
{

/// A recording with its truth. The first three vectors have one element for each report.
struct ComparisonInput
{
    /// The measured orientation at the time of a report. Reports count from 0. The heading may have
    /// any zero.
    struct Truth
    {
        std::size_t report = 0;
        bool valid = false; // false: nothing was measured
        Rotation orientation;
    };

    std::vector<qlt::SensorReport> reports;
    std::vector<std::int64_t> timesUs; // must not decrease
    std::vector<qlt::Quaternion> core; // the core's orientation after each report
    std::vector<Truth> truth;          // in the order of the reports; may be empty
    double lagSeconds = 0.0;           // how much later than the truth the reports are
};

struct Comparison
{
    /// The curves over time. Angles are in degrees.
    enum Track : std::size_t
    {
        InclinationCore, // the error against the truth
        InclinationKit,
        Difference,  // between the two inclinations
        HeadingCore, // with a truth its error, otherwise the heading itself; begins at zero
        HeadingKit,
        AccelerationCore, // of the head without gravity, in m/s^2
        AccelerationKit,
        BiasX, // of the gyroscope in degrees per second, as the kit estimates it
        BiasY,
        BiasZ,
        PredictionCore, // the error of the prediction for 20 ms; the core predicts no motion
        PredictionKit,
        TRACKS,
    };

    enum class Mark
    {
        SaturatedGyroscope,
        SaturatedAccelerometer,
        Lost, // reports are missing, or nothing came for more than 50 ms
    };

    /// Stretches of one mark that are too close to be drawn apart are merged.
    struct Stretch
    {
        Mark mark = Mark::Lost;
        double fromSeconds = 0.0;
        double toSeconds = 0.0;
    };

    struct Moment
    {
        Track track = InclinationKit;
        double seconds = 0.0;
        double value = 0.0;
    };

    /// In degrees. NaN when nothing could be compared.
    struct Figures
    {
        double inclinationRms = std::numeric_limits<double>::quiet_NaN();
        double inclinationMost = std::numeric_limits<double>::quiet_NaN();
        double driftPerMinute = std::numeric_limits<double>::quiet_NaN(); // needs a truth
        double predictionRms20 = std::numeric_limits<double>::quiet_NaN();
        double predictionRms50 = std::numeric_limits<double>::quiet_NaN();
    };

    double seconds = 0.0; // from the first report to the last
    bool hasTruth = false;

    /// Point i of a track is at i * stepSeconds. Points 2i and 2i + 1 are the smallest and the
    /// largest value of their interval, in the order in which they came. They are NaN when there
    /// was no value.
    double stepSeconds = 0.0;
    std::array<std::vector<float>, TRACKS> tracks;

    std::vector<Stretch> stretches; // by mark, then by time
    std::vector<Moment> worst;      // by track, largest first, at least two seconds apart
    Figures core;
    Figures kit;
    double differenceRms = std::numeric_limits<double>::quiet_NaN();
    SampleCounts counts; // as the kit's estimator counted
};

/// Compares the two filters on a recording. A track has at most `mostPoints` points, rounded to
/// pairs and at least two. No point stands for less than 2 ms. Throws Error when the vectors of the
/// input do not fit each other, when a time decreases, or when a row of the truth is out of order
/// or belongs to no report. Any thread.
QLTKIT_API Comparison CompareFilters(const ComparisonInput& input, std::size_t mostPoints = 24000);

} // namespace qltkit
