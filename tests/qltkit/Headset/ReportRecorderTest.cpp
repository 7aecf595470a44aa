#include <qltkit/Headset/ReportRecorder.h>

#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace
{

namespace fs = std::filesystem;

/// Each test has its own folder with one file at a time.
struct Folder
{
    Folder() { fs::create_directory(path); }
    ~Folder() { fs::remove_all(path); }

    fs::path File() const { return fs::directory_iterator(path)->path(); }

    std::string Contents() const
    {
        std::ifstream file(File(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const fs::path path =
        fs::temp_directory_path() / ("qlt_recorder_" + std::to_string(std::random_device()()));
};

/// Reads `reports` and then a short report through a tap with the recorder, and calls `between`
/// after each. Returns the bytes that must be on the disk.
template <typename Check>
std::string Read(qltkit::ReportRecorder& recorder, std::uint32_t reports, const Check& between)
{
    std::string expected;
    ScriptedUsbHost host(std::vector<ScriptedDevice>(1));
    qltkit::ReportTap tap(host, qlt::Clock::System(), recorder);
    const auto device = tap.OpenFirst();
    for (std::uint32_t i = 0; i <= reports; ++i)
    {
        const ReportWriter report(i);
        ScriptedUsbHost::Report read{};
        std::uint32_t length = 64;
        host.QueueRead(report, i == reports ? 63 : 64);
        EXPECT_TRUE(device->EndPoint(1).TransferData(read.data(), length));
        EXPECT_EQ(length, i == reports ? 63u : 64u);
        EXPECT_TRUE(i == reports || read == report);
        expected.append(report.begin(), i == reports ? report.begin() : report.end());
        between(expected);
    }
    return expected;
}

} // namespace

TEST(ReportRecorderTest, WritesEveryReportWhenItArrives)
{
    const Folder folder;
    const fs::path path = folder.path / "r.bin";
    qltkit::ReportRecorder recorder(path.string());
    // Each report is on the disk at once, so a killed recorder loses nothing.
    const std::string all =
        Read(recorder, 5,
             [&](const std::string& text)
             {
                 EXPECT_EQ(folder.Contents(), text);
                 EXPECT_EQ(folder.File().string().rfind(path.string() + '.', 0), 0u);
             });
    EXPECT_EQ(recorder.Reports(), 5u);
    EXPECT_FALSE(recorder.Failed());
    recorder.Close();
    EXPECT_EQ(folder.File(), path);
    EXPECT_EQ(folder.Contents(), all);
}

TEST(ReportRecorderTest, ReportsAFullDiskAndContinuesToRead)
{
    if (!std::filesystem::exists("/dev/full"))
    {
        GTEST_SKIP() << "This system has no /dev/full.";
    }
    qltkit::ReportRecorder recorder("/dev/full");
    Read(recorder, 3, [&](const std::string&) { EXPECT_TRUE(recorder.Failed()); });
    EXPECT_EQ(recorder.Reports(), 0u);
    EXPECT_THROW(recorder.Close(), std::runtime_error);
}
