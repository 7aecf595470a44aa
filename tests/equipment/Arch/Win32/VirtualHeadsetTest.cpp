// What only this system's USB has, and the qlt command with a headset.
#include "VirtualHeadset.h"

#include "equipment/UsbHostFixture.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>

namespace
{

namespace fs = std::filesystem;

class VirtualHeadsetTest : public UsbHostFixture
{
protected:
    VirtualHeadset& headset = static_cast<VirtualHeadset&>(*bus);
};

class VirtualHeadsetCommandTest : public testing::Test
{
protected:
    VirtualHeadsetCommandTest()
    {
        fs::create_directories(folder);
        headset.Plug();
    }
    ~VirtualHeadsetCommandTest() override { fs::remove_all(folder); }

    /// Runs the command and feeds the endpoint again and again.
    template <typename Next>
    int Run(const std::string& arguments, std::uint8_t endPoint, const Next& next)
    {
        const std::string line = "\"\"" QLT_COMMAND "\" " + arguments + "\"";
        std::future<int> ended =
            std::async(std::launch::async, [&] { return std::system(line.c_str()); });
        while (ended.wait_for(std::chrono::milliseconds(40)) == std::future_status::timeout)
        {
            if (headset.Pending(endPoint) != 0)
            {
                headset.Push(endPoint, next());
            }
        }
        return ended.get();
    }

    std::string Contents(const std::string& name) const
    {
        std::ifstream file(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const fs::path folder = fs::temp_directory_path() / "qlt_virtual_headset";
    VirtualHeadset headset;
};

} // namespace

TEST_F(VirtualHeadsetTest, TheSizeOfTransfersIsInWholePackets)
{
    Open();
    EndPoint().SetTransferSize(FRAME_SIZE - 1);
    EXPECT_EQ(headset.TransferSize(), FRAME_SIZE);
}

TEST_F(VirtualHeadsetTest, ADeviceThatSaysNothingIsAProblem)
{
    headset.answers = false;
    bus->Plug();
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_NE(host.Problem(), "");
    headset.answers = true;
    bus->Unplug();
    Open();
    EXPECT_EQ(host.Problem(), "");
}

TEST_F(VirtualHeadsetTest, WhatIsInFlightEndsWithTheDevice)
{
    Open();
    Begin();
    device.reset();
    EXPECT_EQ(bus->Pending(FRAMES), 0u);
    EXPECT_EQ(frames.back().End(), "failed");
}

TEST_F(VirtualHeadsetCommandTest, RecordsWhatItReads)
{
    std::string sent;
    const auto next = [&]
    {
        const auto number = static_cast<std::uint32_t>(sent.size() / 64);
        const ReportWriter report(number, number * 1000);
        sent.append(report.begin(), report.end());
        return Bytes(report.begin(), report.end());
    };
    const std::string file = (folder / "r.bin").string();
    EXPECT_EQ(Run("record \"" + file + "\" --seconds 2", REPORTS, next), 0);
    const std::string recorded = Contents("r.bin");
    EXPECT_GT(recorded.size(), 64u * 5);
    EXPECT_EQ(recorded, sent.substr(0, recorded.size()));
}

TEST_F(VirtualHeadsetCommandTest, SavesAFrameOfTheCamera)
{
    const auto next = [] { return ScriptedUsbHost::Frame(FRAME_SIZE, 77); };
    const std::string file = (folder / "c.png").string();
    EXPECT_EQ(Run("camera --seconds 1 --png \"" + file + "\"", FRAMES, next), 0);
    EXPECT_EQ(Contents("c.png").substr(1, 3), "PNG");
}
