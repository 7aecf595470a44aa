// Tests of the flat interface's camera with the emulated bus and real OpenGL.
#include <qlt/qlt_c_api.h>

#include "view/GlContext.h"

#include "equipment/EmulatedBus.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>

#include <GL/glew.h>

// The stream zeroes a frame that ends before its read begins. The test sends such a frame again
// after a pause, and each pause is longer.
TEST(CameraFramesTest, FramesBecomeATexture)
{
    constexpr std::size_t FRAME = 0x388000;
    constexpr std::size_t IMAGE = 2560 * 1440;
    const std::unique_ptr<EmulatedBus> bus = MakeEmulatedBus();
    const GlContext context;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    std::uint32_t shown = 0;
    int wrong = 0;
    bus->Plug();
    // The stream synchronises with this frame.
    bus->Push(EmulatedBus::FRAMES, ScriptedUsbHost::Frame(FRAME, 0));
    {
        qlt_Camera* const camera = qlt_Camera_New(3);
        EXPECT_EQ(qlt_Camera_GetTextureId(camera), 3);
        std::vector<std::uint8_t> pixels(IMAGE);
        for (std::uint32_t sent = 0; shown < 5 && sent < 50; ++sent)
        {
            std::vector<std::uint8_t> frame = ScriptedUsbHost::Frame(FRAME, shown + 1);
            for (std::size_t i = 24; i < FRAME; i += 977)
            {
                frame[i] = static_cast<std::uint8_t>(i + shown);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50) * (sent - shown + 1));
            bus->Push(EmulatedBus::FRAMES, frame);
            glBindTexture(GL_TEXTURE_2D, 0);
            qlt_Camera_Update(camera);
            glBindTexture(GL_TEXTURE_2D, 3);
            glPixelStorei(GL_PACK_ALIGNMENT, 1);
            glGetTexImage(GL_TEXTURE_2D, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, pixels.data());
            if (std::any_of(pixels.begin(), pixels.end(), [](std::uint8_t p) { return p != 0; }))
            {
                wrong += std::memcmp(pixels.data(), &frame[24], IMAGE) != 0;
                ++shown;
            }
        }
        qlt_Camera_Delete(camera);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "validating 3702784\n");
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(shown, 5u);
    EXPECT_EQ(wrong, 0);
}
