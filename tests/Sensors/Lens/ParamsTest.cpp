#include <qlt/Sensors/Params.h>

#include <qlt/Math/MathUtil.h>

#include "Sensors/Lens/DistortConstants.h"

#include "fakes/FloatBits.h"

#include <gtest/gtest.h>

using qlt::Params;

// The other constants are compared through the flat interface.
TEST(ParamsTest, DescribesThePanel)
{
    EXPECT_EQ(Params::HMD_RESOLUTION_X, 2560);
    EXPECT_EQ(Params::HMD_RESOLUTION_Y, 1440);
    EXPECT_FLOAT_EQ(Params::HMD_SCREEN_SIZE_HORZ, 125.44f);
    EXPECT_FLOAT_EQ(Params::HMD_ASPECT_RATIO, 16.0f / 9.0f);
    EXPECT_FLOAT_EQ(Params::EYE_ASPECT_RATIO, 8.0f / 9.0f);
}

TEST(ParamsTest, LiteralsHaveTheBitsOfTheirFormulas)
{
    using namespace qlt::DistortConstants;
    const auto tangentOf = [](float x)
    { return static_cast<float>(std::tan(static_cast<double>(x))); };
    const float tangent = tangentOf(EYE_FOV_RAD * 0.5f);
    const auto half =
        static_cast<float>(std::atan(static_cast<double>(tangent / Params::EYE_ASPECT_RATIO)));
    EXPECT_EQ(Bits(Params::EYE_FOV_Y_DEG), Bits(qlt::MathUtil::Rad2Deg(2.0f * half)));
    EXPECT_EQ(Bits(DISTORT_FOV_RATIO), Bits(tangentOf(DISTORT_FOV_RAD * 0.5f) / tangent));
    EXPECT_EQ(Bits(DISTORT_SCALE), Bits(DISTORT_WIDTH_RATIO / DISTORT_FOV_RATIO));
}
