#include <qlt/Sensors/Params.h>

#include <qlt/Math/MathUtil.h>

#include "Sensors/Lens/DistortConstants.h"

#include "fakes/FloatBits.h"

#include <gtest/gtest.h>

using qlt::Params;

// The command's test compares the other constants.
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
