#include <qlt/Sensors/SensorFusion.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/ExpectNear.h"
#include "fakes/FloatBits.h"
#include "fakes/HashOf.h"
#include "fakes/ManualClock.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <random>

namespace
{

using qlt::Quaternion;
using qlt::Vec3;

class SensorFusionTest : public testing::Test
{
protected:
    void Step(std::int64_t laterNs, const Vec3& accelerometer, const Vec3& gyroscope)
    {
        clock.nowNs += laterNs;
        fusion.Fuse(accelerometer, gyroscope, Vec3(), 0.0f);
    }

    AssertionRecorder assertions;
    ManualClock clock;
    qlt::SensorFusion fusion{clock};
};

} // namespace

TEST_F(SensorFusionTest, RestUprightReportsBothZeroAxesAndChangesNothing)
{
    Step(1000000, Vec3(0, 2, 0), Vec3());
    EXPECT_EQ(assertions.TakeTexts(),
              std::vector<std::string>(2, "length > FLT_EPSILON|Math/Vector"));
    ExpectNear(fusion.GetQuaternion(), Quaternion::Identity, 0);
    Step(1000000, Vec3(), Vec3(1, 0, 0)); // a zero acceleration gives no angle
    EXPECT_TRUE(std::isnan(fusion.GetQuaternion().w()));
}

// The threshold is exactly FLT_EPSILON. After 1e8 s even the slowest turn above it gives 12 rad.
TEST_F(SensorFusionTest, OnlyASpeedAboveTheToleranceIsExtrapolated)
{
    for (const float speed : {FLT_EPSILON, NAN, std::nextafter(FLT_EPSILON, 1.0f)})
    {
        Step(1000000, Vec3(0, 1, 0), Vec3(0, speed, 0));
        fusion.Reset();
        clock.nowNs += 100000000000000000;
        EXPECT_EQ(fusion.GetPredictedQuaternion(0).y() == 0.0f, !(speed > FLT_EPSILON)) << speed;
    }
}

TEST_F(SensorFusionTest, ResetKeepsTheAngularVelocityAndTheTimeForThePrediction)
{
    Step(200000000, Vec3(0, 1, 0), Vec3(0, 2, 0));
    clock.nowNs += 200000000;
    fusion.Reset();
    ExpectNear(fusion.GetQuaternion(), Quaternion::Identity, 0);
    clock.nowNs += 300000000;
    ExpectNear(fusion.GetPredictedQuaternion(0), AboutY(1.0f), 1e-6f);
}

// The filter ignores the magnetometer and the device's time. A step looks at the clock once, and a
// prediction reaches to the moment of the call. The hash is that of a filter which was written step
// by step without the library; bench/PlainFusion.h contains it.
TEST_F(SensorFusionTest, EveryStepAndEveryPredictionHasItsBits)
{
    std::mt19937 random(20261121);
    const auto uniform = [&random](float limit)
    { return limit * (static_cast<float>(random() >> 8) / 8388608.0f - 1.0f); };
    std::vector<std::array<std::uint32_t, 4>> results;
    for (int i = 0; i < 20000; ++i)
    {
        const Vec3 a(uniform(1.5f), uniform(2.0f) + 0.5f, uniform(1.5f));
        const float limit = i % 100 == 0 ? 30.0f : 3.0f;
        const Vec3 g(uniform(limit), uniform(limit), uniform(limit));
        clock.stepNs = 500000 + static_cast<std::int64_t>(random() % 1000000);
        fusion.Fuse(a, g, Vec3(uniform(1), NAN, 0), uniform(1));
        results.push_back(Bits(fusion.GetQuaternion()));
        results.push_back(Bits(fusion.GetPredictedQuaternion(uniform(1))));
    }
    EXPECT_EQ(HashOf(results), 0x712CD5B864A89DB3U);
    EXPECT_TRUE(assertions.Take().empty());
}
