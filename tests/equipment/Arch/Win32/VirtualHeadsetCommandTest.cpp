// The qlt command with a headset.
#include "VirtualHeadset.h"

#include "fakes/ReportWriter.h"
#include "fakes/ScriptedStream.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <string>
#include <thread>

namespace
{

namespace fs = std::filesystem;

class VirtualHeadsetCommandTest : public testing::Test
{
protected:
    VirtualHeadsetCommandTest()
    {
        fs::create_directories(folder);
        headset.Plug();
    }
    ~VirtualHeadsetCommandTest() override { fs::remove_all(folder); }

    /// Runs the command while `feed` is called again and again.
    template <typename Feed>
    int Run(const std::string& arguments, const Feed& feed)
    {
        const std::string line = "\"\"" QLT_COMMAND "\" " + arguments + "\"";
        std::future<int> ended =
            std::async(std::launch::async, [&] { return std::system(line.c_str()); });
        while (ended.wait_for(std::chrono::milliseconds(40)) == std::future_status::timeout)
        {
            feed();
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

TEST_F(VirtualHeadsetCommandTest, RecordsWhatItReadsAndReplaysIt)
{
    std::string sent;
    const auto feed = [&]
    {
        const ReportWriter report(static_cast<std::uint32_t>(sent.size() / 64),
                                  static_cast<std::uint32_t>(sent.size() / 64 * 1000));
        if (headset.Count().pending[VirtualHeadset::REPORTS] != 0)
        {
            headset.Push(VirtualHeadset::REPORTS, report.data(), report.size());
            sent.append(report.begin(), report.end());
        }
    };
    const std::string file = (folder / "r.bin").string();
    EXPECT_EQ(Run("record \"" + file + "\" --seconds 2", feed), 0);
    const std::string recorded = Contents("r.bin");
    EXPECT_GT(recorded.size(), 64u * 5);
    EXPECT_EQ(recorded, sent.substr(0, recorded.size()));
    EXPECT_EQ(Run("replay \"" + file + "\"", [] {}), 0);
}

TEST_F(VirtualHeadsetCommandTest, SavesAFrameOfTheCamera)
{
    const std::vector<std::uint8_t> frame = ScriptedStream::Frame(0x388000, 77);
    const auto feed = [&]
    {
        if (headset.Count().pending[VirtualHeadset::FRAMES] != 0)
        {
            headset.Push(VirtualHeadset::FRAMES, frame.data(), frame.size());
        }
    };
    EXPECT_EQ(Run("camera --seconds 1 --png \"" + (folder / "c.png").string() + "\"", feed), 0);
    EXPECT_EQ(Contents("c.png").substr(1, 3), "PNG");
    headset.Unplug();
    EXPECT_EQ(Run("camera", [] {}), 1);
}
