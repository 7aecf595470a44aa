#include <qlt/Math/Quaternion.h>

#include "Math/FloatMath.h"

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace
{

using qlt::Quaternion;
using qlt::Vec3;
using Reports = std::vector<std::string>;

void ExpectQuaternion(const Quaternion& q, float w, float x, float y, float z)
{
    EXPECT_EQ(q.w(), w);
    EXPECT_EQ(q.x(), x);
    EXPECT_EQ(q.y(), y);
    EXPECT_EQ(q.z(), z);
}

void ExpectVector(const Vec3& v, float x, float y, float z, float tolerance)
{
    EXPECT_NEAR(v.x(), x, tolerance);
    EXPECT_NEAR(v.y(), y, tolerance);
    EXPECT_NEAR(v.z(), z, tolerance);
}

std::uint32_t Bits(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

} // namespace

TEST(QuaternionTest, IsFourFloatsWithTheScalarFirstAndZeroByDefault)
{
    static_assert(sizeof(Quaternion) == 16);
    const Quaternion q(1, 2, 3, 4);
    float floats[4];
    std::memcpy(floats, &q, sizeof floats);
    EXPECT_EQ(floats[0] + 10 * floats[1] + 100 * floats[2] + 1000 * floats[3], 4321.0f);
    ExpectQuaternion(Quaternion(), 0, 0, 0, 0);
    ExpectQuaternion(Quaternion::Identity, 1, 0, 0, 0);
    ExpectQuaternion(Quaternion(5, Vec3(6, 7, 8)), 5, 6, 7, 8);
}

TEST(QuaternionTest, ComponentsAreReadAndWritten)
{
    Quaternion q;
    q.w() = 1;
    q.x() = 2;
    q.v().y() = 3;
    q.z() = 4;
    ExpectQuaternion(q, 1, 2, 3, 4);
    EXPECT_EQ(q.Norm2(), 30.0f);
    EXPECT_EQ(Quaternion(1, 2, 2, 4).Norm(), 5.0f);
}

// i j = k and the like, and one product by hand.
TEST(QuaternionTest, ProductsAreHamiltons)
{
    const Quaternion i(0, 1, 0, 0);
    const Quaternion j(0, 0, 1, 0);
    const Quaternion k(0, 0, 0, 1);
    ExpectQuaternion(i * j, 0, 0, 0, 1);
    ExpectQuaternion(j * k, 0, 1, 0, 0);
    ExpectQuaternion(k * i, 0, 0, 1, 0);
    ExpectQuaternion(Quaternion(1, 2, 3, 4) * Quaternion(5, 6, 7, 8), -60, 12, 30, 24);
    ExpectQuaternion(Quaternion::Identity * Quaternion(1, 2, 3, 4), 1, 2, 3, 4);
}

TEST(QuaternionTest, AVectorCountsAsAPureQuaternion)
{
    const Quaternion q(1, 2, 3, 4);
    const Vec3 p(6, 7, 8);
    ExpectVector(q * p, 2, 15, 4, 0); // 1 (6, 7, 8) + (2, 3, 4) x (6, 7, 8)
    ExpectVector(p * q, 10, -1, 12, 0);
}

TEST(QuaternionTest, OperatorsWorkByComponent)
{
    Quaternion q(1, 2, 3, 4);
    const Quaternion r(8, 7, 6, 5);
    ExpectQuaternion(q + r, 9, 9, 9, 9);
    ExpectQuaternion(q - r, -7, -5, -3, -1);
    ExpectQuaternion(q * 2.0f, 2, 4, 6, 8);
    ExpectQuaternion(2.0f * q, 2, 4, 6, 8);
    ExpectQuaternion(q / 2.0f, 0.5f, 1, 1.5f, 2);
    ExpectQuaternion(q += r, 9, 9, 9, 9);
    ExpectQuaternion(q -= r, 1, 2, 3, 4);
    ExpectQuaternion(q *= 4.0f, 4, 8, 12, 16);
    ExpectQuaternion(q /= 2.0f, 2, 4, 6, 8);
}

TEST(QuaternionTest, OnlyTheAssigningDivisionAssertsItsDivisor)
{
    AssertionRecorder assertions;
    EXPECT_TRUE(std::isinf((Quaternion::Identity / 0.0f).w()));
    EXPECT_EQ(assertions.Take(), Reports{});
    Quaternion q = Quaternion::Identity;
    q /= 0.0f;
    EXPECT_TRUE(std::isinf(q.w()));
    EXPECT_EQ(assertions.TakeTexts(), Reports{"std::abs(rhs) > FLT_EPSILON|Math/Quaternion"});
}

TEST(QuaternionTest, NormalizeLeavesWhatHasNoNorm)
{
    AssertionRecorder assertions;
    Quaternion q(0, 3, 0, 4);
    q.Normalize();
    ExpectQuaternion(q, 0, 3 * (1.0f / 5.0f), 0, 4 * (1.0f / 5.0f));
    Quaternion zero;
    zero.Normalize();
    ExpectQuaternion(zero, 0, 0, 0, 0);
    EXPECT_EQ(assertions.TakeTexts(), Reports{"norm > FLT_EPSILON|Math/Quaternion"});
}

TEST(QuaternionTest, TheConjugateIsTheInverse)
{
    AssertionRecorder assertions;
    ExpectQuaternion(Quaternion(2, 0, 0, 0).Conjugate(), 0.5f, 0, 0, 0);
    ExpectQuaternion(Quaternion(0, 0, 2, 0).Conjugate(), 0, 0, -0.5f, 0);
    EXPECT_EQ(assertions.Take(), Reports{});
    ExpectQuaternion(Quaternion().Conjugate(), 0, 0, 0, 0);
    // Its norm is above the tolerance, but its square is not: unchanged, not even conjugated.
    ExpectQuaternion(Quaternion(0, 1e-4f, 0, 0).Conjugate(), 0, 1e-4f, 0, 0);
    const std::string report = "norm2 > FLT_EPSILON|Math/Quaternion";
    EXPECT_EQ(assertions.TakeTexts(), (Reports{report, report}));
}

TEST(QuaternionTest, RotatesWithoutScaling)
{
    const float quarter = 1.57079633f;
    const Quaternion aboutZ = Quaternion::RotationQuaternion(quarter, Vec3(0, 0, 9));
    ExpectVector(Quaternion::Rotate(aboutZ, Vec3::X_AXIS), 0, 1, 0, 1e-6f);
    ExpectVector(Quaternion::Rotate(aboutZ * 3.0f, Vec3::X_AXIS), 0, 1, 0, 1e-6f);
    ExpectVector(Quaternion::Rotate(2.0f * Quaternion::Identity, Vec3(1, 2, 3)), 1, 2, 3, 0);
    // Products rotate by the right one first: x to y about z, then y to z about x.
    const Quaternion aboutX = Quaternion::RotationQuaternion(quarter, Vec3::X_AXIS);
    ExpectVector(Quaternion::Rotate(aboutX * aboutZ, Vec3::X_AXIS), 0, 0, 1, 1e-6f);
}

TEST(QuaternionTest, ARotationAboutNothingIsReportedAndNone)
{
    AssertionRecorder assertions;
    ExpectQuaternion(Quaternion::RotationQuaternion(1.0f, Vec3()), 1, 0, 0, 0);
    EXPECT_EQ(assertions.TakeTexts(), Reports{"length > FLT_EPSILON|Math/Vector"});
}

TEST(QuaternionTest, ConvertsToTheEnginesAxes)
{
    ExpectQuaternion(Quaternion::ConvertToUnity(Quaternion(1, 2, 3, 4)), -1, 2, 3, -4);
    ExpectQuaternion(Quaternion::ConvertToUnreal(Quaternion(1, 2, 3, 4)), -1, -4, 2, 3);
}

// Inputs for which one C library's single-precision functions are a unit off in the last place.
TEST(FloatMathTest, IsTheDoubleFunctionRoundedOnce)
{
    EXPECT_EQ(Bits(qlt::Sin(0x1.666674p-1f)), 0x3F24EB78u);
    EXPECT_EQ(Bits(qlt::Cos(0x1.99a65ep-3f)), 0x3F7AE553u);
    EXPECT_EQ(Bits(qlt::Tan(0x1.1999a8p+0f)), 0x3FFB7D62u);
    EXPECT_EQ(Bits(qlt::Acos(0x1.000004p-2f)), 0x3FA8B807u);
    EXPECT_EQ(Bits(qlt::Atan(0x1.001b5ep-1f)), 0x3EED791Du);
    EXPECT_EQ(Bits(qlt::Atan2(1.0f, -1.0f)), 0x4016CBE4u);
}
