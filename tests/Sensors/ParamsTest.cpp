#include <qlt/Sensors/Params.h>

#include <qlt/Math/MathUtil.h>

#include "Sensors/DistortConstants.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace
{

using qlt::Params;
using qlt::Vec3;
using namespace qlt::DistortConstants;

std::uint32_t Bits(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float Tangent(float x) { return static_cast<float>(std::tan(static_cast<double>(x))); }

void ExpectVector(const Vec3& v, float x, float y, float z)
{
    EXPECT_EQ(v.x(), x);
    EXPECT_EQ(v.y(), y);
    EXPECT_EQ(v.z(), z);
}

} // namespace

TEST(ParamsTest, DescribesTheHeadset)
{
    EXPECT_STREQ(Params::HMD_NAME, "Quelta Orbel Ixo");
    EXPECT_EQ(Params::HMD_RESOLUTION_X, 2560);
    EXPECT_EQ(Params::HMD_RESOLUTION_Y, 1440);
    EXPECT_EQ(Params::HMD_SCREEN_SIZE_HORZ, 125.44f);
    EXPECT_EQ(Params::HMD_ASPECT_RATIO, 1.7777778f);
    EXPECT_EQ(Params::EYE_FOV_DEG, 126.5f);
    EXPECT_EQ(Params::EYE_FOV_Y_DEG, 131.73172f);
    EXPECT_EQ(Params::EYE_ASPECT_RATIO, 0.8888889f);
    EXPECT_TRUE(Params::EYE_DISTORT);
    EXPECT_EQ(Params::EYE_STRETCH, 3.0f);
    EXPECT_EQ(Params::EYE_RESOLUTION, 1024);
    EXPECT_EQ(Params::USER_IPD_M, 0.0625f);
    EXPECT_EQ(Params::USER_NECK_EYE_V_M, 0.075f);
    EXPECT_EQ(Params::USER_NECK_EYE_H_M, 0.0805f);
}

TEST(ParamsTest, SensorOffsetsAreThoseOfTheCalibration)
{
    ExpectVector(Params::GYROSCOPE_POSITION_OFFSET, -0.001826629f, -0.005334f, -0.00497886f);
    ExpectVector(Params::GYROSCOPE_MAGNITUDE_OFFSET, 1, 1, 1);
    ExpectVector(Params::ACCELEROMETER_POSITION_OFFSET, -0.0061435103f, -0.02115801f,
                 -0.082561493f);
    ExpectVector(Params::ACCELEROMETER_MAGNITUDE_OFFSET, 0.9057715f, 0.91230297f, 0.91691148f);
    ExpectVector(Params::MAGNETOMETER_POSITION_OFFSET, 0, 0, 0);
    ExpectVector(Params::MAGNETOMETER_MAGNITUDE_OFFSET, 1, 1, 1);
}

// The upper and lower ends of the calibrated range become +1 and -1.
TEST(ParamsTest, TheAccelerometerOffsetsSpanItsRange)
{
    const Vec3 position = Params::ACCELEROMETER_POSITION_OFFSET;
    const Vec3 magnitude = Params::ACCELEROMETER_MAGNITUDE_OFFSET;
    EXPECT_NEAR((0.899628f - position.x()) / magnitude.x(), 1.0f, 1e-6f);
    EXPECT_NEAR((0.891145f - position.y()) / magnitude.y(), 1.0f, 1e-6f);
    EXPECT_NEAR((-0.999473f - position.z()) / magnitude.z(), -1.0f, 1e-6f);
}

TEST(ParamsTest, EnumeratorsTakeInvalidValues)
{
    EXPECT_EQ(Params::EYE_BEGIN, 0);
    EXPECT_EQ(Params::EYE_LEFT, 0);
    EXPECT_EQ(Params::EYE_RIGHT, 1);
    EXPECT_EQ(Params::EYE_COUNT, 2);
    EXPECT_EQ(Params::COLOR_RED + 10 * Params::COLOR_GREEN + 100 * Params::COLOR_BLUE, 210);
    EXPECT_EQ(static_cast<int>(static_cast<Params::Eye>(-7)), -7);
    EXPECT_EQ(sizeof(Params::Color), sizeof(int));
}

// What is written out as a literal is what the formulas give.
TEST(ParamsTest, LiteralsAreTheirFormulas)
{
    const float tangent = Tangent(EYE_FOV_RAD * 0.5f);
    const auto half =
        static_cast<float>(std::atan(static_cast<double>(tangent / Params::EYE_ASPECT_RATIO)));
    EXPECT_EQ(Bits(Params::EYE_FOV_Y_DEG), Bits(qlt::MathUtil::Rad2Deg(2.0f * half)));
    EXPECT_EQ(Bits(DISTORT_FOV_RATIO), Bits(Tangent(DISTORT_FOV_RAD * 0.5f) / tangent));
    EXPECT_EQ(Bits(DISTORT_SCALE), Bits(DISTORT_WIDTH_RATIO / DISTORT_FOV_RATIO));
}

TEST(DistortConstantsTest, HaveTheirDefaultsAndTakeThemAgain)
{
    for (int again = 0; again < 2; ++again)
    {
        EXPECT_EQ(EYE_FOV_RAD, 2.2078414f);
        EXPECT_EQ(HMD_SCREEN_SIZE_VERT, 125.44f / Params::HMD_ASPECT_RATIO);
        EXPECT_EQ(DISTORT_OFFSET_Y_MM, 0.0f);
        EXPECT_EQ(DISTORT_OFFSET_Y, 0.0f);
        EXPECT_EQ(DISTORT_FOV_RAD, 2.1994638f);
        EXPECT_EQ(DISTORT_WIDTH_MM, 64.644f);
        EXPECT_EQ(DISTORT_WIDTH_RATIO, 64.644f / 62.72f);
        EXPECT_EQ(Bits(DISTORT_FOV_RATIO), 0x3F7D5AA2u);
        EXPECT_EQ(Bits(DISTORT_SCALE), 0x3F854DE9u);
        Set(0.0f, 126.02f, 64.644f);
    }
}

// Half of the panel's height is one viewport unit; the eye's own field of view and half the panel's
// width are the neutral values.
TEST(DistortConstantsTest, FollowTheMeasuredLens)
{
    Set(70.56f / 2.0f, 126.5f, 62.72f);
    EXPECT_FLOAT_EQ(DISTORT_OFFSET_Y, 1.0f);
    EXPECT_EQ(DISTORT_FOV_RATIO, 1.0f);
    EXPECT_EQ(DISTORT_WIDTH_RATIO, 1.0f);
    EXPECT_EQ(DISTORT_SCALE, 1.0f);
    Set(0.0f, 126.02f, 64.644f);
}
