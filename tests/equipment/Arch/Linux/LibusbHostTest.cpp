// What only this system's USB has: permissions, other programs, and the kernel's memory for
// requests.
#include "UsbEmulator.h"

#include "equipment/UsbHostFixture.h"

namespace
{

class LibusbHostTest : public UsbHostFixture
{
protected:
    UsbEmulator& emulator = static_cast<UsbEmulator&>(*bus);
};

} // namespace

TEST_F(LibusbHostTest, WhatIsInTheWayOfOpeningIsToldAndForgottenWhenTheHeadsetIsGone)
{
    emulator.Plug(0x1D6B, 0x00F1); // another vendor's, which does not count
    bus->Plug();
    emulator.ClaimElsewhere();
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "another program has the headset open");
    emulator.ForbidOpening();
    EXPECT_EQ(host.CountDevices(), 1u);
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "no permission to open the headset; install the udev rule "
                              "70-quelta-orbel-ixo.rules");
    bus->Unplug();
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "");
}

TEST_F(LibusbHostTest, AFailedReadHasWhatCameUntilThen)
{
    Open();
    Bytes report(64);
    std::uint32_t length = 64;
    bus->Push(REPORTS, Bytes(10, 7), false);
    EXPECT_FALSE(device->EndPoint(1).TransferData(report.data(), length));
    EXPECT_EQ(length, 10u);
    EXPECT_EQ(report[9], 7);
}

// With the kernel's default of 16 MB.
TEST_F(LibusbHostTest, FramesForWhichThereIsNoMemoryWaitForTheOthers)
{
    Open();
    emulator.LimitBytes(16 << 20);
    testing::internal::CaptureStderr();
    Begin();
    EXPECT_EQ(bus->Pending(FRAMES), 4u);
    frames.pop_back();
    PushAll();
    for (std::uint8_t i = 0; i < frames.size(); ++i)
    {
        EXPECT_EQ(frames[i].End(), std::to_string(i));
    }
    Begin();
    EndPoint().AbortTransfers();
    EXPECT_EQ(frames.back().End(), "failed");
    const std::string advice = testing::internal::GetCapturedStderr();
    const std::string command = "echo 64 | sudo tee /sys/module/usbcore/parameters/usbfs_memory_mb";
    EXPECT_NE(advice.find(command), std::string::npos);
    EXPECT_EQ(advice.find(command), advice.rfind(command));
    frames.clear();
    emulator.LimitBytes(FRAME_SIZE - 1); // where nothing can make room
    EXPECT_EQ(Frame(EndPoint()).End(), "refused");
}
