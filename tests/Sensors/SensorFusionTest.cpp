#include <qlt/Sensors/SensorFusion.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"
#include "fakes/ManualClock.h"
#include "fakes/PlainFusion.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <random>

namespace
{

using qlt::Quaternion;
using qlt::Vec3;

const std::string ZERO_AXIS = "length > FLT_EPSILON|Math/Vector";

void ExpectQuaternion(const Quaternion& q, float w, float x, float y, float z, float tolerance)
{
    EXPECT_NEAR(q.w(), w, tolerance);
    EXPECT_NEAR(q.x(), x, tolerance);
    EXPECT_NEAR(q.y(), y, tolerance);
    EXPECT_NEAR(q.z(), z, tolerance);
}

std::array<std::uint32_t, 4> PlainBits(const plain::Rotation<float>& q)
{
    return Bits(Quaternion(q.w, q.x, q.y, q.z));
}

class SensorFusionTest : public testing::Test
{
protected:
    /// One step, a millisecond later.
    void Step(const Vec3& accelerometer, const Vec3& gyroscope, const Vec3& field = Vec3(),
              float dt = 0.0f)
    {
        clock.nowNs += 1000000;
        fusion.Fuse(accelerometer, gyroscope, field, dt);
    }

    AssertionRecorder assertions;
    ManualClock clock;
    qlt::SensorFusion fusion{clock};
};

} // namespace

TEST_F(SensorFusionTest, StartsAtTheIdentityWithoutExtrapolation)
{
    clock.nowNs += 1000000000;
    ExpectQuaternion(fusion.GetQuaternion(), 1, 0, 0, 0, 0);
    ExpectQuaternion(fusion.GetPredictedQuaternion(1.0f), 1, 0, 0, 0, 0);
}

TEST_F(SensorFusionTest, RestUprightReportsBothZeroAxesAndChangesNothing)
{
    Step(Vec3(0, 2, 0), Vec3());
    EXPECT_EQ(assertions.TakeTexts(), (std::vector<std::string>{ZERO_AXIS, ZERO_AXIS}));
    ExpectQuaternion(fusion.GetQuaternion(), 1, 0, 0, 0, 0);
}

// Tilt is pi / 2 about (0, 0, -1), a thousandth of it is taken back: half the angle is pi / 4000.
TEST_F(SensorFusionTest, AThousandthOfTheTiltIsCorrected)
{
    Step(Vec3(3, 0, 0), Vec3());
    const float half = 3.14159265f / 4000.0f;
    ExpectQuaternion(fusion.GetQuaternion(), std::cos(half), 0, 0, std::sin(half), 1e-7f);
}

// The first step takes the mean with zero, so 1 s at 1 rad/s turns by 0.5 rad.
TEST_F(SensorFusionTest, IntegratesTheMeanOfTwoSamplesOverTheTimeThatPassed)
{
    clock.nowNs += 1000000000;
    fusion.Fuse(Vec3(0, 1, 0), Vec3(0, 1, 0), Vec3(), 0.001f);
    ExpectQuaternion(fusion.GetQuaternion(), std::cos(0.25f), 0, std::sin(0.25f), 0, 1e-6f);
    clock.nowNs += 2000000000;
    fusion.Fuse(Vec3(0, 1, 0), Vec3(0, 1, 0), Vec3(), 0.001f);
    ExpectQuaternion(fusion.GetQuaternion(), std::cos(1.25f), 0, std::sin(1.25f), 0, 1e-6f);
}

TEST_F(SensorFusionTest, PredictionReachesTheMomentOfTheCall)
{
    Step(Vec3(0, 1, 0), Vec3(0, 2, 0));
    const float angle = 0.001f;
    clock.nowNs += 500000000;
    for (const float dt : {0.0f, 10.0f})
    {
        const float half = (angle + 1.0f) / 2.0f;
        ExpectQuaternion(fusion.GetPredictedQuaternion(dt), std::cos(half), 0, std::sin(half), 0,
                         1e-6f);
    }
}

// The threshold is FLT_EPSILON itself; after 1e8 s even the smallest turn above it is 12 rad.
TEST_F(SensorFusionTest, OnlyASpeedAboveTheToleranceIsExtrapolated)
{
    for (const float speed : {FLT_EPSILON, NAN, std::nextafter(FLT_EPSILON, 1.0f)})
    {
        Step(Vec3(0, 1, 0), Vec3(0, speed, 0));
        fusion.Reset();
        clock.nowNs += 100000000000000000;
        EXPECT_EQ(fusion.GetPredictedQuaternion(0).w() == 1.0f, !(speed > FLT_EPSILON)) << speed;
    }
}

TEST_F(SensorFusionTest, NoTimeIsLostBetweenSteps)
{
    struct TickingClock : qlt::Clock
    {
        std::int64_t NowNs() override { return 1000000000 * reads++; }
        void SleepNs(std::int64_t) override {}
        std::int64_t reads = 0;
    };
    TickingClock ticking;
    qlt::SensorFusion fused(ticking);
    fused.Fuse(Vec3(0, 1, 0), Vec3(0, 1, 0), Vec3(), 0.0f);
    fused.Fuse(Vec3(0, 1, 0), Vec3(0, 1, 0), Vec3(), 0.0f);
    EXPECT_EQ(ticking.reads, 3); // one at the start, one a step
    ExpectQuaternion(fused.GetQuaternion(), std::cos(0.75f), 0, std::sin(0.75f), 0, 1e-6f);
}

TEST_F(SensorFusionTest, ResetKeepsTheAngularVelocityAndTheTimeForThePrediction)
{
    Step(Vec3(0, 1, 0), Vec3(0, 2, 0));
    clock.nowNs += 200000000;
    fusion.Reset();
    ExpectQuaternion(fusion.GetQuaternion(), 1, 0, 0, 0, 0);
    clock.nowNs += 300000000;
    ExpectQuaternion(fusion.GetPredictedQuaternion(0), std::cos(0.5f), 0, std::sin(0.5f), 0, 1e-6f);
}

TEST_F(SensorFusionTest, MagnetometerAndTimeStepChangeNothing)
{
    qlt::SensorFusion other{clock};
    clock.nowNs += 1000000;
    fusion.Fuse(Vec3(1, 2, 3), Vec3(3, 2, 1), Vec3(), 0.0f);
    other.Fuse(Vec3(1, 2, 3), Vec3(3, 2, 1), Vec3(9, -8, NAN), 77.0f);
    EXPECT_EQ(Bits(fusion.GetQuaternion()), Bits(other.GetQuaternion()));
}

TEST_F(SensorFusionTest, AZeroAccelerationMakesTheOrientationNan)
{
    Step(Vec3(), Vec3(1, 0, 0));
    EXPECT_TRUE(std::isnan(fusion.GetQuaternion().w()));
}

// Uneven time steps and every magnitude of turn, compared with the filter written down plainly.
TEST_F(SensorFusionTest, EqualsThePlainFilterToTheLastBit)
{
    plain::Fusion<float> expected;
    std::mt19937 random(20261121);
    const auto uniform = [&random](float limit)
    { return limit * (static_cast<float>(random() >> 8) / 8388608.0f - 1.0f); };
    for (int i = 0; i < 20000; ++i)
    {
        const Vec3 a(uniform(1.5f), uniform(2.0f) + 0.5f, uniform(1.5f));
        const float limit = i % 100 == 0 ? 30.0f : 3.0f;
        const Vec3 g(uniform(limit), uniform(limit), uniform(limit));
        clock.nowNs += 500000 + static_cast<std::int64_t>(random() % 1000000);
        fusion.Fuse(a, g, Vec3(), 0.001f);
        expected.Step({a.x(), a.y(), a.z()}, {g.x(), g.y(), g.z()}, clock.nowNs);
        ASSERT_EQ(Bits(fusion.GetQuaternion()), PlainBits(expected.orientation)) << "at step " << i;
        clock.nowNs += 300000;
        ASSERT_EQ(Bits(fusion.GetPredictedQuaternion(0)),
                  PlainBits(expected.Predicted(clock.nowNs)))
            << "at step " << i;
    }
    EXPECT_TRUE(assertions.Take().empty());
}
