#include <qlt/Math/Vector.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"

#include <gtest/gtest.h>

#include <type_traits>

using qlt::Vec2;
using qlt::Vec3;
using Three = std::array<float, 3>;
using Texts = std::vector<std::string>;

TEST(VectorTest, VectorsArePackedFloatsAndZeroByDefault)
{
    static_assert(sizeof(Vec2) == 8 && sizeof(Vec3) == 12);
    static_assert(std::is_trivially_copyable_v<Vec2> && std::is_trivially_copyable_v<Vec3>);
    // Construct it in memory that is not zero, so that an uninitialised member shows.
    std::array<float, 5> memory;
    memory.fill(NAN);
    Vec3& v = *new (memory.data()) Vec3();
    Vec2& pair = *new (memory.data() + 3) Vec2();
    EXPECT_EQ(memory, (std::array<float, 5>{}));
    v = Vec3(1, 2, 3);
    pair = Vec2(4, 0);
    pair.y() = 5;
    EXPECT_EQ(memory, (std::array<float, 5>{1, 2, 3, 4, 5}));
}

TEST(VectorTest, OperatorsWorkComponentByComponent)
{
    // The interface fixes the members and the types of their arguments.
    using Member = Vec3 (Vec3::*)() const;
    using Free = Vec3 (*)(const Vec3&, const Vec3&);
    const Vec3 a(1, -2, 3);
    const Vec3 b(10, 20, 40);
    Vec3 c = a;
    EXPECT_EQ(Values((a.*Member(&Vec3::operator-))()), (Three{-1, 2, -3}));
    EXPECT_EQ(Values((a.*Member(&Vec3::operator+))()), Values(a));
    EXPECT_EQ(Values(Free(qlt::operator+)(a, b)), (Three{11, 18, 43}));
    EXPECT_EQ(Values(Free(qlt::operator-)(a, b)), (Three{-9, -22, -37}));
    EXPECT_EQ(Values(static_cast<Vec3 (*)(const Vec3&, float)>(qlt::operator*)(a, 2)),
              (Three{2, -4, 6}));
    EXPECT_EQ(Values(2 * a), (Three{2, -4, 6}));
    EXPECT_EQ(Values(c += b), (Three{11, 18, 43}));
    EXPECT_EQ(Values(c -= a), Values(b));
    EXPECT_EQ(&(c *= 0.5f), &c);
    EXPECT_EQ(Values(c), (Three{5, 10, 20}));
}

TEST(VectorTest, DivisionMultipliesByTheReciprocal)
{
    const float r = 1.0f / 3;
    ASSERT_NE(Bits(5 * r), Bits(5.0f / 3));
    Vec3 divided(5, 7, 10);
    EXPECT_EQ(Bits(divided / 3), Bits(Vec3(5 * r, 7 * r, 10 * r)));
    divided /= 3;
    EXPECT_EQ(Bits(divided), Bits(Vec3(5 * r, 7 * r, 10 * r)));
}

TEST(VectorTest, FreeDivisionByZeroGivesInfinitiesWithoutAnAssertion)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Values(Vec3(1, -1, 2) / 0), (Three{INFINITY, -INFINITY, INFINITY}));
    EXPECT_EQ(recorder.Take(), Texts{});
}

TEST(VectorTest, SumsAndProductsAreRoundedInOrder)
{
    // 10^8 + 1 rounds to 10^8. If z were added to x first, the 1 would remain.
    EXPECT_EQ(Vec3(1e4f, 1, 1e4f).Dot({1e4f, 1, -1e4f}), 0.0f);
    EXPECT_EQ(Vec3(1, 1e4f, 1e4f).Dot({1, 1e4f, -1e4f}), 0.0f);
    EXPECT_EQ(Vec3(1e4f, 1e4f, 1).Dot({1e4f, -1e4f, 1}), 1.0f);
    // 2^24 + 1 rounds to 2^24, but 2^24 + 2 is exact.
    EXPECT_EQ(Vec3(1, 1, 4096).Length2(), 16777218.0f);
    EXPECT_EQ(Vec3(4096, 1, 1).Length2(), 16777216.0f);
    EXPECT_EQ(Vec3(2, -3, 6).Length(), 7.0f);
    // Calculated by hand: (2*6 - 3*5, 3*4 - 1*6, 1*5 - 2*4).
    EXPECT_EQ(Values(Vec3(1, 2, 3).Cross({4, 5, 6})), (Three{-3, 6, -3}));
    EXPECT_EQ(Values(Vec3::X_AXIS.Cross(Vec3::Y_AXIS)), Values(Vec3::Z_AXIS));
    // A fused multiply-add would leave the rounding error of one product.
    const float a = 1 + FLT_EPSILON;
    EXPECT_EQ(Bits(Vec3(a, a, a).Cross({a, a, a})), Bits(Vec3()));
}

TEST(VectorTest, NormalizeMultipliesByTheReciprocalAndLeavesATooShortVectorUnchanged)
{
    AssertionRecorder recorder;
    Vec3 v(3, 4, 12); // length 13
    const float r = 1.0f / 13;
    ASSERT_NE(Bits(3 * r), Bits(3.0f / 13));
    v.Normalize();
    EXPECT_EQ(Bits(v), Bits(Vec3(3 * r, 4 * r, 12 * r)));
    v = Vec3(1e20f, -1e20f, 0); // the squares are infinite, the reciprocal is 0
    v.Normalize();
    EXPECT_EQ(Bits(v), Bits(Vec3(0, -0.0f, 0)));
    EXPECT_EQ(recorder.Take(), Texts{});
    for (const Vec3& tooShort : {Vec3(), Vec3(0, FLT_EPSILON, 0), Vec3(NAN, 1, 2)})
    {
        v = tooShort;
        v.Normalize();
        EXPECT_EQ(Bits(v), Bits(tooShort));
        EXPECT_EQ(recorder.TakeTexts(), Texts{"length > FLT_EPSILON|Math/Vector"});
    }
}

TEST(VectorTest, AnglesAndProjectionsAreRoundedOnce)
{
    EXPECT_EQ(Bits(Vec3(0, 0, 2).Angle({0, 0, -0.5f})), 0x40490FDBU); // pi
    // The last bits are those of atan2 in double precision. With atan2f of some systems the last
    // digits are BB and 41.
    EXPECT_EQ(Bits(Vec3::X_AXIS.Angle({0.6f, 0.1f, 0})), 0x3E291CBCU);
    EXPECT_EQ(Bits(Vec3::X_AXIS.Angle({0.90000004f, 0, -0.1f})), 0x3DE2A040U);
    // An arccosine would give 0 here, because the cosine rounds to 1.
    EXPECT_EQ(Vec3::X_AXIS.Angle({1, 1e-5f, 0}), 1e-5f);
    EXPECT_EQ(Values(Vec3(3, 4, 0).Project({0, -2, 0})), (Three{0, 4, 0}));
    EXPECT_EQ(Values(Vec3(3, 4, 0).ProjectOnPlane(Vec3::X_AXIS)), (Three{0, 4, 0}));
    const float quotient = 5.0f / 3; // the result must not be 5 times the reciprocal of 3
    ASSERT_NE(Bits(quotient), Bits(5 * (1.0f / 3)));
    EXPECT_EQ(Bits(Vec3(5, 0, 0).Project({1, 1, 1}).y()), Bits(quotient));
}

TEST(VectorTest, OperationsGoOnAfterAFailedAssertion)
{
    AssertionRecorder recorder;
    Vec3 v(1, -1, 2);
    v /= 0;
    EXPECT_EQ(Values(v), (Three{INFINITY, -INFINITY, INFINITY}));
    v /= -FLT_EPSILON;
    EXPECT_EQ(recorder.TakeTexts(), Texts(2, "std::abs(rhs) > FLT_EPSILON|Math/Vector"));
    v /= -1.2e-7f; // this is long enough
    EXPECT_EQ(Bits(Vec3().Angle(Vec3())), 0U);
    EXPECT_TRUE(std::isnan(Vec3::X_AXIS.Project(Vec3()).x()));
    EXPECT_TRUE(std::isnan(Vec3::X_AXIS.ProjectOnPlane(Vec3()).y()));
    EXPECT_EQ(
        recorder.TakeTexts(),
        (Texts{"!IsZero()|Math/Vector", "!rhs.IsZero()|Math/Vector", "!rhs.IsZero()|Math/Vector",
               "!normal.IsZero()|Math/Vector", "!rhs.IsZero()|Math/Vector"}));
    const float below = std::nextafterf(FLT_EPSILON, 0);
    // The vector is longer than FLT_EPSILON, but each component is shorter.
    EXPECT_TRUE(Vec3(below, -below, below).IsZero());
    EXPECT_FALSE(Vec3(FLT_EPSILON, 0, 0).IsZero());
    EXPECT_FALSE(Vec3(0, -FLT_EPSILON, 0).IsZero());
    EXPECT_FALSE(Vec3(0, 0, NAN).IsZero());
}
