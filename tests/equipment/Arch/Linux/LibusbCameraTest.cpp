#include "equipment/CameraFrames.h"

#include "UsbEmulator.h"

TEST(LibusbCameraTest, FramesBecomeATexture)
{
    UsbEmulator emulator;
    emulator.Plug();
    ExpectCameraShowsFrames([&](const std::vector<std::uint8_t>& frame)
                            { emulator.Push(0x82, frame); });
}
