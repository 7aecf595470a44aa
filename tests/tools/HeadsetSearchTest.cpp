#include "source/HeadsetSearch.h"

#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

TEST(HeadsetSearchTest, TheHeadsetIsADeviceWithItsIdentifiersAndTheEndPoint)
{
    const ScriptedDevice headset;
    const ScriptedDevice hub{0x04B4, 0x6560, {0, 3, 2}, {0, 0x81, 0x82}};
    const ScriptedDevice mouse{0x046D, 0x00F1, {0, 3, 2}, {0, 0x81, 0x82}};
    const ScriptedDevice bare{0x04B4, 0x00F1, {0}, {0}};
    const ScriptedDevice noReports{0x04B4, 0x00F1, {0, 2}, {0, 0x82}};
    const ScriptedDevice noCamera{0x04B4, 0x00F1, {0, 3, 2}, {0, 0x81, 0x83}};
    const std::string none = "no headset is connected";
    const std::string hubThere = none + "; the USB device 04B4:6560 is another";
    const std::string mouseThere = none + "; the USB device 046D:00F1 is another";
    const std::string reports = "the headset has no endpoint for its reports";
    const std::string camera = "the headset has no endpoint for its camera";
    const struct
    {
        std::vector<ScriptedDevice> devices;
        std::string sensors;
        std::string camera;
    } cases[] = {
        {{}, none, none},
        {{headset}, "", ""},
        {{hub}, hubThere, hubThere},
        {{hub, headset}, hubThere, ""}, // the camera looks at every device of the vendor
        {{mouse, headset}, mouseThere, mouseThere},
        {{bare}, reports, camera},
        {{noReports}, reports, ""},
        {{noCamera}, "", camera},
    };
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(&expected - cases);
        ScriptedUsbHost host(expected.devices);
        EXPECT_EQ(WhyNoHeadset(host, HeadsetPart::Sensors), expected.sensors);
        EXPECT_EQ(WhyNoHeadset(host, HeadsetPart::Camera), expected.camera);
        EXPECT_EQ(host.opened, host.closed);
    }
}

TEST(HeadsetSearchTest, TheKernelsTransferMemoryIsGivenInCameraFrames)
{
    const std::string advice = "; for all of them: echo 64 | sudo tee "
                               "/sys/module/usbcore/parameters/usbfs_memory_mb";
    EXPECT_EQ(DescribeUsbMemory(16),
              "16 MB, which takes 4 of the camera's 10 frames in flight" + advice);
    EXPECT_EQ(DescribeUsbMemory(35),
              "35 MB, which takes 9 of the camera's 10 frames in flight" + advice);
    EXPECT_EQ(DescribeUsbMemory(36), "36 MB, enough for the camera");
    EXPECT_EQ(DescribeUsbMemory(0), "no limit");
}
