// Tests of USB on this system only, and of the qlt command with a headset.
#include "VirtualHeadset.h"

#include "equipment/UsbHostFixture.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>
#include <iterator>

namespace
{

class VirtualHeadsetTest : public UsbHostFixture
{
protected:
    /// The contents of the file that the command writes. The file is the last argument. While the
    /// command runs, the test sends to the endpoint again and again.
    template <typename Next>
    std::string Run(const std::string& arguments, const std::string& ending, std::uint8_t endPoint,
                    const Next& next)
    {
        bus->Plug();
        const std::string path = testing::TempDir() + "qlt_virtual_headset" + ending;
        const std::string line = "\"\"" QLT_COMMAND "\" " + arguments + " \"" + path + "\"\"";
        std::future<int> ended =
            std::async(std::launch::async, [&] { return std::system(line.c_str()); });
        while (ended.wait_for(std::chrono::milliseconds(40)) == std::future_status::timeout)
        {
            if (bus->Pending(endPoint) != 0)
            {
                bus->Push(endPoint, next());
            }
        }
        EXPECT_EQ(ended.get(), 0);
        std::ifstream file(path, std::ios::binary);
        const std::string contents(std::istreambuf_iterator<char>(file), {});
        file.close();
        std::remove(path.c_str());
        return contents;
    }

    VirtualHeadset& headset = static_cast<VirtualHeadset&>(*bus);
};

} // namespace

TEST_F(VirtualHeadsetTest, EveryDeviceOfTheDriverCounts)
{
    bus->Plug(0x04B4, 0x6018);
    bus->Plug();
    EXPECT_EQ(host.CountDevices(), 2u);
    EXPECT_EQ(host.OpenFirst()->ProductId(), 0x6018);
    EXPECT_EQ(host.Open(1)->ProductId(), 0x00F1);
}

TEST_F(VirtualHeadsetTest, TheTransferSizeIsRoundedUpToWholePackets)
{
    Open();
    EndPoint().SetTransferSize(FRAME_SIZE - 1);
    EXPECT_EQ(headset.TransferSize(), FRAME_SIZE);
}

TEST_F(VirtualHeadsetTest, ADeviceThatSendsNoDescriptorsIsAProblem)
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

TEST_F(VirtualHeadsetTest, ReadsInFlightEndWithTheDevice)
{
    Open();
    Begin();
    device.reset();
    EXPECT_EQ(bus->Pending(FRAMES), 0u);
    EXPECT_EQ(frames.back().End(), "failed");
}

TEST_F(VirtualHeadsetTest, TheCommandRecordsWhatItReads)
{
    std::string sent;
    const auto next = [&]
    {
        const ReportWriter report(static_cast<std::uint32_t>(sent.size() / 64));
        sent.append(report.begin(), report.end());
        return Bytes(report.begin(), report.end());
    };
    const std::string recorded = Run("record --seconds 2", ".bin", REPORTS, next);
    EXPECT_GT(recorded.size(), 64u * 5);
    EXPECT_EQ(recorded, sent.substr(0, recorded.size()));
}

TEST_F(VirtualHeadsetTest, TheCommandSavesAFrameOfTheCamera)
{
    const auto next = [] { return ScriptedUsbHost::Frame(FRAME_SIZE, 77); };
    EXPECT_EQ(Run("camera --seconds 1 --png", ".png", FRAMES, next).substr(1, 3), "PNG");
    // A capture contains the frames as base64 text, which is a third longer.
    const std::string capture = Run("record --camera --seconds 2", ".mcap", FRAMES, next);
    EXPECT_NE(capture.find("foxglove.RawImage"), std::string::npos);
    EXPECT_GT(capture.size(), FRAME_SIZE * 4 / 3);
}
