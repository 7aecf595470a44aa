#include <qlt/Math/MathUtil.h>

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <cmath>

using qlt::MathUtil;
using Texts = std::vector<std::string>;

TEST(MathUtilTest, ClampTakesTheValueFirstAndTheOthersTakeTheEndsFirst)
{
    static_assert(MathUtil::Deg2Rad(180.0f) == 180.0f * 0.017453292f);
    static_assert(MathUtil::Rad2Deg(2.0f) == 2.0f * 57.29578f);
    EXPECT_EQ(MathUtil::clamp(5, 0, 1), 1.0f);
    EXPECT_EQ(MathUtil::clamp(-1, 0, 1), 0.0f);
    EXPECT_EQ(MathUtil::clamp(0.5f, 0, 1), 0.5f);
    EXPECT_TRUE(std::isnan(MathUtil::clamp(NAN, 0, 1)));
    // The formula is (1 - t) a + b t. The formula a + t (b - a) would give 0 here, because 1 + 1e8
    // is 1e8 in single precision.
    EXPECT_EQ(MathUtil::lerp(-1e8f, 1, 1.0f), 1.0f);
}

TEST(MathUtilTest, BrokenPreconditionsAreReportedAndComputed)
{
    AssertionRecorder assertions;
    EXPECT_EQ(MathUtil::clamp(0.5f, 1, 0), 1.0f);
    EXPECT_EQ(MathUtil::lerp(4, 2, 2), 0.0f);
    EXPECT_EQ(MathUtil::percentage(0, 4, 8), 2.0f);
    EXPECT_TRUE(std::isnan(MathUtil::percentage(1, 1, 1)));
    EXPECT_EQ(MathUtil::Polynom({0, 0, 0, 0, 0, 0, 0, 0, 5, 77}, 1.0f), 5.0f);
    EXPECT_EQ(assertions.TakeTexts(),
              (Texts{"a <= b|Math/MathUtil", "a <= b|Math/MathUtil",
                     "t >= 0 && t <= 1|Math/MathUtil", "x >= a && x <= b|Math/MathUtil",
                     "a < b|Math/MathUtil", "p.size() == 9|Math/MathUtil"}));
}

// When x^7 and x^8 are added first, 1e8 and -1e8 cancel before the other terms are added. When a
// lower power is added between them, the ones are lost.
TEST(MathUtilTest, ThePolynomialSumsFromTheSeventhPower)
{
    EXPECT_EQ(MathUtil::Polynom({-1e8f, 1e8f, 1, 1, 1, 1, 1, 1, 1}, 1.0f), 7.0f);
    EXPECT_EQ(MathUtil::Polynom({1, 1e8f, -1e8f, 0, 0, 0, 0, 0, 0}, 1.0f), 0.0f);
    // The highest power comes first. With x = 10 the coefficients are the digits of the result.
    EXPECT_EQ(MathUtil::Polynom({0, 1, 2, 3, 4, 5, 6, 7, 8}, 10.0f), 12345678.0f);
    EXPECT_EQ(MathUtil::Polynom({2, 0, 0, 0, 0, 0, 0, 0, 0}, 3.0f), 13122.0f);
}
