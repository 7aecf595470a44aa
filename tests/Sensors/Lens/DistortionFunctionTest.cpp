#include <qlt/Sensors/DistortionFunction.h>

#include "Sensors/Lens/DistortConstants.h"

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

/// Each test restores the constants that all lenses of the process share.
class DistortionFunctionTest : public testing::Test
{
protected:
    ~DistortionFunctionTest() override { SetForAllLenses(0.0f, 126.02f, 64.644f); }

    /// Eyes and colours are numbers here, because invalid ones are tested, too.
    Vec3 At(float x, float y, int eye, int color = Params::COLOR_RED)
    {
        return lens.Distortion(Vec2(x, y), static_cast<Params::Eye>(eye),
                               static_cast<Params::Color>(color));
    }

    AssertionRecorder assertions;
    DistortionFunction lens;
};

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
        for (int k = 0; k < 6; ++k)
        {
            const plain::Sample s =
                plain::Distort(expected, x, y, k / 3, static_cast<std::size_t>(k % 3));
            ASSERT_EQ(Bits(At(x, y, k / 3, k % 3)), Bits(Vec3(s.u, s.v, s.depth))) << x << " " << y;
        }
    }
}

TEST_F(DistortionFunctionTest, OnlyPointsOutsideTheLensHaveTheOutsideDepth)
{
    lens.Initialize();
    // The edge belongs to the lens. For a point at the height of the centre, the radius is its
    // distance in x.
    const float inside = LENS_EDGE_RADIUS + LENS_CENTER_OFFSET_X;
    ASSERT_EQ(inside - LENS_CENTER_OFFSET_X, LENS_EDGE_RADIUS);
    EXPECT_EQ(At(inside, 0, Params::EYE_RIGHT).z(), 0.0f);
    EXPECT_EQ(At(std::nextafter(inside, 2.0f), 0, Params::EYE_RIGHT).z(), -1.1f);
    EXPECT_EQ(Bits(At(1, 1, Params::EYE_LEFT, Params::COLOR_BLUE)),
              Bits(Vec3(1, 1, -1.1f))); // the coordinate is limited to 0 and 1
}

TEST_F(DistortionFunctionTest, OtherTablesSetTheSharedConstantsForAllLenses)
{
    lens.Initialize();
    DistortionFunction other;
    // These tables scale each colour by one factor everywhere. They were measured for the eye's own
    // field of view and panel.
    DistortParams params;
    params.radius = {0.0, 0.5, 1.0};
    params.red = {0.25, 0.25, 0.25};
    params.green = {0.5, 0.5, 0.5};
    params.blue = {0.75, 0.75, 0.75};
    params.fovDeg = static_cast<double>(EYE_FOV_RAD) * 57.29577951308232;
    params.widthMm = 62.72;
    other.Initialize(params);
    EXPECT_NEAR(DISTORT_SCALE, 1.0f, 1e-6f);
    for (const auto& [color, factor] : {std::pair(Params::COLOR_RED, 0.25f),
                                        {Params::COLOR_GREEN, 0.5f},
                                        {Params::COLOR_BLUE, 0.75f}})
    {
        const Vec3 at = other.Distortion(Vec2(0.412436205f, 0.5f), Params::EYE_RIGHT, color);
        EXPECT_NEAR(at.x(), 0.5f + 0.5f * 0.4f * factor, 1e-6f);
        EXPECT_NEAR(at.y(), 0.5f + 0.5f * 0.5f * factor, 1e-6f);
    }
    // The lens with the headset's tables uses the new scale as well.
    EXPECT_NEAR(At(-0.012436205f, 0.02f, Params::EYE_LEFT).y(), 0.5f + 0.01f * 0.5576f, 1e-5f);
    // A second initialisation is allowed. It moves the centre up by half the viewport.
    params.offsetYMm = 70.56 / 2;
    other.Initialize(params);
    EXPECT_FLOAT_EQ(DISTORT_OFFSET_Y, 1.0f);
    EXPECT_NEAR(other.Distortion(Vec2(0, 1), Params::EYE_LEFT, Params::COLOR_RED).y(), 0.5f, 1e-6f);
    EXPECT_EQ(assertions.Take(), Reports{});
}

TEST_F(DistortionFunctionTest, BrokenPreconditionsAreReportedAndSurvived)
{
    const std::string eye = "eye >= Params::EYE_BEGIN && eye < Params::EYE_COUNT|Sensors/Params";
    At(0, 0, Params::EYE_LEFT);
    EXPECT_EQ(assertions.TakeTexts(), Reports{"mIsInitialized|Sensors/Params"});
    lens.Initialize();
    lens.Initialize();
    EXPECT_EQ(assertions.TakeTexts(), Reports{"!mIsInitialized|Sensors/Params"});
    for (const int wrong : {-1, 2, 1000})
    {
        const Vec3 odd = At(0.2f, 0.3f, wrong);
        EXPECT_EQ(assertions.TakeTexts(), (Reports{eye, eye}));
        EXPECT_EQ(Bits(odd), Bits(At(0.2f, 0.3f, Params::EYE_LEFT)));
    }
    for (const int wrong : {-1, 3})
    {
        EXPECT_EQ(Bits(At(1, 1, Params::EYE_LEFT, wrong)), Bits(Vec3()));
        EXPECT_EQ(assertions.TakeTexts(), Reports{"false|Sensors/Params"});
    }
    DistortParams onePoint;
    onePoint.radius = {1.0};
    onePoint.red = {0.5};
    onePoint.green = {0.5};
    onePoint.blue = {0.5};
    lens.Initialize(onePoint);
    EXPECT_FALSE(assertions.Take().empty());
    At(0.5f, 0.5f, Params::EYE_LEFT, Params::COLOR_BLUE);
}
