#include <qltkit/Tracking/ClockFit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{

/// Fits the reports of a device whose clock drifts. Each report has a random delay. The result is
/// the worst error in milliseconds after the first two seconds.
double WorstErrorMs(double driftPpm, double noiseMs, double stallAtS, std::int64_t jumpUs,
                    std::uint64_t seed = 7)
{
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> delayNs(0.0, noiseMs * 1e6);
    qltkit::ClockFit fit;
    double worst = 0.0;
    std::int64_t lastArrival = 0;
    for (int i = 0; i < 8000; ++i)
    {
        const std::int64_t deviceUs = 5000000 + 1000 * i + (i >= 5000 ? jumpUs : 0);
        const auto truth = static_cast<std::int64_t>(i * 1e6 * (1.0 + driftPpm * 1e-6));
        auto arrival = truth + static_cast<std::int64_t>(delayNs(random));
        if (std::abs(i * 1e-3 - stallAtS) < 0.5)
        {
            arrival += 40000000; // the host is busy for a second
        }
        arrival = std::max(arrival, lastArrival);
        lastArrival = arrival;
        fit.Add(deviceUs, arrival);
        if (i >= 2000 && (i < 5000 || i >= 7200))
        {
            worst = std::max(worst, std::abs(static_cast<double>(fit.HostNs(deviceUs) - truth)));
        }
    }
    EXPECT_EQ(fit.Restarts(), jumpUs == 0 ? 0u : 1u);
    return worst / 1e6;
}

} // namespace

TEST(ClockFitTest, DriftAndLateWakeUpsLeaveLessThanAThirdOfAMillisecond)
{
    EXPECT_LT(WorstErrorMs(0.0, 0.0, -1.0, 0), 0.001);
    // An estimate from two seconds sometimes has a larger error by chance.
    int misses = 0;
    for (std::uint64_t seed = 0; seed < 40; ++seed)
    {
        const double driftPpm = seed % 2 == 0 ? 200.0 : -200.0;
        const double worst = WorstErrorMs(driftPpm, 5.0, -1.0, 0, seed);
        EXPECT_LT(worst, 0.4) << seed;
        misses += worst < 0.3 ? 0 : 1;
    }
    EXPECT_LE(misses, 1);
}

TEST(ClockFitTest, AStallAndAJumpOfTheDevicesClockAreNotLearnedAsDrift)
{
    EXPECT_LT(WorstErrorMs(50.0, 1.0, 3.0, 0), 0.3);
    EXPECT_LT(WorstErrorMs(50.0, 1.0, -1.0, 3000000), 0.3);
    EXPECT_LT(WorstErrorMs(50.0, 1.0, -1.0, -3000000), 0.3);
}
