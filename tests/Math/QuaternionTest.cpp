#include <qlt/Math/Quaternion.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>
#include <type_traits>

using qlt::Quaternion;
using qlt::Vec3;

namespace
{

constexpr float INF = std::numeric_limits<float>::infinity();
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
constexpr float PI = 3.14159265f;

// How the arguments of the free operators are passed is part of the interface.
constexpr Quaternion (*PRODUCT)(const Quaternion&, const Quaternion&) = &qlt::operator*;
constexpr Quaternion (*SCALED)(const Quaternion&, const float&) = &qlt::operator*;
constexpr Quaternion (*SCALED_FROM_LEFT)(const float&, const Quaternion&) = &qlt::operator*;
constexpr Vec3 (*TIMES_VECTOR)(const Quaternion&, const Vec3&) = &qlt::operator*;
constexpr Vec3 (*VECTOR_TIMES)(const Vec3&, const Quaternion&) = &qlt::operator*;
constexpr Quaternion (*SUM)(const Quaternion&, const Quaternion&) = &qlt::operator+;
constexpr Quaternion (*DIFFERENCE)(const Quaternion&, const Quaternion&) = &qlt::operator-;
constexpr Quaternion (*DIVIDED)(const Quaternion&, float) = &qlt::operator/;

using Four = std::array<float, 4>;
using Texts = std::vector<std::string>;

Four Values(const Quaternion& q) { return {q.w(), q.x(), q.y(), q.z()}; }

/// a - b - c - d or a + b + c - d, each step rounded, from the left.
float FromLeft(float sign, float a, float b, float c, float d)
{
    return Minus(Plus(Plus(a, sign * b), sign * c), d);
}

/// The same sum from the right, for which the result may differ.
float FromRight(float sign, float a, float b, float c, float d)
{
    return Plus(a, Plus(sign * b, Minus(sign * c, d)));
}

/// The Hamilton product of the textbook with the sum of each component left to `sum`.
template <typename Sum>
Quaternion Hamilton(const Quaternion& a, const Quaternion& b, Sum sum)
{
    return Quaternion(sum(-1.0f, Times(a.w(), b.w()), Times(a.x(), b.x()), Times(a.y(), b.y()),
                          Times(a.z(), b.z())),
                      sum(1.0f, Times(a.w(), b.x()), Times(a.x(), b.w()), Times(a.y(), b.z()),
                          Times(a.z(), b.y())),
                      sum(1.0f, Times(a.w(), b.y()), Times(a.y(), b.w()), Times(a.z(), b.x()),
                          Times(a.x(), b.z())),
                      sum(1.0f, Times(a.w(), b.z()), Times(a.z(), b.w()), Times(a.x(), b.y()),
                          Times(a.y(), b.x())));
}

} // namespace

TEST(QuaternionTest, MemoryIsTheScalarThenTheVector)
{
    static_assert(sizeof(Quaternion) == 16);
    static_assert(std::is_trivially_copyable_v<Quaternion> && !std::is_polymorphic_v<Quaternion>);
    const Quaternion q(1.0f, 2.0f, 3.0f, 4.0f);
    Four memory{};
    std::memcpy(memory.data(), &q, sizeof q);
    EXPECT_EQ(memory, (Four{1, 2, 3, 4}));
    EXPECT_EQ(Values(Quaternion(1.0f, Vec3(2.0f, 3.0f, 4.0f))), memory);
}

TEST(QuaternionTest, TheDefaultIsZeroAndNotTheIdentity)
{
    // Into memory that is not zero, so that a member left alone would show.
    alignas(Quaternion) unsigned char memory[sizeof(Quaternion)];
    std::memset(memory, 0xFF, sizeof memory);
    EXPECT_EQ(Bits(*new (memory) Quaternion()), (std::array<std::uint32_t, 4>{}));
    EXPECT_EQ(Values(Quaternion::Identity), (Four{1, 0, 0, 0}));
}

TEST(QuaternionTest, ComponentsAreWrittenThroughTheirReferences)
{
    Quaternion q;
    q.w() = 1.0f;
    q.x() = 2.0f;
    q.y() = 3.0f;
    q.z() = 4.0f;
    EXPECT_EQ(Values(q), (Four{1, 2, 3, 4}));
    q.v() = Vec3(5.0f, 6.0f, 7.0f);
    EXPECT_EQ(Values(q), (Four{1, 5, 6, 7}));
    const Quaternion& constant = q;
    EXPECT_EQ(&constant.v(), &q.v());
}

TEST(QuaternionTest, OperatorsWorkComponentByComponent)
{
    const Quaternion a(1.0f, -2.0f, 3.0f, -4.0f);
    const Quaternion b(10.0f, 20.0f, 30.0f, 40.0f);
    Quaternion c = a;
    EXPECT_EQ(Values(SUM(a, b)), (Four{11, 18, 33, 36}));
    EXPECT_EQ(Values(DIFFERENCE(a, b)), (Four{-9, -22, -27, -44}));
    EXPECT_EQ(Values(SCALED(a, 2.0f)), (Four{2, -4, 6, -8}));
    EXPECT_EQ(Values(SCALED_FROM_LEFT(2.0f, a)), (Four{2, -4, 6, -8}));
    EXPECT_EQ(Values(c += b), (Four{11, 18, 33, 36}));
    EXPECT_EQ(Values(c -= a), Values(b));
    EXPECT_EQ(Values(c *= 0.5f), (Four{5, 10, 15, 20}));
}

TEST(QuaternionTest, DivisionMultipliesByTheReciprocal)
{
    const float r = Over(1.0f, 3.0f);
    const Quaternion expected(Times(5.0f, r), Times(7.0f, r), Times(10.0f, r), r);
    ASSERT_NE(Bits(expected.w()), Bits(Over(5.0f, 3.0f)));
    Quaternion divided(5.0f, 7.0f, 10.0f, 1.0f);
    EXPECT_EQ(Bits(DIVIDED(divided, 3.0f)), Bits(expected));
    divided /= 3.0f;
    EXPECT_EQ(Bits(divided), Bits(expected));
}

TEST(QuaternionTest, FreeDivisionByZeroGivesInfinitiesWithoutAnAssertion)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Values(Quaternion(1.0f, -1.0f, 2.0f, -2.0f) / 0.0f), (Four{INF, -INF, INF, -INF}));
    EXPECT_TRUE(recorder.Take().empty());
}

TEST(QuaternionTest, ProductsOfTheUnitsAreHamiltons)
{
    const Quaternion i(0.0f, Vec3::X_AXIS);
    const Quaternion j(0.0f, Vec3::Y_AXIS);
    const Quaternion k(0.0f, Vec3::Z_AXIS);
    EXPECT_EQ(Values(i * j), Values(k));
    EXPECT_EQ(Values(j * k), Values(i));
    EXPECT_EQ(Values(k * i), Values(j));
    EXPECT_EQ(Values(j * i), (Four{0, 0, 0, -1}));
    EXPECT_EQ(Values(i * i), (Four{-1, 0, 0, 0}));
    EXPECT_EQ(Values(Quaternion::Identity * Quaternion(1.0f, 2.0f, 3.0f, 4.0f)),
              (Four{1, 2, 3, 4}));
}

TEST(QuaternionTest, ProductsAreSummedFromTheLeft)
{
    const Quaternion a(54.0f / 7, 99.0f / 7, 47.0f / 7, 9.0f / 7);
    const Quaternion b(32.0f / 7, -88.0f / 7, 71.0f / 7, 1.0f / 7);
    const Quaternion expected = Hamilton(a, b, FromLeft);
    const Quaternion other = Hamilton(a, b, FromRight);
    for (std::size_t i = 0; i < 4; ++i)
    {
        ASSERT_NE(Bits(expected)[i], Bits(other)[i]);
    }
    EXPECT_EQ(Bits(PRODUCT(a, b)), Bits(expected));
}

TEST(QuaternionTest, AProductRotatesByItsRightFactorFirst)
{
    const Quaternion aboutX = Quaternion::RotationQuaternion(PI / 2, Vec3::X_AXIS);
    const Quaternion aboutZ = Quaternion::RotationQuaternion(PI / 2, Vec3::Z_AXIS);
    // About z the x axis becomes the y axis, which about x becomes the z axis.
    const Vec3 turned = Quaternion::Rotate(aboutX * aboutZ, Vec3::X_AXIS);
    EXPECT_NEAR(turned.x(), 0.0f, 1e-6f);
    EXPECT_NEAR(turned.y(), 0.0f, 1e-6f);
    EXPECT_NEAR(turned.z(), 1.0f, 1e-6f);
}

TEST(QuaternionTest, ProductsWithAVectorAreTheVectorPartOnly)
{
    // By hand, i j = k: (1 + 2i + 3j + 4k)(5i + 6j + 7k) = -56 + 2i + 12j + 4k
    // and (5i + 6j + 7k)(1 + 2i + 3j + 4k) = -56 + 8i + 0j + 10k.
    const Quaternion q(1.0f, 2.0f, 3.0f, 4.0f);
    const Vec3 p(5.0f, 6.0f, 7.0f);
    EXPECT_EQ(Bits(TIMES_VECTOR(q, p)), Bits(Vec3(2.0f, 12.0f, 4.0f)));
    EXPECT_EQ(Bits(VECTOR_TIMES(p, q)), Bits(Vec3(8.0f, 0.0f, 10.0f)));
}

TEST(QuaternionTest, TheNormAddsTheScalarLast)
{
    // 2^24 + 1 rounds to 2^24, but 2^24 + 2 is exact.
    EXPECT_EQ(Quaternion(4096.0f, 1.0f, 0.0f, 1.0f).Norm2(), 16777218.0f);
    EXPECT_EQ(Quaternion(1.0f, 4096.0f, 1.0f, 0.0f).Norm2(), 16777216.0f);
    EXPECT_EQ(Quaternion(2.0f, -4.0f, 5.0f, 6.0f).Norm(), 9.0f);
}

TEST(QuaternionTest, NormalizeMultipliesByTheReciprocalOfTheNorm)
{
    Quaternion q(12.0f, 3.0f, 4.0f, 0.0f); // norm 13
    const float r = Over(1.0f, 13.0f);
    ASSERT_NE(Bits(Times(3.0f, r)), Bits(Over(3.0f, 13.0f)));
    q.Normalize();
    EXPECT_EQ(Bits(q), Bits(Quaternion(Times(12.0f, r), Times(3.0f, r), Times(4.0f, r), 0.0f)));
}

TEST(QuaternionTest, NormalizeLeavesWhatIsTooShort)
{
    AssertionRecorder recorder;
    for (const Quaternion& q : {Quaternion(), Quaternion(FLT_EPSILON, 0.0f, 0.0f, 0.0f),
                                Quaternion(1.0f, 0.0f, NOT_A_NUMBER, 0.0f)})
    {
        Quaternion normalized = q;
        normalized.Normalize();
        EXPECT_EQ(Bits(normalized), Bits(q));
        EXPECT_EQ(recorder.TakeTexts(), Texts{"norm > FLT_EPSILON|Math/Quaternion"});
    }
}

TEST(QuaternionTest, ConjugateIsTheInverse)
{
    EXPECT_EQ(Values(Quaternion(2.0f, 0.0f, 0.0f, 0.0f).Conjugate()), (Four{0.5f, 0, 0, 0}));
    const float r = Over(1.0f, 30.0f); // 1 + 4 + 9 + 16
    EXPECT_EQ(Bits(Quaternion(1.0f, 2.0f, -3.0f, 4.0f).Conjugate()),
              Bits(Quaternion(r, Times(-2.0f, r), Times(3.0f, r), Times(-4.0f, r))));
}

TEST(QuaternionTest, ConjugateOfADegenerateQuaternionIsAnUnchangedCopy)
{
    AssertionRecorder recorder;
    // The second one has a norm far above FLT_EPSILON; what counts is its square.
    for (const Quaternion& q : {Quaternion(), Quaternion(1e-4f, 2e-4f, -1e-4f, 1e-4f)})
    {
        EXPECT_EQ(Bits(q.Conjugate()), Bits(q));
        EXPECT_EQ(recorder.TakeTexts(), Texts{"norm2 > FLT_EPSILON|Math/Quaternion"});
    }
}

TEST(QuaternionTest, ConjugateOfNotANumberIsComputed)
{
    AssertionRecorder recorder;
    const Quaternion inverse = Quaternion(NOT_A_NUMBER, 1.0f, 2.0f, 3.0f).Conjugate();
    EXPECT_TRUE(std::isnan(inverse.x()));
    EXPECT_EQ(recorder.TakeTexts(), Texts{"norm2 > FLT_EPSILON|Math/Quaternion"});
}

TEST(QuaternionTest, RotateMultipliesFromTheLeft)
{
    const Quaternion q(54.0f / 7, 99.0f / 7, 47.0f / 7, 9.0f / 7);
    const Vec3 p(0.3f, -1.7f, 2.9f);
    const Quaternion pure(0.0f, p);
    const Quaternion inverse = q.Conjugate();
    const Vec3 expected = Hamilton(Hamilton(q, pure, FromLeft), inverse, FromLeft).v();
    ASSERT_NE(Bits(expected), Bits(Hamilton(q, Hamilton(pure, inverse, FromLeft), FromLeft).v()));
    EXPECT_EQ(Bits(Quaternion::Rotate(q, p)), Bits(expected));
}

TEST(QuaternionTest, RotateByAQuaternionOfAnyNormDoesNotScale)
{
    const Vec3 p(1.0f, -2.0f, 3.0f);
    EXPECT_EQ(Bits(Quaternion::Rotate(Quaternion::Identity * 2.0f, p)), Bits(p));
    EXPECT_NEAR(Quaternion::Rotate(Quaternion(1.0f, 2.0f, 3.0f, 4.0f), p).Length(), p.Length(),
                1e-6f);
}

TEST(QuaternionTest, AQuarterTurnAboutZTakesXToY)
{
    const Quaternion turn = Quaternion::RotationQuaternion(PI / 2, Vec3::Z_AXIS);
    const Vec3 turned = Quaternion::Rotate(turn, Vec3::X_AXIS);
    EXPECT_NEAR(turned.x(), 0.0f, FLT_EPSILON);
    EXPECT_NEAR(turned.y(), 1.0f, FLT_EPSILON);
    EXPECT_EQ(turned.z(), 0.0f);
}

TEST(QuaternionTest, RotationQuaternionHasTheSameBitsOnEverySystem)
{
    // Calculated with 64-bit sine and cosine, each step rounded to a float. The single-precision
    // functions of some systems end in ...C instead of ...D in the first and ...C instead of ...B
    // in the second.
    EXPECT_EQ(Bits(Quaternion::RotationQuaternion(1.09f, Vec3(0.0f, 0.0f, 2.0f))),
              (std::array<std::uint32_t, 4>{0x3F5AE99F, 0, 0, 0x3F04B70D}));
    EXPECT_EQ(Bits(Quaternion::RotationQuaternion(1.69f, Vec3(1.0f, 2.0f, 2.0f))),
              (std::array<std::uint32_t, 4>{0x3F29EA4B, 0x3E7F4EB7, 0x3EFF4EB7, 0x3EFF4EB7}));
    EXPECT_EQ(Bits(Quaternion::RotationQuaternion(-2.5f, Vec3(0.3f, -0.4f, 1.2f))),
              (std::array<std::uint32_t, 4>{0x3EA171EF, 0xBE60409B, 0x3E958067, 0xBF60409B}));
}

TEST(QuaternionTest, ARotationAboutNoAxisIsTheIdentity)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Values(Quaternion::RotationQuaternion(1.0f, Vec3())), (Four{1, 0, 0, 0}));
    EXPECT_EQ(recorder.TakeTexts(), Texts{"length > FLT_EPSILON|Math/Vector"});
}

TEST(QuaternionTest, AHalfTurnAboutNoAxisCannotBeNormalised)
{
    AssertionRecorder recorder;
    // cos(pi / 2) of the float nearest to pi: its distance from pi, halved.
    EXPECT_EQ(Bits(Quaternion::RotationQuaternion(PI, Vec3())),
              (std::array<std::uint32_t, 4>{0xB33BBD2E, 0, 0, 0}));
    EXPECT_EQ(recorder.TakeTexts(),
              (Texts{"length > FLT_EPSILON|Math/Vector", "norm > FLT_EPSILON|Math/Quaternion"}));
}

TEST(QuaternionTest, EngineConversionsPermuteAndNegate)
{
    const Quaternion q(1.0f, 2.0f, 3.0f, 4.0f);
    EXPECT_EQ(Values(Quaternion::ConvertToUnity(q)), (Four{-1, 2, 3, -4}));
    EXPECT_EQ(Values(Quaternion::ConvertToUnreal(q)), (Four{-1, -4, 2, 3}));
}

TEST(QuaternionTest, DivisionByNearlyZeroAssertsAndGoesOn)
{
    AssertionRecorder recorder;
    Quaternion q(1.0f, -1.0f, 2.0f, 0.5f);
    q /= 0.0f;
    EXPECT_EQ(Values(q), (Four{INF, -INF, INF, INF}));
    q /= -FLT_EPSILON;
    EXPECT_EQ(recorder.TakeTexts(), Texts(2, "std::abs(rhs) > FLT_EPSILON|Math/Quaternion"));
    q /= -1.2e-7f;
    EXPECT_TRUE(recorder.Take().empty());
}
