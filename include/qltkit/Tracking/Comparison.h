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

/// What was recorded. All three vectors have one element for each report.
struct ComparisonInput
{
    /// A measured orientation at the time of a report, which counts from 0. Its heading has a zero
    /// of its own.
    struct Truth
    {
        std::size_t report = 0;
        bool valid = false; // else nothing was measured
        Rotation orientation;
    };

    std::vector<qlt::SensorReport> reports;
    std::vector<std::int64_t> timesUs; // never falling
    std::vector<qlt::Quaternion> core; // the core's orientation after each report
    std::vector<Truth> truth;          // reports ascending; empty for none
    double lagSeconds = 0.0;           // the reports are this much later than the truth
};

struct Comparison
{
    /// Angles are degrees. A difference between two filters or to the truth is one of these.
    enum Track : std::size_t
    {
        InclinationCore, // error against the truth
        InclinationKit,
        Difference,  // of the two inclinations
        HeadingCore, // its error with a truth, else the heading; both begin at zero
        HeadingKit,
        AccelerationCore, // of the head, without gravity, m/s^2: what the orientation makes of it
        AccelerationKit,
        BiasX, // of the gyroscope, degrees a second; the core knows none
        BiasY,
        BiasZ,
        PredictionCore, // error of the orientation predicted for 20 ms ahead; the core holds it
        PredictionKit,
        TRACKS,
    };

    enum class Mark
    {
        SaturatedGyroscope,
        SaturatedAccelerometer,
        Lost, // reports are missing, or nothing came for more than 50 ms
    };

    /// Stretches of one mark that are too close to be drawn apart are one.
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

    /// Degrees; NaN where nothing could be compared.
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

    /// Point i of a track is at i * stepSeconds. Points come in pairs, and each pair has the
    /// smallest and the largest value of its time in the order in which they came. NaN where there
    /// was none.
    double stepSeconds = 0.0;
    std::array<std::vector<float>, TRACKS> tracks;

    std::vector<Stretch> stretches; // by mark, then by time
    std::vector<Moment> worst;      // by track, largest first, two seconds apart at least
    Figures core;
    Figures kit;
    double differenceRms = std::numeric_limits<double>::quiet_NaN();
    SampleCounts counts; // as the kit's estimator counted
};

/// Compares. `mostPoints` bounds the points of a track (rounded to pairs, two at least), of which
/// none stands for less than 2 ms. Error when the input's vectors do not fit each other, a time
/// falls, or a row of the truth is out of order or belongs to no report. Any thread.
QLTKIT_API Comparison CompareFilters(const ComparisonInput& input, std::size_t mostPoints = 24000);

} // namespace qltkit
