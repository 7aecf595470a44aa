// A program that draws with OpenGL, and the lens model that its pictures are compared with.
#pragma once

#include "OpenXr.h"
#include "ProgramContext.h"

#include <qlt/Sensors/DistortionFunction.h>

#include <array>
#include <cmath>
#include <functional>

namespace qltxr
{

inline double DegToRad(double degrees) { return degrees * std::acos(-1.0) / 180.0; }

inline Turn TurnLeft(double degrees)
{
    const double half = 0.5 * DegToRad(degrees);
    return {std::cos(half), 0.0, std::sin(half), 0.0};
}

/// A head that a test turns.
class TurnedSource final : public PoseSource
{
public:
    explicit TurnedSource(const Turn& turn)
        : mTurn(turn)
    {
    }
    HeadMoment At(XrTime) const override
    {
        const std::lock_guard lock(mMutex);
        return {mTurn, {}, true, true};
    }
    std::string Describe() const override { return "a test"; }

    void Set(const Turn& turn)
    {
        const std::lock_guard lock(mMutex);
        mTurn = turn;
    }

private:
    mutable std::mutex mMutex;
    Turn mTurn;
};

/// Computes what the user's eye sees at a place of the panel. It uses only the function of the
/// lens.
class LensModel
{
public:
    LensModel() { mFunction.Initialize(); }

    /// Gives the tangents that a pixel shows in a colour. Returns false outside the lens and near
    /// its edge.
    bool Tangents(const Picture& picture, std::uint32_t x, std::uint32_t y, int color,
                  std::array<double, 2>& tangents) const
    {
        const std::uint32_t half = picture.width / 2;
        const auto eye = static_cast<qlt::Params::Eye>(x / half);
        const double px = 2.0 * (x % half + 0.5) / half - 1.0;
        const double py = 1.0 - 2.0 * (y + 0.5) / picture.height;
        const qlt::Vec3 at = mFunction.Distortion({static_cast<float>(px), static_cast<float>(py)},
                                                  eye, static_cast<qlt::Params::Color>(color));
        const double tangent = std::tan(DegToRad(0.5 * qlt::Params::EYE_FOV_DEG));
        tangents = {(2.0 * at.x() - 1.0) * tangent,
                    (2.0 * at.y() - 1.0) * tangent / qlt::Params::EYE_ASPECT_RATIO};
        return at.z() == 0.0f && std::hypot(px, py / qlt::Params::EYE_ASPECT_RATIO) < 0.96;
    }

private:
    mutable qlt::DistortionFunction mFunction;
};

/// A swapchain with the handles that a program keeps.
struct ProgramSwapchain
{
    XrSwapchain handle = XR_NULL_HANDLE;
    std::vector<GLuint> textures;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

template <typename Layer>
const XrCompositionLayerBaseHeader* Header(const Layer& layer)
{
    return reinterpret_cast<const XrCompositionLayerBaseHeader*>(&layer);
}

/// A fixture with a session that draws into a window, and with a head that the test turns.
class GraphicsTest : public OpenXrTest
{
protected:
    explicit GraphicsTest(const char* mirror = "640x360")
    {
        setenv("QUELTA_OPENXR_MIRROR", mirror, 1);
        TheRuntime().openPoseSource = [this](const SourceSettings&, std::string&)
        {
            auto source = std::make_unique<TurnedSource>(Turn());
            head = source.get();
            return source;
        };
        EXPECT_EQ(CreateGraphical(program.Binding()), XR_SUCCESS);
    }

    ~GraphicsTest() override { TheRuntime().openPoseSource = OpenPoseSource; }

    XrResult CreateGraphical(const void* binding)
    {
        XrGraphicsRequirementsOpenGLKHR requirements{XR_TYPE_GRAPHICS_REQUIREMENTS_OPENGL_KHR};
        EXPECT_EQ(GetOpenGLGraphicsRequirementsKHR(instance, SYSTEM_ID, &requirements), XR_SUCCESS);
        const XrSessionCreateInfo info{XR_TYPE_SESSION_CREATE_INFO, binding, 0, SYSTEM_ID};
        return CreateSession(instance, &info, &session);
    }

    static Compositor& TheCompositor() { return *TheRuntime().instance->session->compositor; }

    ProgramSwapchain MakeSwapchain(std::int32_t width, std::int32_t height,
                                   std::int64_t format = GL_SRGB8_ALPHA8,
                                   std::uint32_t layers = 1) const
    {
        XrSwapchainCreateInfo info{XR_TYPE_SWAPCHAIN_CREATE_INFO};
        info.usageFlags = XR_SWAPCHAIN_USAGE_COLOR_ATTACHMENT_BIT;
        info.format = format;
        info.sampleCount = info.faceCount = info.mipCount = 1;
        info.width = static_cast<std::uint32_t>(width);
        info.height = static_cast<std::uint32_t>(height);
        info.arraySize = layers;
        ProgramSwapchain made{XR_NULL_HANDLE, {}, width, height};
        EXPECT_EQ(CreateSwapchain(session, &info, &made.handle), XR_SUCCESS);
        std::uint32_t count = 0;
        EnumerateSwapchainImages(made.handle, 0, &count, nullptr);
        std::vector<XrSwapchainImageOpenGLKHR> images(count, {XR_TYPE_SWAPCHAIN_IMAGE_OPENGL_KHR});
        EXPECT_EQ(
            EnumerateSwapchainImages(made.handle, count, &count,
                                     reinterpret_cast<XrSwapchainImageBaseHeader*>(images.data())),
            XR_SUCCESS);
        for (const XrSwapchainImageOpenGLKHR& image : images)
        {
            made.textures.push_back(image.image);
        }
        return made;
    }

    /// Acquires an image and waits for it. Returns its texture.
    GLuint Acquire(const ProgramSwapchain& swapchain) const
    {
        std::uint32_t index = 0;
        EXPECT_EQ(AcquireSwapchainImage(swapchain.handle, nullptr, &index), XR_SUCCESS);
        const XrSwapchainImageWaitInfo info{XR_TYPE_SWAPCHAIN_IMAGE_WAIT_INFO, nullptr,
                                            XR_INFINITE_DURATION};
        EXPECT_EQ(WaitSwapchainImage(swapchain.handle, &info), XR_SUCCESS);
        return swapchain.textures[index];
    }

    void Release(const ProgramSwapchain& swapchain) const
    {
        EXPECT_EQ(ReleaseSwapchainImage(swapchain.handle, nullptr), XR_SUCCESS);
    }

    /// Fills one image. `color` gives 8-bit values with alpha for each place, from (0, 0) in the
    /// lower left corner to (1, 1).
    void Paint(const ProgramSwapchain& swapchain,
               const std::function<std::array<double, 4>(double, double)>& color) const
    {
        std::vector<std::uint8_t> pixels;
        for (std::int32_t y = 0; y < swapchain.height; ++y)
        {
            for (std::int32_t x = 0; x < swapchain.width; ++x)
            {
                for (const double part :
                     color((x + 0.5) / swapchain.width, (y + 0.5) / swapchain.height))
                {
                    pixels.push_back(static_cast<std::uint8_t>(std::lround(255.0 * part)));
                }
            }
        }
        program.gl.BindTexture(GL_TEXTURE_2D, Acquire(swapchain));
        program.gl.TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, swapchain.width, swapchain.height, GL_RGBA,
                                 GL_UNSIGNED_BYTE, pixels.data());
        EXPECT_EQ(program.gl.GetError(), 0u);
        Release(swapchain);
    }

    static XrSwapchainSubImage Whole(const ProgramSwapchain& swapchain)
    {
        return {swapchain.handle, {{0, 0}, {swapchain.width, swapchain.height}}, 0};
    }

    /// Sends one frame, and returns the picture on the panel.
    Picture Show(const std::vector<const XrCompositionLayerBaseHeader*>& layers) const
    {
        XrFrameState state{XR_TYPE_FRAME_STATE};
        EXPECT_EQ(WaitFrame(session, nullptr, &state), XR_SUCCESS);
        EXPECT_EQ(BeginFrame(session, nullptr), XR_SUCCESS);
        EXPECT_EQ(End(layers, state.predictedDisplayTime), XR_SUCCESS);
        return TheCompositor().TakePicture();
    }

    TurnedSource* head = nullptr; // belongs to the session
    ProgramContext program;
};

} // namespace qltxr
