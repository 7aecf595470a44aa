#include <qlt/Math/Quaternion.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"

#include <gtest/gtest.h>

#include <type_traits>

using qlt::Quaternion;
using qlt::Vec3;
using Four = std::array<float, 4>;
using FourBits = std::array<std::uint32_t, 4>;
using Texts = std::vector<std::string>;

TEST(QuaternionTest, TheDefaultIsZeroAndNotTheIdentity)
{
    static_assert(sizeof(Quaternion) == 16 && std::is_trivially_copyable_v<Quaternion>);
    // Construct it in memory that is not zero, so that an uninitialised member shows.
    Four memory;
    memory.fill(NAN);
    Quaternion& q = *new (memory.data()) Quaternion();
    EXPECT_EQ(memory, Four{});
    EXPECT_EQ(Values(Quaternion::Identity), (Four{1, 0, 0, 0}));
    q = Quaternion(1, Vec3(0, 3, 0));
    q.x() = 2;
    q.z() = 4;
    EXPECT_EQ(memory, (Four{1, 2, 3, 4}));
}

TEST(QuaternionTest, OperatorsWorkComponentByComponent)
{
    // The types of the arguments are part of the interface.
    using Free = Quaternion (*)(const Quaternion&, const Quaternion&);
    constexpr Quaternion (*SCALED)(const Quaternion&, const float&) = &qlt::operator*;
    constexpr Quaternion (*SCALED_FROM_LEFT)(const float&, const Quaternion&) = &qlt::operator*;
    const Quaternion a(1, -2, 3, -4);
    const Quaternion b(10, 20, 30, 40);
    Quaternion c = a;
    EXPECT_EQ(Values(Free(qlt::operator+)(a, b)), (Four{11, 18, 33, 36}));
    EXPECT_EQ(Values(Free(qlt::operator-)(a, b)), (Four{-9, -22, -27, -44}));
    EXPECT_EQ(Values(SCALED(a, 2)), (Four{2, -4, 6, -8}));
    EXPECT_EQ(Values(SCALED_FROM_LEFT(2, a)), (Four{2, -4, 6, -8}));
    EXPECT_EQ(Values(c += b), (Four{11, 18, 33, 36}));
    EXPECT_EQ(Values(c -= a), Values(b));
    EXPECT_EQ(Values(c *= 0.5f), (Four{5, 10, 15, 20}));
    const float third = 1.0f / 3; // a division multiplies by this value
    EXPECT_EQ(Bits(c / 3), Bits(Quaternion(5 * third, 10 * third, 15 * third, 20 * third)));
    EXPECT_EQ(Bits(c /= 3), Bits(Quaternion(5 * third, 10 * third, 15 * third, 20 * third)));
    EXPECT_EQ(Values(Quaternion::ConvertToUnity(b)), (Four{-10, 20, 30, -40}));
    EXPECT_EQ(Values(Quaternion::ConvertToUnreal(b)), (Four{-10, -40, 20, 30}));
}

TEST(QuaternionTest, FreeDivisionByZeroGivesInfinitiesWithoutAnAssertion)
{
    AssertionRecorder recorder;
    Quaternion q(1, -1, 2, -2);
    EXPECT_EQ(Values(q / 0), (Four{INFINITY, -INFINITY, INFINITY, -INFINITY}));
    EXPECT_EQ(recorder.Take(), Texts{});
    q /= 0; // the member, not the free operator
    q /= -FLT_EPSILON;
    EXPECT_EQ(recorder.TakeTexts(), Texts(2, "std::abs(rhs) > FLT_EPSILON|Math/Quaternion"));
    q /= -1.2e-7f;
    EXPECT_EQ(recorder.Take(), Texts{});
}

TEST(QuaternionTest, ProductsWithVectorsAndRotationsComposeFromTheLeft)
{
    // Calculated by hand with i j = k: (1 + 2i + 3j + 4k)(5i + 6j + 7k) = -56 + 2i + 12j + 4k and
    // (5i + 6j + 7k)(1 + 2i + 3j + 4k) = -56 + 8i + 0j + 10k.
    const Quaternion q(1, 2, 3, 4);
    const Vec3 p(5, 6, 7);
    EXPECT_EQ(Values(q * p), (std::array<float, 3>{2, 12, 4}));
    EXPECT_EQ(Values(p * q), (std::array<float, 3>{8, 0, 10}));
    // A turn about z moves the x axis to the y axis. A turn about x then moves it to the z axis.
    const Quaternion aboutX = Quaternion::RotationQuaternion(std::acos(0.0f), Vec3::X_AXIS);
    const Quaternion aboutZ = Quaternion::RotationQuaternion(std::acos(0.0f), Vec3::Z_AXIS);
    const Vec3 turned = Quaternion::Rotate(aboutX * aboutZ * 2, Vec3::X_AXIS);
    EXPECT_LT((turned - Vec3::Z_AXIS).Length(), 1e-6f);
}

// SensorFusionTest.EveryStepAndEveryPredictionHasItsBits compares their other results.
TEST(QuaternionTest, NormalizeLeavesATooShortQuaternionUnchanged)
{
    Quaternion q;
    AssertionRecorder recorder;
    for (const Quaternion& tooShort : {Quaternion(FLT_EPSILON, 0, 0, 0), Quaternion(1, 0, NAN, 0)})
    {
        q = tooShort;
        q.Normalize();
        EXPECT_EQ(Bits(q), Bits(tooShort));
        EXPECT_EQ(recorder.TakeTexts(), Texts{"norm > FLT_EPSILON|Math/Quaternion"});
    }
}

TEST(QuaternionTest, ConjugateIsTheInverse)
{
    const float r = 1.0f / 30; // 1 + 4 + 9 + 16
    EXPECT_EQ(Bits(Quaternion(1, 2, -3, 4).Conjugate()),
              Bits(Quaternion(r, -2 * r, 3 * r, -4 * r)));
    AssertionRecorder recorder;
    EXPECT_TRUE(std::isnan(Quaternion(NAN, 1, 2, 3).Conjugate().x()));
    EXPECT_EQ(recorder.TakeTexts(), Texts{"norm2 > FLT_EPSILON|Math/Quaternion"});
}

TEST(QuaternionTest, ConjugateOfADegenerateQuaternionIsAnUnchangedCopy)
{
    AssertionRecorder recorder;
    // The second one has a norm far above FLT_EPSILON, but its squared norm is too small.
    for (const Quaternion& q : {Quaternion(), Quaternion(1e-4f, 2e-4f, -1e-4f, 1e-4f)})
    {
        EXPECT_EQ(Bits(q.Conjugate()), Bits(q));
        EXPECT_EQ(recorder.TakeTexts(), Texts{"norm2 > FLT_EPSILON|Math/Quaternion"});
    }
}

TEST(QuaternionTest, ARotationAboutAZeroAxisIsReported)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Values(Quaternion::RotationQuaternion(1, Vec3())), (Four{1, 0, 0, 0}));
    EXPECT_EQ(recorder.TakeTexts(), Texts{"length > FLT_EPSILON|Math/Vector"});
    // Half a turn about a zero axis leaves cos(pi / 2), which is half the distance of the float
    // from pi.
    EXPECT_EQ(Bits(Quaternion::RotationQuaternion(3.14159265f, Vec3())),
              (FourBits{0xB33BBD2E, 0, 0, 0}));
    EXPECT_EQ(recorder.TakeTexts(),
              (Texts{"length > FLT_EPSILON|Math/Vector", "norm > FLT_EPSILON|Math/Quaternion"}));
}
