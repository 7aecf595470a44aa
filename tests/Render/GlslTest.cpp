// These tests compile the GLSL sources and draw with them. The lens pass of the command draws the
// distortion.
#include "view/GlContext.h"
#include "view/GlProgram.h"
#include "view/LensPass.h"
#include "view/RenderTarget.h"

#include "fakes/PlainLens.h"

#include <qlt/Render/Shaders.h>

#include <gtest/gtest.h>

#include <GL/glew.h>

namespace
{

using qlt::Shaders;

class GlslTest : public testing::Test
{
protected:
    GlslTest() { LoadOpenGl(); }
    ~GlslTest() override { EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR)); }

    GlContext context;
};

/// The middle of a pixel in a row of `count` pixels, from 0 to 1.
float Middle(int index, int count)
{
    return (static_cast<float>(index) + 0.5f) / static_cast<float>(count);
}

/// An image from 0 to 255, different in each channel and smooth enough for interpolation.
double Image(std::size_t channel, float u, float v)
{
    const float waves[][2] = {{2.0f, 2.0f}, {-2.0f, 3.0f}, {3.0f, -2.0f}};
    const float phase = waves[channel][0] * u + waves[channel][1] * v;
    return 127.5 + 127.5 * std::sin(static_cast<double>(phase));
}

void Upload(const RenderTarget& target)
{
    std::vector<unsigned char> pixels = target.Pixels();
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        const auto pixel = static_cast<int>(i / 4);
        const double value = i % 4 == 3
                                 ? 255.0
                                 : Image(i % 4, Middle(pixel % target.Width(), target.Width()),
                                         Middle(pixel / target.Width(), target.Height()));
        pixels[i] = static_cast<unsigned char>(std::lround(value));
    }
    glBindTexture(GL_TEXTURE_2D, target.Texture());
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, target.Width(), target.Height(), GL_RGBA,
                    GL_UNSIGNED_BYTE, pixels.data());
}

} // namespace

TEST_F(GlslTest, ADesktopCompilesTheTextsWithEitherFirstLine)
{
    for (const char* firstLine : {GlProgram::FIRST_LINE, "#define __linux__\n"})
    {
        EXPECT_NO_THROW(GlProgram(Shaders::TextureShaderV(), Shaders::TextureShaderF(), firstLine));
        EXPECT_NO_THROW(GlProgram(Shaders::ObjectShaderV(), Shaders::ObjectShaderF(), firstLine));
    }
}

// Compare every pixel with the plain lens and the formula of the image. Two roundings to eight bits
// and the interpolation of the mesh make errors below 2 of 255. At the edge of the lens the cells
// of the mesh decide which pixels are seen. Nothing is drawn outside the lens.
TEST_F(GlslTest, TheDistortionSamplesEachChannelAtItsOwnCoordinate)
{
    const RenderTarget image(512, 576);
    Upload(image);
    const LensPass pass(41, 47);
    const RenderTarget view(320, 360);
    const plain::Lens lens = plain::HeadsetLens();
    for (const qlt::Params::Eye eye : {qlt::Params::EYE_LEFT, qlt::Params::EYE_RIGHT})
    {
        view.Use();
        glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        pass.Draw(eye, image.Texture());
        const std::vector<unsigned char> pixels = view.Pixels();
        double worst = 0.0;
        for (std::size_t i = 0; i < pixels.size(); ++i)
        {
            const std::size_t channel = i % 4;
            const auto pixel = static_cast<int>(i / 4);
            const float x = 2.0f * Middle(pixel % 320, 320) - 1.0f;
            const float y = 2.0f * Middle(pixel / 320, 360) - 1.0f;
            const float radius = std::hypot(x, y * 1.125f); // about the centre of the viewport
            double expected = channel == 3 ? 255.0 : 0.0;
            if (radius < 0.9f)
            {
                const plain::Sample at = plain::Distort(lens, x, y, eye, channel % 3);
                expected = channel == 3 ? 0.0 : Image(channel, at.u, at.v);
            }
            if (radius < 0.9f || radius > 1.07f)
            {
                worst = std::max(worst, std::abs(pixels[i] - expected));
            }
        }
        EXPECT_LE(worst, 2.0) << "The eye is " << eye;
    }
}
