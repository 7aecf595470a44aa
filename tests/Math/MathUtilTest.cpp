#include <qlt/Math/MathUtil.h>

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

using qlt::MathUtil;
using Reports = std::vector<std::string>;

} // namespace

TEST(MathUtilTest, AnglesConvertBySinglePrecisionFactors)
{
    EXPECT_EQ(MathUtil::Deg2Rad(180.0f), 180.0f * 0.017453292f);
    EXPECT_EQ(MathUtil::Rad2Deg(2.0f), 2.0f * 57.29578f);
    static_assert(MathUtil::Deg2Rad(1.0f) == 0.017453292f);
}

TEST(MathUtilTest, ClampTakesTheValueFirst)
{
    EXPECT_EQ(MathUtil::clamp(5, 0, 1), 1.0f);
    EXPECT_EQ(MathUtil::clamp(-1, 0, 1), 0.0f);
    EXPECT_EQ(MathUtil::clamp(0.5f, 0, 1), 0.5f);
    EXPECT_TRUE(std::isnan(MathUtil::clamp(NAN, 0, 1)));
}

TEST(MathUtilTest, LerpAndPercentageTakeTheEndsFirst)
{
    EXPECT_EQ(MathUtil::lerp(2, 4, 0.5f), 3.0f);
    EXPECT_EQ(MathUtil::percentage(0, 4, 1), 0.25f);
    // (1 - t) a + b t and not a + t (b - a), which gives 1 here: 1 - 1e-8 is 1 in single precision.
    EXPECT_EQ(MathUtil::lerp(-1e8f, 1, 1.0f), 1.0f);
}

TEST(MathUtilTest, BrokenPreconditionsAreReportedAndComputed)
{
    AssertionRecorder assertions;
    EXPECT_EQ(MathUtil::clamp(0.5f, 1, 0), 1.0f);
    EXPECT_EQ(assertions.TakeTexts(), Reports{"a <= b|Math/MathUtil"});
    EXPECT_EQ(MathUtil::lerp(4, 2, 2), 0.0f);
    EXPECT_EQ(assertions.TakeTexts(),
              (Reports{"a <= b|Math/MathUtil", "t >= 0 && t <= 1|Math/MathUtil"}));
    EXPECT_EQ(MathUtil::percentage(0, 4, 8), 2.0f);
    EXPECT_EQ(assertions.TakeTexts(), Reports{"x >= a && x <= b|Math/MathUtil"});
    EXPECT_TRUE(std::isnan(MathUtil::percentage(1, 1, 1)));
    EXPECT_EQ(assertions.TakeTexts(), Reports{"a < b|Math/MathUtil"});
}

TEST(MathUtilTest, ThePolynomialHasItsHighestPowerFirst)
{
    for (std::size_t power = 0; power <= 8; ++power)
    {
        std::vector<float> p(9, 0.0f);
        p[8 - power] = 2.0f;
        EXPECT_EQ(MathUtil::Polynom(p, 3.0f), 2.0f * std::pow(3.0f, static_cast<float>(power)));
    }
}

// Summed x^7 first, 1e8 and -1e8 cancel before the others come; x^8 first and then down it is the
// same, but with any lower power in between the ones are lost.
TEST(MathUtilTest, ThePolynomialSumsFromTheSeventhPower)
{
    EXPECT_EQ(MathUtil::Polynom({-1e8f, 1e8f, 1, 1, 1, 1, 1, 1, 1}, 1.0f), 7.0f);
    EXPECT_EQ(MathUtil::Polynom({1, 1e8f, -1e8f, 0, 0, 0, 0, 0, 0}, 1.0f), 0.0f);
}

TEST(MathUtilTest, ALongerPolynomialIsReported)
{
    AssertionRecorder assertions;
    EXPECT_EQ(MathUtil::Polynom({0, 0, 0, 0, 0, 0, 0, 0, 5, 77}, 1.0f), 5.0f);
    EXPECT_EQ(assertions.TakeTexts(), Reports{"p.size() == 9|Math/MathUtil"});
}
