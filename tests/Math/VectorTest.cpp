#include <qlt/Math/Vector.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>
#include <type_traits>

using qlt::Vec2;
using qlt::Vec3;

namespace
{

constexpr float INF = std::numeric_limits<float>::infinity();
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

// Which operators are members and how their arguments are passed is part of the interface.
constexpr Vec3 (Vec3::*NEGATION)() const = &Vec3::operator-;
constexpr Vec3 (Vec3::*UNCHANGED)() const = &Vec3::operator+;
constexpr Vec3 (*SUM)(const Vec3&, const Vec3&) = &qlt::operator+;
constexpr Vec3 (*DIFFERENCE)(const Vec3&, const Vec3&) = &qlt::operator-;
constexpr Vec3 (*SCALED)(const Vec3&, float) = &qlt::operator*;
constexpr Vec3 (*SCALED_FROM_LEFT)(float, const Vec3&) = &qlt::operator*;
constexpr Vec3 (*DIVIDED)(const Vec3&, float) = &qlt::operator/;

std::array<float, 3> Values(const Vec3& v) { return {v.x(), v.y(), v.z()}; }

} // namespace

TEST(VectorTest, VectorsArePackedFloatsInOrder)
{
    static_assert(sizeof(Vec2) == 8 && sizeof(Vec3) == 12);
    static_assert(std::is_trivially_copyable_v<Vec2> && std::is_trivially_copyable_v<Vec3>);
    static_assert(!std::is_polymorphic_v<Vec2> && !std::is_polymorphic_v<Vec3>);
    const Vec2 pair(1.0f, 2.0f);
    const Vec3 vertices[2] = {Vec3(3.0f, 4.0f, 5.0f), Vec3(6.0f, 7.0f, 8.0f)};
    std::array<float, 8> memory{};
    std::memcpy(memory.data(), &pair, sizeof pair);
    std::memcpy(memory.data() + 2, vertices, sizeof vertices);
    EXPECT_EQ(memory, (std::array<float, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(VectorTest, DefaultVectorsAreZero)
{
    // Into memory that is not zero, so that a member left alone would show.
    alignas(Vec3) unsigned char memory[sizeof(Vec2) + sizeof(Vec3)];
    std::memset(memory, 0xFF, sizeof memory);
    const Vec3& v = *new (memory) Vec3();
    const Vec2& pair = *new (memory + sizeof(Vec3)) Vec2();
    EXPECT_EQ(Bits(v), Bits(Vec3(0.0f, 0.0f, 0.0f)));
    EXPECT_EQ(Bits(pair.x()), 0U);
    EXPECT_EQ(Bits(pair.y()), 0U);
}

TEST(VectorTest, TheAxesAreTheUnitVectors)
{
    EXPECT_EQ(Values(Vec3::X_AXIS), (std::array<float, 3>{1, 0, 0}));
    EXPECT_EQ(Values(Vec3::Y_AXIS), (std::array<float, 3>{0, 1, 0}));
    EXPECT_EQ(Values(Vec3::Z_AXIS), (std::array<float, 3>{0, 0, 1}));
}

TEST(VectorTest, ComponentsAreWrittenThroughTheirReferences)
{
    Vec3 v;
    v.x() = 1.0f;
    v.y() = 2.0f;
    v.z() = 3.0f;
    Vec2 pair;
    pair.x() = 4.0f;
    pair.y() = 5.0f;
    EXPECT_EQ(Values(v), (std::array<float, 3>{1, 2, 3}));
    EXPECT_EQ(pair.x(), 4.0f);
    EXPECT_EQ(pair.y(), 5.0f);
}

TEST(VectorTest, OperatorsWorkComponentByComponent)
{
    const Vec3 a(1.0f, -2.0f, 3.0f);
    const Vec3 b(10.0f, 20.0f, 40.0f);
    Vec3 c = a;
    EXPECT_EQ(Values((a.*NEGATION)()), (std::array<float, 3>{-1, 2, -3}));
    EXPECT_EQ(Values((a.*UNCHANGED)()), Values(a));
    EXPECT_EQ(Values(SUM(a, b)), (std::array<float, 3>{11, 18, 43}));
    EXPECT_EQ(Values(DIFFERENCE(a, b)), (std::array<float, 3>{-9, -22, -37}));
    EXPECT_EQ(Values(SCALED(a, 2.0f)), (std::array<float, 3>{2, -4, 6}));
    EXPECT_EQ(Values(SCALED_FROM_LEFT(2.0f, a)), (std::array<float, 3>{2, -4, 6}));
    EXPECT_EQ(Values(c += b), (std::array<float, 3>{11, 18, 43}));
    EXPECT_EQ(Values(c -= a), Values(b));
    EXPECT_EQ(Values(c *= 0.5f), (std::array<float, 3>{5, 10, 20}));
    EXPECT_EQ(&(c *= 2.0f), &c);
    EXPECT_EQ(&(c += a), &c);
    EXPECT_EQ(&(c -= a), &c);
    EXPECT_EQ(&(c /= 2.0f), &c);
}

TEST(VectorTest, DivisionMultipliesByTheReciprocal)
{
    const Vec3 v(5.0f, 7.0f, 10.0f);
    const float r = Over(1.0f, 3.0f);
    const Vec3 expected(Times(5.0f, r), Times(7.0f, r), Times(10.0f, r));
    ASSERT_NE(Bits(expected), Bits(Vec3(Over(5.0f, 3.0f), Over(7.0f, 3.0f), Over(10.0f, 3.0f))));
    Vec3 divided = v;
    divided /= 3.0f;
    EXPECT_EQ(Bits(divided), Bits(expected));
    EXPECT_EQ(Bits(DIVIDED(v, 3.0f)), Bits(expected));
}

TEST(VectorTest, FreeDivisionByZeroGivesInfinitiesWithoutAnAssertion)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Values(Vec3(1.0f, -1.0f, 2.0f) / 0.0f), (std::array<float, 3>{INF, -INF, INF}));
    EXPECT_TRUE(recorder.Take().empty());
}

TEST(VectorTest, DotAddsZToTheSumOfXAndY)
{
    // 10^8 + 1 rounds to 10^8; with z added to x first the 1 would survive.
    EXPECT_EQ(Vec3(1e4f, 1.0f, 1e4f).Dot(Vec3(1e4f, 1.0f, -1e4f)), 0.0f);
    EXPECT_EQ(Vec3(1.0f, 1e4f, 1e4f).Dot(Vec3(1.0f, 1e4f, -1e4f)), 0.0f);
    EXPECT_EQ(Vec3(1e4f, 1e4f, 1.0f).Dot(Vec3(1e4f, -1e4f, 1.0f)), 1.0f);
}

TEST(VectorTest, LengthAddsXAndYBeforeZ)
{
    // 2^24 + 1 rounds to 2^24, but 2^24 + 2 is exact.
    EXPECT_EQ(Vec3(1.0f, 1.0f, 4096.0f).Length2(), 16777218.0f);
    EXPECT_EQ(Vec3(4096.0f, 1.0f, 1.0f).Length2(), 16777216.0f);
    EXPECT_EQ(Vec3(1.0f, 4096.0f, 1.0f).Length2(), 16777216.0f);
    EXPECT_EQ(Vec3(2.0f, -3.0f, 6.0f).Length(), 7.0f);
}

TEST(VectorTest, CrossIsRightHanded)
{
    EXPECT_EQ(Values(Vec3::X_AXIS.Cross(Vec3::Y_AXIS)), Values(Vec3::Z_AXIS));
    // By hand: (2*6 - 3*5, 3*4 - 1*6, 1*5 - 2*4).
    EXPECT_EQ(Values(Vec3(1.0f, 2.0f, 3.0f).Cross(Vec3(4.0f, 5.0f, 6.0f))),
              (std::array<float, 3>{-3, 6, -3}));
}

TEST(VectorTest, CrossRoundsBothProductsBeforeItSubtracts)
{
    // A fused multiply and add would leave the rounding error of one product.
    const float a = 1.0f + FLT_EPSILON;
    const Vec3 v(a, a, a);
    EXPECT_EQ(Bits(v.Cross(v)), Bits(Vec3(0.0f, 0.0f, 0.0f)));
}

TEST(VectorTest, IsZeroLooksAtEachComponentByItself)
{
    const float below = std::nextafterf(FLT_EPSILON, 0.0f);
    EXPECT_TRUE(Vec3(1e-8f, 0.0f, 0.0f).IsZero());
    EXPECT_TRUE(Vec3(below, -below, below).IsZero()); // although it is longer than FLT_EPSILON
    EXPECT_FALSE(Vec3(1.2e-7f, 0.0f, 0.0f).IsZero());
    EXPECT_FALSE(Vec3(FLT_EPSILON, 0.0f, 0.0f).IsZero());
    EXPECT_FALSE(Vec3(0.0f, -FLT_EPSILON, 0.0f).IsZero());
    EXPECT_FALSE(Vec3(0.0f, 0.0f, FLT_EPSILON).IsZero());
    EXPECT_FALSE(Vec3(0.0f, 0.0f, NOT_A_NUMBER).IsZero());
}

TEST(VectorTest, NormalizeMultipliesByTheReciprocalOfTheLength)
{
    Vec3 v(3.0f, 4.0f, 12.0f); // length 13
    const float r = Over(1.0f, 13.0f);
    ASSERT_NE(Bits(Times(3.0f, r)), Bits(Over(3.0f, 13.0f)));
    v.Normalize();
    EXPECT_EQ(Bits(v), Bits(Vec3(Times(3.0f, r), Times(4.0f, r), Times(12.0f, r))));
}

TEST(VectorTest, NormalizeLeavesWhatIsTooShort)
{
    AssertionRecorder recorder;
    for (const Vec3& v : {Vec3(), Vec3(0.0f, FLT_EPSILON, 0.0f), Vec3(-1e-7f, 0.0f, 0.0f),
                          Vec3(NOT_A_NUMBER, 1.0f, 2.0f)})
    {
        Vec3 normalized = v;
        normalized.Normalize();
        EXPECT_EQ(Bits(normalized), Bits(v));
        EXPECT_EQ(recorder.Take().size(), 1U);
    }
}

TEST(VectorTest, NormalizeOfAnOverflowingLengthIsSilent)
{
    AssertionRecorder recorder;
    Vec3 longest(1e20f, -1e20f, 0.0f); // the squares are infinite, the reciprocal is 0
    longest.Normalize();
    EXPECT_EQ(Bits(longest), Bits(Vec3(0.0f, -0.0f, 0.0f)));
    EXPECT_TRUE(recorder.Take().empty());
}

TEST(VectorTest, AngleIsTheDoubleArctangentRoundedOnce)
{
    constexpr std::uint32_t PI = 0x40490FDB;
    EXPECT_EQ(Bits(Vec3(1.0f, 2.0f, 3.0f).Angle(Vec3(1.0f, 2.0f, 3.0f))), 0U);
    EXPECT_EQ(Bits(Vec3(0.0f, 0.0f, 2.0f).Angle(Vec3(0.0f, 0.0f, -0.5f))), PI);
    // The last bits by atan2 of a 64-bit mathematics; atan2f of some systems ends in ...BB and
    // ...41.
    const Vec3 x(1.0f, 0.0f, 0.0f);
    EXPECT_EQ(Bits(x.Angle(Vec3(FromBits(0x3F19999A), 0.1f, 0.0f))), 0x3E291CBCU);
    EXPECT_EQ(Bits(x.Angle(Vec3(FromBits(0x3F666667), 0.0f, -0.1f))), 0x3DE2A040U);
}

TEST(VectorTest, AngleOfNearlyParallelVectorsKeepsItsPrecision)
{
    // An arccosine would give 0 here: the cosine rounds to 1.
    EXPECT_EQ(Vec3::X_AXIS.Angle(Vec3(1.0f, 1e-5f, 0.0f)), 1e-5f);
}

TEST(VectorTest, ProjectTakesThePartAlongTheOtherVector)
{
    const Vec3 v(3.0f, 4.0f, 0.0f);
    EXPECT_EQ(Values(v.Project(Vec3::X_AXIS)), (std::array<float, 3>{3, 0, 0}));
    EXPECT_EQ(Values(v.Project(Vec3(0.0f, -2.0f, 0.0f))), (std::array<float, 3>{0, 4, 0}));
    EXPECT_EQ(Values(v.ProjectOnPlane(Vec3::X_AXIS)), (std::array<float, 3>{0, 4, 0}));
}

TEST(VectorTest, ProjectScalesByTheQuotientOfTheDotProducts)
{
    const Vec3 a(5.0f, 0.0f, 0.0f);
    const Vec3 b(1.0f, 1.0f, 1.0f);
    const float quotient = Over(5.0f, 3.0f); // not 5 times the reciprocal of 3
    ASSERT_NE(Bits(quotient), Bits(Times(5.0f, Over(1.0f, 3.0f))));
    EXPECT_EQ(Bits(a.Project(b)), Bits(Vec3(quotient, quotient, quotient)));
}

TEST(VectorTest, OperationsGoOnAfterAFailedAssertion)
{
    AssertionRecorder recorder;
    Vec3 v(1.0f, -1.0f, 2.0f);
    v /= 0.0f;
    EXPECT_EQ(Values(v), (std::array<float, 3>{INF, -INF, INF}));
    EXPECT_EQ(Bits(Vec3().Angle(Vec3())), 0U); // atan2(0, 0)
    EXPECT_TRUE(std::isnan(Vec3::X_AXIS.Project(Vec3()).x()));
    EXPECT_TRUE(std::isnan(Vec3::X_AXIS.ProjectOnPlane(Vec3()).y()));
}

struct Precondition
{
    const char* name;
    std::function<void()> violate;
    std::vector<std::string> reports;
};

class VectorPreconditionTest : public testing::TestWithParam<Precondition>
{
};

TEST_P(VectorPreconditionTest, IsReportedByItsTextAndFile)
{
    AssertionRecorder recorder;
    GetParam().violate();
    EXPECT_EQ(recorder.TakeTexts(), GetParam().reports);
}

INSTANTIATE_TEST_SUITE_P(
    All, VectorPreconditionTest,
    testing::Values(
        Precondition{
            "DivideByZero", [] { Vec3() /= 0.0f; }, {"std::abs(rhs) > FLT_EPSILON|Math/Vector"}},
        Precondition{"DivideByEpsilon",
                     [] { Vec3() /= -FLT_EPSILON; },
                     {"std::abs(rhs) > FLT_EPSILON|Math/Vector"}},
        Precondition{"DivideByMoreThanEpsilon", [] { Vec3() /= -1.2e-7f; }, {}},
        Precondition{"Normalize", [] { Vec3().Normalize(); }, {"length > FLT_EPSILON|Math/Vector"}},
        Precondition{"AngleOfZero", [] { Vec3().Angle(Vec3::X_AXIS); }, {"!IsZero()|Math/Vector"}},
        Precondition{
            "AngleToZero", [] { Vec3::X_AXIS.Angle(Vec3()); }, {"!rhs.IsZero()|Math/Vector"}},
        Precondition{"AngleOfZeros",
                     [] { Vec3().Angle(Vec3()); },
                     {"!IsZero()|Math/Vector", "!rhs.IsZero()|Math/Vector"}},
        Precondition{
            "Project", [] { Vec3::X_AXIS.Project(Vec3()); }, {"!rhs.IsZero()|Math/Vector"}},
        Precondition{"ProjectOnPlane",
                     [] { Vec3::X_AXIS.ProjectOnPlane(Vec3()); },
                     {"!normal.IsZero()|Math/Vector", "!rhs.IsZero()|Math/Vector"}}),
    [](const auto& test) { return test.param.name; });
