#include "ReportRecorder.h"

#include <qlt/Sensors/Hmd.h>

#include "fakes/EventLog.h"
#include "fakes/ManualClock.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace
{

std::string Contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class ReportRecorderTest : public testing::Test
{
protected:
    ReportRecorderTest()
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        host.Plug({});
    }

    ~ReportRecorderTest() override
    {
        testing::internal::GetCapturedStdout();
        testing::internal::GetCapturedStderr();
    }

    /// Has a headset read `reports`, and what `between` says after each of them.
    template <typename Check>
    void Track(ReportRecorder& recorder, std::size_t reports, const Check& between)
    {
        ManualClock clock;
        EventLog log;
        qlt::Hmd hmd(recorder, clock);
        clock.WaitForSleep(1);
        hmd.AddListener(log);
        hmd.Start();
        for (std::size_t i = 0; i < reports; ++i)
        {
            const ScriptedUsbHost::Report report =
                ReportWriter(static_cast<std::uint32_t>(1000 + i));
            expected.append(report.begin(), report.end());
            host.QueueRead(report);
            log.WaitFor(7 * (i + 1));
            between();
        }
        host.QueueRead(ReportWriter(1), 63); // no report
        Until([this] { return host.closed == 1; });
        clock.KeepAwake();
        hmd.Stop();
        hmd.RemoveListener(log);
    }

    ScriptedUsbHost host;
    std::string expected;
};

} // namespace

TEST_F(ReportRecorderTest, WritesEveryReportAsItComes)
{
    const std::string path =
        (std::filesystem::temp_directory_path() /
         ("qlt_recorder_test_" + std::to_string(std::random_device()()) + ".bin"))
            .string();
    {
        ReportRecorder recorder(host, path);
        // Whole on the disk at once: a recorder that is killed loses nothing more.
        Track(recorder, 5, [&] { EXPECT_EQ(Contents(path), expected); });
        EXPECT_EQ(recorder.Reports(), 5u);
        EXPECT_FALSE(recorder.Failed());
        recorder.Close();
    }
    EXPECT_EQ(Contents(path), expected);
    std::filesystem::remove(path);
}

TEST_F(ReportRecorderTest, SaysThatTheDiskIsFullAndTracksOn)
{
    if (!std::filesystem::exists("/dev/full"))
    {
        GTEST_SKIP() << "there is no full disk here";
    }
    ReportRecorder recorder(host, "/dev/full");
    Track(recorder, 3, [&] { EXPECT_TRUE(recorder.Failed()); });
    EXPECT_EQ(recorder.Reports(), 0u);
    EXPECT_THROW(recorder.Close(), std::runtime_error);
}
