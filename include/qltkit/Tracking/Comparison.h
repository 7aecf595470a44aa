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

/// A recording with its truth. `reports`, `timesUs` and `core` have one element for each report. A
/// plain value.
struct ComparisonInput
{
    /// The measured orientation at the time of a report. Reports count from 0. The heading may have
    /// any zero.
    struct Truth
    {
        /// The number of the report, from 0.
        std::size_t report = 0;

        /// False when nothing was measured at this report.
        bool valid = false;

        /// The measured rotation from body to world.
        Rotation orientation;
    };

    /// The reports in their order.
    std::vector<qlt::SensorReport> reports;

    /// The device time of each report in microseconds. The times must not decrease.
    std::vector<std::int64_t> timesUs;

    /// The orientation of the core's filter after each report.
    std::vector<qlt::Quaternion> core;

    /// The rows of the truth in the order of the reports. It may be empty.
    std::vector<Truth> truth;

    /// The delay of the reports after the truth in seconds.
    double lagSeconds = 0.0;
};

/// The result of CompareFilters: curves to draw, stretches to mark, the worst moments, and figures.
/// It shows how well the core's filter and the kit's estimator followed a recording.
///
/// Figures and worst moments begin five seconds after the first report, when both filters have
/// settled. Those that need a truth begin five seconds after its first row. A plain value.
struct Comparison
{
    /// The curves over time. Angles are in degrees. The names say which filter a curve belongs to.
    enum Track : std::size_t
    {
        /// The error of the inclination of the core's filter. It needs a truth.
        InclinationCore,

        /// The error of the inclination of the kit's estimator. It needs a truth.
        InclinationKit,

        /// The angle between the inclinations of both filters.
        Difference,

        /// The error of the heading of the core's filter with a truth, and otherwise the heading
        /// itself. It begins at zero.
        HeadingCore,

        /// The same for the kit's estimator.
        HeadingKit,

        /// The acceleration of the head without gravity, in m/s^2, by the orientation of the core's
        /// filter.
        AccelerationCore,

        /// The same by the orientation of the kit's estimator.
        AccelerationKit,

        /// The bias of the gyroscope about x in degrees per second, as the kit estimates it.
        BiasX,

        /// The bias of the gyroscope about y.
        BiasY,

        /// The bias of the gyroscope about z.
        BiasZ,

        /// The error of a prediction for 20 ms by the core, which predicts no motion.
        PredictionCore,

        /// The error of a prediction for 20 ms by the kit.
        PredictionKit,

        /// The number of curves.
        TRACKS,
    };

    /// The reasons to mark a stretch of time.
    enum class Mark
    {
        /// An axis of the gyroscope is at its limit.
        SaturatedGyroscope,

        /// An axis of the accelerometer is at its limit.
        SaturatedAccelerometer,

        /// Reports are missing, or nothing came for more than 50 ms.
        Lost,
    };

    /// A marked stretch of time. Stretches of one mark are merged when they are too close to be
    /// drawn apart.
    struct Stretch
    {
        /// The reason for the mark.
        Mark mark = Mark::Lost;

        /// The beginning in seconds after the first report.
        double fromSeconds = 0.0;

        /// The end in seconds after the first report.
        double toSeconds = 0.0;
    };

    /// One of the worst moments of a curve.
    struct Moment
    {
        /// The curve.
        Track track = InclinationKit;

        /// The time in seconds after the first report.
        double seconds = 0.0;

        /// The value of the curve.
        double value = 0.0;
    };

    /// The figures of one filter in degrees. A figure is NaN when nothing could be compared.
    struct Figures
    {
        /// The root mean square of the inclination's error. It needs a truth.
        double inclinationRms = std::numeric_limits<double>::quiet_NaN();

        /// The largest error of the inclination. It needs a truth.
        double inclinationMost = std::numeric_limits<double>::quiet_NaN();

        /// The drift of the heading's error in degrees per minute. It needs a truth.
        double driftPerMinute = std::numeric_limits<double>::quiet_NaN();

        /// The root mean square error of predictions for 20 ms.
        double predictionRms20 = std::numeric_limits<double>::quiet_NaN();

        /// The root mean square error of predictions for 50 ms.
        double predictionRms50 = std::numeric_limits<double>::quiet_NaN();
    };

    /// The time from the first report to the last in seconds.
    double seconds = 0.0;

    /// True when the input had a truth.
    bool hasTruth = false;

    /// The time between two points of a curve in seconds: point i is at i * stepSeconds. Points 2i
    /// and 2i + 1 are the smallest and the largest value of their interval, in the order in which
    /// they came. They are NaN when there was no value.
    double stepSeconds = 0.0;

    /// The points of each curve.
    std::array<std::vector<float>, TRACKS> tracks;

    /// The marked stretches, ordered by mark and then by time.
    std::vector<Stretch> stretches;

    /// The worst moments, ordered by curve and then from the largest value. Those of one curve are
    /// at least two seconds apart.
    std::vector<Moment> worst;

    /// The figures of the core's filter.
    Figures core;

    /// The figures of the kit's estimator.
    Figures kit;

    /// The root mean square of the angle between both inclinations in degrees, or NaN.
    double differenceRms = std::numeric_limits<double>::quiet_NaN();

    /// The counts of the kit's estimator.
    SampleCounts counts;
};

/// Compares the two filters on a recording. A curve has at most `mostPoints` points, rounded to
/// pairs and at least two. No point stands for less than 2 ms. Throws Error when the vectors of the
/// input do not fit each other, when a time decreases, or when a row of the truth is out of order
/// or belongs to no report. Any thread.
QLTKIT_API Comparison CompareFilters(const ComparisonInput& input, std::size_t mostPoints = 24000);

} // namespace qltkit
