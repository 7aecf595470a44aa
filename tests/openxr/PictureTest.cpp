// Compares each pixel of the panel with the lens model and with a world that is a formula.
#include "GraphicsFixture.h"

#include "Settings/PictureFile.h"

#include <algorithm>

namespace qltxr
{

namespace
{

/// The world: the colour in a direction. It is smooth enough for any sampling.
double World(const Vector& direction, int color)
{
    const double norm = std::hypot(direction[0], direction[1], direction[2]);
    const double x = direction[0] / norm;
    const double y = direction[1] / norm;
    return 0.5 + 0.35 * std::sin(5.0 * x + 1.0 + color) * std::cos(4.0 * y + 0.3 * color);
}

constexpr XrFovf FOV = {-1.07f, 1.07f, 1.07f, -1.07f}; // this is a little more than the lens shows

double Lerp(double a, double b, double part) { return a + (b - a) * part; }

double Encode(double linear)
{
    return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
}

double Decode(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// Returns the largest difference over a picture in 8-bit steps. `expected` gives the colour for
/// the tangents that a pixel shows to an eye. A negative colour is not compared.
template <typename Expected>
double WorstPixel(const Picture& picture, const Expected& expected)
{
    const LensModel lens;
    double worst = 0.0;
    std::array<double, 2> tangents{};
    for (std::uint32_t y = 0; y < picture.height; ++y)
    {
        for (std::uint32_t x = 0; x < picture.width; ++x)
        {
            for (int color = 0; color < 3; ++color)
            {
                if (!lens.Tangents(picture, x, y, color, tangents))
                {
                    continue;
                }
                const double value = expected(tangents, color, x < picture.width / 2 ? 0 : 1);
                const std::size_t place = 3 * (std::size_t{y} * picture.width + x);
                const double shown = picture.rgb[place + static_cast<std::size_t>(color)];
                worst = std::max(worst, value < 0.0 ? 0.0 : std::fabs(shown - 255.0 * value));
            }
        }
    }
    return worst;
}

/// Returns the expectation for a head that has turned since the world was rendered. It excludes the
/// edges of the rendered area.
auto Expected(const Turn& head)
{
    return [=](const std::array<double, 2>& tangents, int color, int)
    {
        const Vector d = head * Vector{tangents[0], tangents[1], -1.0};
        const double off =
            std::max(std::fabs(std::atan2(d[0], -d[2])), std::fabs(std::atan2(d[1], -d[2])));
        const double beyond = off - static_cast<double>(FOV.angleRight);
        return std::fabs(beyond) < 0.01 ? -1.0 : beyond > 0.0 ? 0.0 : World(d, color);
    };
}

} // namespace

class PictureTest : public GraphicsTest
{
protected:
    PictureTest()
    {
        EXPECT_EQ(Begin(), XR_SUCCESS);
        local = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_LOCAL);
        swapchain = MakeSwapchain(1024, 1024);
    }

    /// Renders the view of both eyes for a head that has not turned.
    void RenderWorld()
    {
        const double edge = std::tan(static_cast<double>(FOV.angleRight));
        Paint(swapchain,
              [&](double u, double v) -> std::array<double, 4>
              {
                  const Vector d = {Lerp(-edge, edge, u), Lerp(-edge, edge, v), -1.0};
                  return {World(d, 0), World(d, 1), World(d, 2), 1.0};
              });
        for (XrCompositionLayerProjectionView& view : views)
        {
            view = {XR_TYPE_COMPOSITION_LAYER_PROJECTION_VIEW, nullptr, IDENTITY, FOV,
                    Whole(swapchain)};
        }
        layer = {XR_TYPE_COMPOSITION_LAYER_PROJECTION, nullptr, 0, local, 2, views};
    }

    XrSpace local = XR_NULL_HANDLE;
    ProgramSwapchain swapchain;
    XrCompositionLayerProjectionView views[2] = {};
    XrCompositionLayerProjection layer = {};
};

TEST_F(PictureTest, AStillWorldIsAsThePlainLensShowsIt)
{
    RenderWorld();
    const Picture picture = Show({Header(layer)});
    const double worst = WorstPixel(picture, Expected({}));
    RecordProperty("worst_pixel", std::to_string(worst));
    EXPECT_LE(worst, 2.0);
    EXPECT_EQ(picture.rgb[0] + picture.rgb[1] + picture.rgb[2], 0) << "outside of the lens";
    if (const char* file = std::getenv("QLT_KEEP_PICTURE"))
    {
        WritePicture(file, picture);
    }
}

TEST_F(PictureTest, AFrameIsTurnedToWhereTheHeadIsNow)
{
    RenderWorld();
    head->Set(TurnLeft(5.0));
    const double worst = WorstPixel(Show({Header(layer)}), Expected(TurnLeft(5.0)));
    RecordProperty("worst_pixel", std::to_string(worst));
    EXPECT_LE(worst, 4.0);

    // The head has also rolled and pitched, by more than the lens hides. The picture is black where
    // nothing was rendered.
    const double s = std::sin(0.2);
    const Turn far = TurnLeft(-20.0) * Turn{std::cos(0.2), s * 0.6, 0.0, s * 0.8};
    head->Set(far);
    const Picture picture = Show({Header(layer)});
    EXPECT_LE(WorstPixel(picture, Expected(far)), 4.0);
    if (const char* file = std::getenv("QLT_KEEP_PICTURE"))
    {
        WritePicture(file, picture);
    }

    // A layer in the space of the head does not move.
    layer.space = ReferenceSpace(XR_REFERENCE_SPACE_TYPE_VIEW);
    EXPECT_LE(WorstPixel(Show({Header(layer)}), Expected({})), 2.0);
}

// The quad is 2 m in front of the origin of LOCAL. It is 1 m wide and 0.6 m high, and it lies over
// the world.
TEST_F(PictureTest, QuadsLieInTheWorldAndAreBlendedInLinearLight)
{
    RenderWorld();
    const ProgramSwapchain image = MakeSwapchain(64, 64, GL_RGBA8);
    Paint(image, [](double, double) { return std::array<double, 4>{0.2, 0.4, 0.0, 0.4}; });
    XrCompositionLayerQuad quad{
        XR_TYPE_COMPOSITION_LAYER_QUAD, nullptr,     0, local, XR_EYE_VISIBILITY_BOTH, Whole(image),
        {{0, 0, 0, 1}, {0, 0, -2}},     {1.0f, 0.6f}};
    const auto show = [&](XrCompositionLayerFlags flags, XrEyeVisibility eyes)
    {
        quad.layerFlags = flags;
        quad.eyeVisibility = eyes;
        return Show({Header(layer), Header(quad)});
    };
    const auto expected = [](const std::array<double, 3>& light, double cover, bool rightOnly)
    {
        return [=](const std::array<double, 2>& t, int color, int eye)
        {
            const double eyeX = (eye == 0 ? -0.5 : 0.5) * 0.0625;
            const double inX = 0.5 - std::fabs(eyeX + 2.0 * t[0]);
            const double inY = 0.3 - std::fabs(2.0 * t[1]);
            if (std::min(std::fabs(inX), std::fabs(inY)) < 0.02)
            {
                return -1.0;
            }
            const double below = World({t[0], t[1], -1.0}, color);
            const bool isOn = inX > 0.0 && inY > 0.0 && !(rightOnly && eye == 0);
            return isOn ? Encode(light[static_cast<std::size_t>(color)] +
                                 (1.0 - cover) * Decode(below))
                        : below;
        };
    };
    constexpr XrCompositionLayerFlags ALPHA = XR_COMPOSITION_LAYER_BLEND_TEXTURE_SOURCE_ALPHA_BIT;
    constexpr XrCompositionLayerFlags STRAIGHT = XR_COMPOSITION_LAYER_UNPREMULTIPLIED_ALPHA_BIT;
    EXPECT_LE(WorstPixel(show(0, XR_EYE_VISIBILITY_BOTH), expected({0.2, 0.4, 0.0}, 1.0, false)),
              2.0);
    EXPECT_LE(
        WorstPixel(show(ALPHA, XR_EYE_VISIBILITY_RIGHT), expected({0.2, 0.4, 0.0}, 0.4, true)),
        3.0);
    EXPECT_LE(WorstPixel(show(ALPHA | STRAIGHT, XR_EYE_VISIBILITY_BOTH),
                         expected({0.08, 0.16, 0.0}, 0.4, false)),
              3.0);
}

// The layer shows a part of one image of an array. The pixels around this part have another colour
// and must not be visible.
TEST_F(PictureTest, PartsOfArraysAndEveryFormatAreShownAsTheyAre)
{
    const std::pair<std::int64_t, std::array<int, 3>> formats[] = {
        {GL_SRGB8_ALPHA8, {128, 64, 0}},
        {GL_RGBA16F, {188, 137, 0}}, // these are 0.502 and 0.251 of the light, encoded
        {GL_RGB10_A2, {188, 137, 0}},
        {GL_RGBA8, {188, 137, 0}}};
    for (const auto& [format, expected] : formats)
    {
        const ProgramSwapchain image = MakeSwapchain(64, 64, format, 3);
        std::vector<std::uint8_t> part;
        for (int i = 0; i < 16 * 16; ++i)
        {
            part.insert(part.end(), {128, 64, 0, 255});
        }
        const std::vector<std::uint8_t> other(64 * 64 * 4, 255);
        program.gl.BindTexture(GL_TEXTURE_2D_ARRAY, Acquire(image));
        program.gl.TexSubImage3D(GL_TEXTURE_2D_ARRAY, 0, 0, 0, 1, 64, 64, 1, GL_RGBA,
                                 GL_UNSIGNED_BYTE, other.data());
        program.gl.TexSubImage3D(GL_TEXTURE_2D_ARRAY, 0, 40, 8, 1, 16, 16, 1, GL_RGBA,
                                 GL_UNSIGNED_BYTE, part.data());
        Release(image);
        const XrCompositionLayerQuad quad{XR_TYPE_COMPOSITION_LAYER_QUAD,
                                          nullptr,
                                          0,
                                          local,
                                          XR_EYE_VISIBILITY_BOTH,
                                          {image.handle, {{40, 8}, {16, 16}}, 1},
                                          {{0, 0, 0, 1}, {0, 0, -1}},
                                          {1.0f, 1.0f}};
        const Picture picture = Show({Header(quad)});
        const std::size_t middle =
            3 * (std::size_t{picture.height / 2} * picture.width + picture.width / 4);
        for (std::size_t color = 0; color < 3; ++color)
        {
            EXPECT_NEAR(picture.rgb[middle + color], expected[color], 1) << format;
        }
        std::size_t blue = 0;
        for (std::size_t i = 2; i < picture.rgb.size(); i += 3)
        {
            blue += picture.rgb[i] > 0 ? 1 : 0;
        }
        EXPECT_EQ(blue, 0u) << "the white around the part bleeds in";
        EXPECT_EQ(DestroySwapchain(image.handle), XR_SUCCESS);
    }
}

} // namespace qltxr
