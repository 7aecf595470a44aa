#include "equipment/CameraFrames.h"

#include "VirtualHeadset.h"

TEST(VirtualHeadsetCameraTest, FramesBecomeATexture)
{
    VirtualHeadset headset;
    headset.Plug();
    ExpectCameraShowsFrames([&](const std::vector<std::uint8_t>& frame)
                            { headset.Push(VirtualHeadset::FRAMES, frame.data(), frame.size()); });
}
