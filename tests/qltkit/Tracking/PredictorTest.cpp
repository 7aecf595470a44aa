#include <qltkit/Tracking/Predictor.h>

#include "fakes/ScriptedHead.h"
#include "fakes/TrackingReplay.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{

using namespace tracking;
using qltkit::ImuSample;
using qltkit::OrientationEstimator;
using qltkit::Predictor;

PredictionErrors PredictScript(const HeadScript& script, double seconds, double aheadS,
                               double skipS)
{
    ScriptedHead head(script);
    return Predict(static_cast<std::size_t>(seconds * 1000.0), aheadS, skipS,
                   [&](std::size_t) { return head.Next(); });
}

} // namespace

TEST(PredictorTest, RecordingsArePredictedBetterThanByAConstantRate)
{
    for (const auto& [aheadS, goal] : {std::pair(0.02, 0.34), std::pair(0.05, 2.40)})
    {
        double sum = 0.0;
        for (const PublishedFigures& published : PUBLISHED)
        {
            const Recording r = LoadRecording(RecordingsFolder(), published.name);
            if (r.samples.empty())
            {
                GTEST_SKIP() << "There are no recordings in " << RecordingsFolder();
            }
            const auto next = [&r](std::size_t i) { return r.samples[i]; };
            const PredictionErrors errors = Predict(r.samples.size(), aheadS, 5.0, next);
            EXPECT_LT(errors.predicted, 0.95 * errors.constantRate) << published.name;
            sum += errors.predicted;
            const PredictionErrors all = Predict(r.samples.size(), aheadS, 1.0, next);
            EXPECT_NEAR(all.own, all.predicted, 0.1 * all.predicted) << published.name;
        }
        EXPECT_LE(sum / 10.0, goal);
    }
}

TEST(PredictorTest, ASwingIsLearned)
{
    HeadScript script;
    script.swing = {0.3, 0.6, 0.2};
    script.swingHz = 2.0;
    const PredictionErrors errors = PredictScript(script, 10.0, 0.05, 3.0);
    EXPECT_LT(errors.predicted, 0.25 * errors.constantRate);
    EXPECT_LT(errors.constantRate, errors.held);
}

TEST(PredictorTest, AtRestThePredictionIsAsGoodAsTheLastPose)
{
    for (const double noise : {0.035, 0.115}) // the noise of a good and of an average gyroscope
    {
        HeadScript script;
        script.bias = {0.01, -0.01, 0.005};
        script.gyroscopeNoise = noise * RADIANS;
        const PredictionErrors errors = PredictScript(script, 15.0, 0.05, 5.0);
        EXPECT_LT(errors.predicted, errors.held + 0.02);
    }
}

TEST(PredictorTest, TheTimeAheadIsLimitedAndGapsAreNotBridged)
{
    HeadScript script;
    script.swing = {0.0, 1.0, 0.0};
    ScriptedHead head(script);
    OrientationEstimator estimator;
    Predictor predictor;
    // The predictor knows nothing yet.
    EXPECT_EQ(AngleBetween(predictor.Predict(0.05), Rotation()), 0.0);
    for (int i = 0; i < 3000; ++i)
    {
        estimator.Add(head.Next());
        predictor.Add(estimator);
        predictor.Add(estimator); // the same sample changes nothing
    }
    const Rotation& now = estimator.GetOrientation();
    EXPECT_LT(AngleBetween(predictor.Predict(0.0), now), 1e-9);
    EXPECT_LT(AngleBetween(predictor.Predict(-1.0), now), 1e-9);
    EXPECT_LT(AngleBetween(predictor.Predict(60.0), predictor.Predict(0.1)), 1e-9);
    EXPECT_GT(predictor.GetError(0.05), predictor.GetError(0.02));

    const auto compared = predictor.GetState().horizons[2].compared;
    EXPECT_GT(compared, 300u);
    for (int i = 0; i < 400; ++i)
    {
        head.Next();
    }
    estimator.Add(head.Next());
    predictor.Add(estimator);
    EXPECT_EQ(predictor.GetState().horizons[2].compared, compared);
    const double turn = Length(estimator.GetAngularVelocity()) * 0.1;
    EXPECT_LT(AngleBetween(predictor.Predict(0.1), estimator.GetOrientation()), 1.5 * turn + 1e-3);
}

TEST(PredictorTest, ASavedStateIsContinuedToTheBit)
{
    ScriptedHead head(RandomStart(4));
    OrientationEstimator estimator;
    Predictor predictor;
    Predictor restored;
    for (int i = 0; i < 4000; ++i)
    {
        if (i == 3000)
        {
            qltkit::PredictorState saved;
            std::memcpy(&saved, &predictor.GetState(), sizeof(saved));
            ASSERT_TRUE(restored.Restore(saved));
            ++saved.version;
            EXPECT_FALSE(restored.Restore(saved));
        }
        estimator.Add(head.Next());
        predictor.Add(estimator);
        if (i >= 3000)
        {
            restored.Add(estimator);
        }
    }
    const Rotation a = predictor.Predict(0.03);
    const Rotation b = restored.Predict(0.03);
    EXPECT_EQ(std::memcmp(&a, &b, sizeof(a)), 0);
}
