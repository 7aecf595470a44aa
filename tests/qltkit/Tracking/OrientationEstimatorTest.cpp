#include <qltkit/Tracking/OrientationEstimator.h>

#include "fakes/ScriptedHead.h"
#include "fakes/TrackingReplay.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace
{

using namespace tracking;
using qltkit::ImuSample;
using qltkit::OrientationEstimator;
using qltkit::OrientationState;

const std::vector<Recording>& Recordings()
{
    static const std::vector<Recording> recordings = []
    {
        std::vector<Recording> all;
        for (const PublishedFigures& figures : PUBLISHED)
        {
            Recording r = LoadRecording(RecordingsFolder(), figures.name);
            if (r.samples.empty() || r.truth.values.empty())
            {
                return std::vector<Recording>();
            }
            all.push_back(std::move(r));
        }
        return all;
    }();
    return recordings;
}

double MeanInclination(Change change)
{
    double sum = 0.0;
    for (const Recording& recording : Recordings())
    {
        sum += Replay(recording, change).inclinationDeg;
    }
    return sum / static_cast<double>(Recordings().size());
}

/// The estimator after `seconds` seconds of the script.
OrientationEstimator After(ScriptedHead& head, double seconds, OrientationEstimator estimator = {})
{
    for (const double end = head.TimeS() + seconds; head.TimeS() < end;)
    {
        EXPECT_TRUE(estimator.Add(head.Next()));
    }
    return estimator;
}

double HeadingErrorDeg(const OrientationEstimator& estimator, const ScriptedHead& head)
{
    return HeadingBetween(estimator.GetOrientation(), head.Orientation()) * DEGREES;
}

double InclinationErrorDeg(const OrientationEstimator& estimator, const ScriptedHead& head)
{
    return InclinationBetween(estimator.GetOrientation(), head.Orientation()) * DEGREES;
}

bool SameBits(const OrientationEstimator& a, const OrientationEstimator& b)
{
    return std::memcmp(&a.GetOrientation(), &b.GetOrientation(), sizeof(Rotation)) == 0 &&
           std::memcmp(&a.GetBias(), &b.GetBias(), sizeof(Vector3)) == 0;
}

constexpr Vector3 BIAS = {0.5 * RADIANS, -0.5 * RADIANS, 0.5 * RADIANS};

} // namespace

TEST(OrientationEstimatorTest, RecordingsAreTrackedBetterThanByThePublishedFilter)
{
    if (Recordings().empty())
    {
        GTEST_SKIP() << "There are no recordings in " << RecordingsFolder();
    }
    double sum = 0.0;
    double drift = 0.0;
    double publishedDrift = 0.0;
    for (std::size_t i = 0; i < Recordings().size(); ++i)
    {
        const PublishedFigures& published = PUBLISHED[i];
        const Score score = Replay(Recordings()[i], Same);
        EXPECT_LE(score.inclinationDeg, published.saturated ? 2.2 : 1.05 * published.inclinationDeg)
            << published.name;
        sum += score.inclinationDeg;
        drift += std::fabs(score.driftDegPerMin);
        publishedDrift += std::fabs(published.driftDegPerMin);
    }
    EXPECT_LE(sum / 10.0, 0.80);
    EXPECT_LE(drift, publishedDrift);
}

TEST(OrientationEstimatorTest, LostReportsAndInexactTimesChangeLittle)
{
    if (Recordings().empty())
    {
        GTEST_SKIP() << "There are no recordings in " << RecordingsFolder();
    }
    const double mean = MeanInclination(Same);
    for (const Change change : {HalfTheRate, OneInTwentyLost, Jitter})
    {
        EXPECT_NEAR(MeanInclination(change), mean, 0.1 * mean);
    }
}

TEST(OrientationEstimatorTest, AnyStartIsLevelWithinSeconds)
{
    for (unsigned seed = 1; seed <= 40; ++seed)
    {
        ScriptedHead head(RandomStart(seed));
        const OrientationEstimator estimator = After(head, 5.0);
        EXPECT_LT(InclinationErrorDeg(estimator, head), 3.0) << "The seed is " << seed;
        EXPECT_LT(estimator.GetInclinationDeviation() * DEGREES, 5.0);
    }
    HeadScript upsideDown;
    upsideDown.tilt = {0.0, 1.0, 0.0, 0.0};
    ScriptedHead head(upsideDown);
    OrientationEstimator estimator;
    estimator.Add(head.Next());
    EXPECT_LT(InclinationErrorDeg(estimator, head), 1.0); // this holds from the first sample on
}

TEST(OrientationEstimatorTest, TheBiasIsLearnedAtRestAndASlowTurnIsNotTakenForIt)
{
    HeadScript script;
    script.bias = BIAS;
    script.turnFromS = 70.0;
    script.turnRate = 0.2 * RADIANS;
    ScriptedHead head(script);
    OrientationEstimator estimator = After(head, 10.0);
    EXPECT_TRUE(estimator.IsAtRest());
    const double after10 = HeadingErrorDeg(estimator, head);
    EXPECT_NEAR(after10, 0.0, 0.1); // the estimator removes the turn of the first seconds
    estimator = After(head, 60.0, estimator);
    EXPECT_NEAR(HeadingErrorDeg(estimator, head), after10, 0.05);
    EXPECT_LT(Length(estimator.GetBias() - BIAS) * DEGREES, 0.002);
    EXPECT_LT(Length(estimator.GetBiasDeviation()) * DEGREES, 0.02);
    estimator = After(head, 60.0, estimator);
    EXPECT_NEAR(HeadingErrorDeg(estimator, head), 0.0, 0.5); // the real turn is 12 degrees
    // Nobody turns so evenly for minutes, so the estimator finally learns the changed bias.
    estimator = After(head, 90.0, estimator);
    EXPECT_NEAR(estimator.GetBias().y, BIAS.y + script.turnRate, 0.01 * RADIANS);
}

TEST(OrientationEstimatorTest, TheBiasFollowsTheTemperature)
{
    HeadScript script;
    script.bias = BIAS;
    script.biasPerKelvin = 0.02 * RADIANS;
    script.kelvinPerS = 20.0 / 120.0;
    ScriptedHead head(script);
    OrientationEstimator estimator = After(head, 60.0);
    const double heading = HeadingErrorDeg(estimator, head);
    estimator = After(head, 60.0, estimator);
    EXPECT_LT(Length(estimator.GetBias() - head.BiasNow()) * DEGREES, 0.005);
    EXPECT_NEAR(HeadingErrorDeg(estimator, head), heading, 0.1);
}

TEST(OrientationEstimatorTest, TheEstimateIsAsGoodAfterAnHour)
{
    HeadScript script = RandomStart(7);
    script.intervalS = 0.01;
    ScriptedHead head(script);
    OrientationEstimator estimator = After(head, 5.0);
    double worst = 0.0;
    while (head.TimeS() < 3600.0)
    {
        estimator.Add(head.Next());
        worst = std::max(worst, InclinationErrorDeg(estimator, head));
    }
    EXPECT_LT(worst, 1.0);
    EXPECT_LT(Length(estimator.GetBias() - head.BiasNow()) * DEGREES, 0.05);
    EXPECT_NEAR(estimator.GetInclinationDeviation() * DEGREES, 0.7, 0.3);
}

TEST(OrientationEstimatorTest, TurnedSensorsGiveTurnedResults)
{
    const Rotation turn = qltkit::Normalized({0.5, -0.3, 0.7, 0.2});
    ScriptedHead head(RandomStart(3));
    OrientationEstimator plain;
    OrientationEstimator turned;
    for (int i = 0; i < 10000; ++i)
    {
        ImuSample sample = head.Next();
        plain.Add(sample);
        sample.gyroscope = Rotate(turn, sample.gyroscope);
        sample.accelerometer = Rotate(turn, sample.accelerometer);
        turned.Add(sample);
    }
    EXPECT_LT(InclinationBetween(plain.GetOrientation(), turned.GetOrientation() * turn), 1e-4);
    EXPECT_LT(Length(Rotate(turn, plain.GetBias()) - turned.GetBias()), 1e-5);
}

TEST(OrientationEstimatorTest, BrokenSamplesAreRefusedAndCountedAndHarmless)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    ScriptedHead head(RandomStart(5));
    OrientationEstimator clean;
    OrientationEstimator dirty;
    for (int i = 0; i < 3000; ++i)
    {
        const ImuSample sample = head.Next();
        for (const double broken : {nan, infinite, -1e4})
        {
            ImuSample bad = sample;
            bad.gyroscope.y = broken;
            EXPECT_FALSE(dirty.Add(bad));
        }
        EXPECT_TRUE(clean.Add(sample));
        EXPECT_TRUE(dirty.Add(sample));
        EXPECT_FALSE(dirty.Add(sample)); // repeated sample
        ImuSample late = sample;
        late.timeUs -= 1000;
        EXPECT_FALSE(dirty.Add(late));
    }
    EXPECT_TRUE(SameBits(clean, dirty));
    EXPECT_EQ(dirty.GetState().counts.refused, 9000u);
    EXPECT_EQ(dirty.GetState().counts.repeated, 6000u);

    // Without an accelerometer the estimator uses only the gyroscope.
    for (int i = 0; i < 500; ++i)
    {
        ImuSample bad = head.Next();
        bad.accelerometer = i % 3 == 0 ? Vector3() : Vector3{nan, i % 2 == 0 ? 1e9 : 0.0, 0.0};
        bad.temperature = nan;
        EXPECT_TRUE(dirty.Add(bad));
    }
    EXPECT_EQ(dirty.GetState().counts.refusedAccelerometers, 500u);
    EXPECT_LT(InclinationErrorDeg(After(head, 2.0, dirty), head), 3.0);
}

TEST(OrientationEstimatorTest, TheTimeIsThatOfTheDevice)
{
    HeadScript script;
    script.swing = {0.5, 1.0, 0.3};
    ScriptedHead head(script);
    OrientationEstimator wrapped;
    OrientationEstimator plain;
    for (int i = 0; i < 8000; ++i)
    {
        ImuSample sample = head.Next();
        plain.Add(sample);
        // The device's clock wraps three seconds after the start.
        sample.timeUs += 0xFFFFFFFFu - 8000000u;
        wrapped.Add(sample);
    }
    EXPECT_TRUE(SameBits(wrapped, plain));

    // A gap increases the uncertainty. After a long gap the estimator levels again.
    for (const double gap : {0.3, 5.0})
    {
        ScriptedHead later(script);
        OrientationEstimator estimator = After(later, 8.0);
        const double before = estimator.GetHeadingDeviation();
        for (const double end = later.TimeS() + gap; later.TimeS() < end;)
        {
            later.Next();
        }
        estimator.Add(later.Next());
        EXPECT_GT(estimator.GetHeadingDeviation(), before + 0.2 * gap);
        EXPECT_EQ(estimator.GetState().counts.gaps, gap > 1.0 ? 1u : 0u);
        EXPECT_LT(InclinationErrorDeg(After(later, 5.0, estimator), later), 1.5);
    }

    // The device's clock restarts.
    OrientationEstimator estimator = plain;
    for (int i = 0; i < 4000; ++i)
    {
        ImuSample sample = head.Next();
        sample.timeUs -= 12000000u;
        sample.sequence -= 8000u;
        estimator.Add(sample);
    }
    EXPECT_EQ(estimator.GetState().counts.gaps, 1u);
    EXPECT_LT(InclinationErrorDeg(estimator, head), 1.5);
}

TEST(OrientationEstimatorTest, SaturatedRatesAreRestoredAndLessCertain)
{
    HeadScript script;
    script.swing = {0.6, 0.2, 0.1};
    script.swingHz = 3.0;
    script.gyroscopeLimit = 8.0; // rad/s; the peaks are 7 to 16
    double squares = 0.0;
    double blindSquares = 0.0;
    double deviations = 0.0;
    for (unsigned seed = 1; seed <= 10; ++seed)
    {
        script.seed = seed;
        ScriptedHead head(script);
        OrientationEstimator estimator;
        OrientationEstimator blind; // does not know about the saturation
        for (int i = 0; i < 5000; ++i)
        {
            ImuSample sample = head.Next();
            estimator.Add(sample);
            sample.saturated = 0;
            blind.Add(sample);
            squares += std::pow(i < 2000 ? 0.0 : InclinationErrorDeg(estimator, head), 2);
            blindSquares += std::pow(i < 2000 ? 0.0 : InclinationErrorDeg(blind, head), 2);
        }
        deviations += estimator.GetInclinationDeviation();
        if (estimator.GetState().counts.repaired > 0)
        {
            EXPECT_GT(estimator.GetInclinationDeviation(), blind.GetInclinationDeviation());
        }
    }
    EXPECT_LT(std::sqrt(squares), 0.5 * std::sqrt(blindSquares));
    // The digits show every change of the repair. A deliberate change gives others.
    EXPECT_NEAR(std::sqrt(squares), 677.576744, 1e-4);
    EXPECT_NEAR(deviations, 3.29857640, 1e-7);
}

TEST(OrientationEstimatorTest, ASavedStateIsContinuedToTheBit)
{
    ScriptedHead head(RandomStart(9));
    OrientationEstimator estimator = After(head, 3.0);
    OrientationState saved;
    std::memcpy(&saved, &estimator.GetState(), sizeof(saved));
    OrientationEstimator restored;
    ASSERT_TRUE(restored.Restore(saved));
    for (int i = 0; i < 2000; ++i)
    {
        const ImuSample sample = head.Next();
        estimator.Add(sample);
        restored.Add(sample);
    }
    EXPECT_TRUE(SameBits(estimator, restored));

    const OrientationEstimator before = restored;
    OrientationState other = saved;
    other.version = OrientationState::VERSION + 1;
    EXPECT_FALSE(restored.Restore(other));
    other = saved;
    other.covariance[4][2] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(restored.Restore(other));
    other = saved;
    other.orientation.w += 0.1;
    EXPECT_FALSE(restored.Restore(other));
    EXPECT_TRUE(SameBits(before, restored));
}

TEST(OrientationEstimatorTest, ReportsGiveDecodedSamplesWithTheirSaturation)
{
    qlt::SensorReport report{};
    const auto put = [&report](std::size_t at, int count)
    {
        report[at] = static_cast<std::uint8_t>(count & 0xFF);
        report[at + 1] = static_cast<std::uint8_t>(count >> 8 & 0xFF);
    };
    report[7] = 0xFF; // single precision cannot hold this time
    report[4] = 0x01;
    put(18, -32768); // the gyroscope's y is the tracker's -x
    put(20, 32766);
    put(22, 32767); // the accelerometer's x is the tracker's y
    const ImuSample sample = qltkit::ReadImuSample(report);
    EXPECT_EQ(sample.timeUs, 0xFF000001u);
    EXPECT_EQ(sample.saturated, 1u | 2u << 3);
    report[10] = 1;
    const qlt::SensorSample decoded = qlt::DecodeSensorReport(report);
    EXPECT_EQ(static_cast<float>(sample.gyroscope.x), decoded.gyroscope.x());
    EXPECT_GT(sample.gyroscope.x, 17.0);
    EXPECT_NEAR(sample.accelerometer.y, 9.80665 * static_cast<double>(decoded.accelerometer.y()),
                1e-6);
}
