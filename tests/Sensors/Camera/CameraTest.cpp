// Tests of the camera with real OpenGL and a scripted device.
#include <qlt/Sensors/Camera.h>
#include <qlt/qlt_c_api.h>

#include "view/GlContext.h"

#include "fakes/AssertionRecorder.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <new>
#include <thread>

#include <GL/glew.h>

namespace
{

using qlt::Camera;
using Bytes = ScriptedUsbHost::Bytes;

constexpr std::size_t FRAME = 0x388000;
constexpr std::size_t IMAGE = 2560 * 1440;

GLint State(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

/// The pixels of the bound texture.
GLint TextureSize(GLenum side)
{
    GLint size = -1;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, side, &size);
    return size;
}

/// Creates and binds a texture as an engine does, and sets the engine's unpacking of pixels.
unsigned int BindOther()
{
    unsigned int other = 0;
    glGenTextures(1, &other);
    glBindTexture(GL_TEXTURE_2D, other);
    for (const GLenum name :
         {GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_PIXELS, GL_UNPACK_SKIP_ROWS, GL_UNPACK_ALIGNMENT})
    {
        glPixelStorei(name, 8);
    }
    return other;
}

Bytes ReadBack(unsigned int texture)
{
    Bytes pixels(IMAGE);
    glBindTexture(GL_TEXTURE_2D, texture);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

class CameraTest : public testing::Test
{
protected:
    void Open(unsigned int id, Camera::RENDERER renderer)
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        // The stream drops this frame to synchronise.
        host.Queue({{ScriptedUsbHost::Frame(FRAME, 0)}});
        camera = std::make_unique<Camera>(id, renderer, host);
    }

    ~CameraTest() override
    {
        host.Unplug();
        camera.reset();
        EXPECT_EQ(host.opened, host.closed);
        EXPECT_EQ(testing::internal::GetCapturedStdout().find("validating 3702784\n"), 0u);
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }

    /// The same camera for the flat interface. A flat handle is the address of the object.
    qlt_Camera* Flat() { return reinterpret_cast<qlt_Camera*>(camera.get()); }

    GlContext context;
    ScriptedUsbHost host{std::vector<ScriptedDevice>(1)};
    std::unique_ptr<Camera> camera;
};

} // namespace

TEST_F(CameraTest, UploadsEachFrameFromBehindItsHeader)
{
    EXPECT_EQ(Camera::GetWidth(), 2560);
    EXPECT_EQ(Camera::GetHeight(), 1440);
    const unsigned int other = BindOther();
    Open(0, Camera::RENDERER_GL);
    const auto texture = static_cast<unsigned int>(camera->GetTextureId());
    EXPECT_NE(texture, 0u);
    EXPECT_NE(texture, other);
    EXPECT_EQ(qlt_Camera_GetTextureId(Flat()), camera->GetTextureId());
    for (const auto& [name, expected] : {std::pair(GL_TEXTURE_MAG_FILTER, GL_LINEAR),
                                         {GL_TEXTURE_MIN_FILTER, GL_LINEAR},
                                         {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER},
                                         {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER}})
    {
        GLint value = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, static_cast<GLenum>(name), &value);
        EXPECT_EQ(value, expected) << name;
    }
    for (std::uint32_t number = 1; number <= QLT_PATTERN_FRAMES; ++number)
    {
        Bytes frame = ScriptedUsbHost::Frame(FRAME, number);
        for (std::size_t i = 24; i < FRAME; ++i)
        {
            frame[i] = static_cast<std::uint8_t>(i * 7 + i / 2560 * 13 + number);
        }
        host.Queue({{frame}});
        glBindTexture(GL_TEXTURE_2D, other);
        qlt_Camera_Update(Flat());
        EXPECT_EQ(std::memcmp(ReadBack(texture).data(), &frame[24], IMAGE), 0) << number;
    }
    EXPECT_EQ(TextureSize(GL_TEXTURE_WIDTH), 2560);
    EXPECT_EQ(TextureSize(GL_TEXTURE_HEIGHT), 1440);
    // A copy is the same camera, so never destroy the copy.
    alignas(Camera) unsigned char place[sizeof(Camera)];
    EXPECT_EQ((new (place) Camera(*camera))->GetTextureId(), camera->GetTextureId());
}

TEST_F(CameraTest, UploadsIntoTheTextureThatItIsGiven)
{
    Open(7, Camera::RENDERER_GL);
    EXPECT_EQ(camera->GetTextureId(), 7);
    host.Queue({{ScriptedUsbHost::Frame(FRAME, 5)}});
    camera->Update();
    EXPECT_EQ(ReadBack(7), Bytes(IMAGE, 5));
}

TEST_F(CameraTest, OnlyKeepsThePaceOfADirect3dApplication)
{
    const unsigned int other = BindOther();
    AssertionRecorder assertions;
    Open(0, Camera::RENDERER_D3D);
    EXPECT_EQ(assertions.Take(), std::vector<std::string>{"texture_id|Sensors/Camera|60"});
    EXPECT_EQ(camera->GetTextureId(), 0);
    for (std::uint32_t number = 1; number < 4; ++number)
    {
        host.Queue({{ScriptedUsbHost::Frame(FRAME, number)}});
        camera->Update();
    }
    // The camera has not changed any other state of OpenGL.
    EXPECT_EQ(State(GL_TEXTURE_BINDING_2D), static_cast<GLint>(other));
    EXPECT_EQ(State(GL_UNPACK_ALIGNMENT), 8);
    EXPECT_EQ(TextureSize(GL_TEXTURE_WIDTH), 0);
}

// The stream continues while the test uploads and compares a frame. Every update shows one whole
// frame, which is later than the previous one.
TEST_F(CameraTest, AThousandFramesAreWholeAndInOrder) // sanitizers are slow
{
    constexpr std::uint32_t FRAMES = QLT_NUMBERED_FRAMES;
    Open(0, Camera::RENDERER_GL);
    std::thread device(
        [this]
        {
            for (std::uint32_t number = 1; number <= FRAMES; ++number)
            {
                host.Queue({{ScriptedUsbHost::Frame(FRAME, number)}});
                host.WaitForIdle();
            }
        });
    std::uint32_t last = 0;
    // The pixels are the lowest byte of the frame's number. Steps are shorter than 256 frames.
    while (last < FRAMES)
    {
        camera->Update();
        const Bytes pixels = ReadBack(static_cast<unsigned int>(camera->GetTextureId()));
        ASSERT_EQ(std::memcmp(pixels.data(), pixels.data() + 1, IMAGE - 1), 0)
            << "The last whole frame was " << last;
        const std::uint32_t step = (pixels[0] - last) & 0xFF;
        ASSERT_GT(step, 0u);
        last += step;
    }
    device.join();
    EXPECT_EQ(last, FRAMES);
}
