#include <qlt/Sensors/DistortionFunction.h>

#include "Sensors/DistortConstants.h"

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"
#include "fakes/PlainLens.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{

using namespace qlt;
using namespace qlt::DistortConstants;
using Reports = std::vector<std::string>;

/// The shared constants are the process's: each test leaves them as they were.
class DistortionFunctionTest : public testing::Test
{
protected:
    ~DistortionFunctionTest() override { Set(0.0f, Fov(), 64.644f); }

    static float Fov() { return 126.02f; }

    AssertionRecorder assertions;
    DistortionFunction lens;
};

/// A lens that scales by `scale` everywhere, measured for the eye's own field of view and panel.
DistortParams Flat(double scale)
{
    DistortParams params;
    params.radius = {0.0, 0.5, 1.0};
    params.red = params.green = params.blue = {scale, scale, scale};
    params.fovDeg = static_cast<double>(EYE_FOV_RAD) * 57.29577951308232;
    params.widthMm = 62.72;
    return params;
}

} // namespace

TEST_F(DistortionFunctionTest, EqualsThePlainModelToTheLastBit)
{
    lens.Initialize();
    const plain::Lens expected = plain::HeadsetLens();
    std::mt19937 random(11);
    const auto uniform = [&random]
    { return static_cast<float>(random() >> 8) / 8388608.0f - 1.0f; };
    for (int i = 0; i < 50000; ++i)
    {
        const float x = i % 10 == 0 ? 1.5f * uniform() : uniform();
        const float y = uniform();
        for (int eye = 0; eye < 2; ++eye)
        {
            for (int color = 0; color < 3; ++color)
            {
                const plain::Sample s =
                    plain::Distort(expected, x, y, eye, static_cast<std::size_t>(color));
                const Vec3 d = lens.Distortion(Vec2(x, y), static_cast<Params::Eye>(eye),
                                               static_cast<Params::Color>(color));
                ASSERT_EQ(Bits(d), Bits(Vec3(s.u, s.v, s.depth))) << x << " " << y;
            }
        }
    }
}

TEST_F(DistortionFunctionTest, TheLensCentreIsTheMiddleOfTheTextureAndTheEyesAreMirrored)
{
    lens.Initialize();
    for (const auto color : {Params::COLOR_RED, Params::COLOR_GREEN, Params::COLOR_BLUE})
    {
        EXPECT_EQ(Bits(lens.Distortion(Vec2(-0.012436205f, 0), Params::EYE_LEFT, color)),
                  Bits(Vec3(0.5f, 0.5f, 0.0f)));
        EXPECT_EQ(Bits(lens.Distortion(Vec2(0.012436205f, 0), Params::EYE_RIGHT, color)),
                  Bits(Vec3(0.5f, 0.5f, 0.0f)));
        const Vec3 left = lens.Distortion(Vec2(0.3f, -0.6f), Params::EYE_LEFT, color);
        const Vec3 right = lens.Distortion(Vec2(-0.3f, -0.6f), Params::EYE_RIGHT, color);
        EXPECT_NEAR(left.x() + right.x(), 1.0f, 1e-6f);
        EXPECT_EQ(left.y(), right.y());
    }
    // Near the centre, 0.5576 / 1.0414401 of the distance, as a part of the texture's half.
    const Vec3 near =
        lens.Distortion(Vec2(-0.012436205f, 0.02f), Params::EYE_LEFT, Params::COLOR_RED);
    EXPECT_NEAR(near.y(), 0.5f + 0.01f * 0.5576f / 1.0414401f, 1e-5f);
}

TEST_F(DistortionFunctionTest, BlueIsScaledMostAndRedLeast)
{
    lens.Initialize();
    for (float x = 0.05f; x < 0.9f; x += 0.05f)
    {
        const float red = lens.Distortion(Vec2(x, 0), Params::EYE_RIGHT, Params::COLOR_RED).x();
        const float green = lens.Distortion(Vec2(x, 0), Params::EYE_RIGHT, Params::COLOR_GREEN).x();
        const float blue = lens.Distortion(Vec2(x, 0), Params::EYE_RIGHT, Params::COLOR_BLUE).x();
        EXPECT_LT(red, green);
        EXPECT_LT(green, blue);
    }
}

TEST_F(DistortionFunctionTest, TheDepthTellsInsideFromOutside)
{
    lens.Initialize();
    // The edge itself is inside. The radius of a point beside the centre is its distance in x.
    const float inside = LENS_EDGE_RADIUS + LENS_CENTER_OFFSET_X;
    ASSERT_EQ(inside - LENS_CENTER_OFFSET_X, LENS_EDGE_RADIUS);
    const float outside = std::nextafter(inside, 2.0f);
    const auto depth = [this](float x)
    { return lens.Distortion(Vec2(x, 0), Params::EYE_RIGHT, Params::COLOR_RED).z(); };
    EXPECT_EQ(depth(inside), 0.0f);
    EXPECT_EQ(depth(outside), -1.1f);
    const Vec3 corner = lens.Distortion(Vec2(1, 1), Params::EYE_LEFT, Params::COLOR_BLUE);
    EXPECT_EQ(Bits(corner), Bits(Vec3(1.0f, 1.0f, -1.1f))); // limited
}

TEST_F(DistortionFunctionTest, OtherTablesSetTheSharedConstantsForAll)
{
    lens.Initialize();
    DistortionFunction other;
    DistortParams params = Flat(0.5);
    other.Initialize(params);
    EXPECT_NEAR(DISTORT_SCALE, 1.0f, 1e-6f);
    const Vec3 half =
        other.Distortion(Vec2(0.412436205f, 0.5f), Params::EYE_RIGHT, Params::COLOR_GREEN);
    EXPECT_NEAR(half.x(), 0.6f, 1e-6f);
    EXPECT_NEAR(half.y(), 0.625f, 1e-6f);
    // The one with the headset's tables scales by the new constants, too.
    const Vec3 red =
        lens.Distortion(Vec2(-0.012436205f, 0.02f), Params::EYE_LEFT, Params::COLOR_RED);
    EXPECT_NEAR(red.y(), 0.5f + 0.01f * 0.5576f, 1e-5f);
    // A centre half the viewport higher.
    params.offsetYMm = 70.56 / 2;
    other.Initialize(params); // again, without a word
    EXPECT_FLOAT_EQ(DISTORT_OFFSET_Y, 1.0f);
    EXPECT_NEAR(other.Distortion(Vec2(0, 1), Params::EYE_LEFT, Params::COLOR_RED).y(), 0.5f, 1e-6f);
    EXPECT_EQ(assertions.Take(), Reports{});
}

TEST_F(DistortionFunctionTest, BrokenPreconditionsAreReportedAndSurvived)
{
    const std::string eye = "eye >= Params::EYE_BEGIN && eye < Params::EYE_COUNT|Sensors/Params";
    lens.Distortion(Vec2(0, 0), Params::EYE_LEFT, Params::COLOR_RED);
    EXPECT_EQ(assertions.TakeTexts(), Reports{"mIsInitialized|Sensors/Params"});
    lens.Initialize();
    lens.Initialize();
    EXPECT_EQ(assertions.TakeTexts(), Reports{"!mIsInitialized|Sensors/Params"});
    for (const int wrong : {-1, 2, 1000})
    {
        const Vec3 odd =
            lens.Distortion(Vec2(0.2f, 0.3f), static_cast<Params::Eye>(wrong), Params::COLOR_RED);
        EXPECT_EQ(assertions.TakeTexts(), (Reports{eye, eye}));
        const Vec3 left = lens.Distortion(Vec2(0.2f, 0.3f), Params::EYE_LEFT, Params::COLOR_RED);
        EXPECT_EQ(Bits(odd), Bits(left));
    }
    for (const int wrong : {-1, 3})
    {
        const Vec3 none =
            lens.Distortion(Vec2(1, 1), Params::EYE_LEFT, static_cast<Params::Color>(wrong));
        EXPECT_EQ(assertions.TakeTexts(), Reports{"false|Sensors/Params"});
        EXPECT_EQ(Bits(none), Bits(Vec3()));
    }
    DistortParams short1;
    short1.radius = {1.0};
    short1.red = short1.green = short1.blue = {0.5};
    lens.Initialize(short1);
    EXPECT_FALSE(assertions.Take().empty());
    lens.Distortion(Vec2(0.5f, 0.5f), Params::EYE_LEFT, Params::COLOR_BLUE);
}
