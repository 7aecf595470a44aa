#include <qltkit/Tracking/Comparison.h>

#include <qltkit/Error.h>
#include <qltkit/Tracking/ImuSample.h>

#include "fakes/ReportWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace
{

using qltkit::Comparison;
using qltkit::ComparisonInput;

constexpr double RADIANS = 0.017453292519943295;
constexpr std::size_t REPORTS = 12000;

/// The core says that the head turns by 90 degrees a second, tilted by 10 degrees, and at 8 s for
/// one report by 30. In truth, and for the sensors, it rests. Five reports are lost at 3 s and two
/// hundred at 9 s, and two are at the accelerometer's limit at 7 s.
ComparisonInput Scene()
{
    ComparisonInput input;
    const qltkit::Rotation rest =
        qltkit::RotationToUp(qltkit::ReadImuSample(ReportWriter(0)).accelerometer);
    for (std::size_t i = 0; i < REPORTS; ++i)
    {
        const std::size_t number = i + (i < 3000 ? 0 : 5) + (i < 9000 ? 0 : 200);
        ReportWriter report(static_cast<std::uint32_t>(number),
                            static_cast<std::uint32_t>(1000 * number));
        report.I16(22, i == 7000 || i == 7001 ? 32767 : 8000);
        input.reports.push_back(report);
        input.timesUs.push_back(static_cast<std::int64_t>(1000 * number));
        const double turn = 90.0 * RADIANS * 0.001 * static_cast<double>(number);
        const double tilt = (i == 8000 ? 30.0 : 10.0) * RADIANS;
        const qltkit::Rotation q =
            qltkit::RotationBy({0.0, turn, 0.0}) * qltkit::RotationBy({tilt, 0.0, 0.0}) * rest;
        input.core.emplace_back(static_cast<float>(q.w), static_cast<float>(q.x),
                                static_cast<float>(q.y), static_cast<float>(q.z));
        if (i % 10 == 0)
        {
            input.truth.push_back({i, true, rest});
        }
    }
    return input;
}

double Most(const std::vector<float>& points)
{
    return static_cast<double>(*std::max_element(points.begin(), points.end()));
}

} // namespace

TEST(ComparisonTest, FiguresMarksAndWorstMomentsAreThoseOfTheScene)
{
    const Comparison all = qltkit::CompareFilters(Scene());
    EXPECT_TRUE(all.hasTruth);
    EXPECT_NEAR(all.core.inclinationRms, 10.0, 0.1);
    EXPECT_NEAR(all.core.inclinationMost, 30.0, 0.01);
    EXPECT_NEAR(all.core.driftPerMinute, 5400.0, 1.0) << "fifteen turns of the head";
    EXPECT_NEAR(all.core.predictionRms20, 1.8, 0.1);
    EXPECT_NEAR(all.core.predictionRms50, 4.5, 0.1);
    EXPECT_LT(all.kit.inclinationRms, 0.5);
    EXPECT_LT(all.kit.predictionRms50, 0.5);
    EXPECT_EQ(all.counts.lost, 205u);
    EXPECT_EQ(all.counts.saturated, 2u);

    ASSERT_EQ(all.stretches.size(), 3u);
    EXPECT_EQ(all.stretches[0].mark, Comparison::Mark::SaturatedAccelerometer);
    EXPECT_NEAR(all.stretches[0].fromSeconds, 7.004, 0.002);
    EXPECT_EQ(all.stretches[1].mark, Comparison::Mark::Lost);
    EXPECT_NEAR(all.stretches[1].toSeconds - all.stretches[1].fromSeconds, 0.006, 1e-9);
    EXPECT_NEAR(all.stretches[2].toSeconds - all.stretches[2].fromSeconds, 0.201, 1e-9);

    const auto worst = std::find_if(all.worst.begin(), all.worst.end(),
                                    [](const auto& moment)
                                    { return moment.track == Comparison::InclinationCore; });
    ASSERT_NE(worst, all.worst.end());
    EXPECT_NEAR(worst->seconds, 8.005, 0.001);
    EXPECT_NEAR(worst->value, 30.0, 0.01);
}

TEST(ComparisonTest, FewPointsKeepTheExtremesAndShowTheHole)
{
    for (const std::size_t most : {2u, 64u, 2000u})
    {
        const Comparison few = qltkit::CompareFilters(Scene(), most);
        const auto& points = few.tracks[Comparison::InclinationCore];
        EXPECT_LE(points.size(), most);
        if (most < 2000)
        {
            EXPECT_NEAR(Most(points), 30.0, 0.01);
            continue;
        }
        const auto at = [&](double s)
        { return points[static_cast<std::size_t>(s / few.stepSeconds)]; };
        EXPECT_TRUE(std::isnan(at(9.1)));
        EXPECT_FALSE(std::isnan(at(3.002))) << "six milliseconds are no hole";
        EXPECT_NEAR(static_cast<double>(at(6.0)), 10.0, 0.01);
    }
}

TEST(ComparisonTest, TheLagMovesTheTruthAndWithoutOneTheFiltersAreSetAgainstEachOther)
{
    ComparisonInput input = Scene();
    input.lagSeconds = 0.0005; // half of the spike between two reports
    const Comparison late = qltkit::CompareFilters(input);
    EXPECT_NEAR(late.core.inclinationMost, 20.0, 0.1);

    input.truth.clear();
    const Comparison alone = qltkit::CompareFilters(input);
    EXPECT_FALSE(alone.hasTruth);
    EXPECT_TRUE(std::isnan(alone.core.inclinationRms));
    EXPECT_NEAR(alone.differenceRms, 10.0, 0.2);
    EXPECT_EQ(alone.worst.front().track, Comparison::Difference);
    EXPECT_NEAR(Most(alone.tracks[Comparison::HeadingCore]), 90.0 * alone.seconds, 1.0);

    EXPECT_EQ(qltkit::CompareFilters({}).seconds, 0.0);
}

TEST(ComparisonTest, InputThatDoesNotFitIsRefused)
{
    const std::function<void(ComparisonInput&)> faults[] = {
        [](ComparisonInput& input) { input.core.pop_back(); },
        [](ComparisonInput& input) { input.timesUs.pop_back(); },
        [](ComparisonInput& input) { std::swap(input.timesUs[5], input.timesUs[6]); },
        [](ComparisonInput& input) { std::swap(input.truth[5], input.truth[6]); },
        [](ComparisonInput& input) { input.truth.back().report = REPORTS; },
    };
    for (const auto& fault : faults)
    {
        ComparisonInput input = Scene();
        fault(input);
        EXPECT_THROW(qltkit::CompareFilters(input), qltkit::Error);
    }
}
