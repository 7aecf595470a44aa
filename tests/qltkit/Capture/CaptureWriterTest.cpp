#include <qltkit/Capture/CaptureWriter.h>

#include <qltkit/Error.h>

#include "CaptureFiles.h"

#include "fakes/AllocationCounter.h"

#include <cstdlib>

using Kind = qltkit::CaptureItem::Kind;

namespace
{

std::string Refusal(const std::filesystem::path& path)
{
    try
    {
        qltkit::CaptureWriter writer(path);
        return "";
    }
    catch (const qltkit::Error& error)
    {
        return error.what();
    }
}

} // namespace

TEST(CaptureWriterTest, EntriesAreReadInTheirOrderWithTheirTimes)
{
    const std::filesystem::path path = std::filesystem::u8path("aller retour \xC3\xA9.mcap");
    ManualClock clock;
    clock.nowNs = 5000;
    qltkit::CaptureOptions options;
    options.clock = &clock;
    options.wallTimeNs = 1700000000000000000;
    options.metadata = {{"source", "simulator"}, {"library", "not mine"}};
    qltkit::CaptureWriter writer(path, options);
    EXPECT_EQ(writer.TemporaryPath(), std::filesystem::u8path("aller retour \xC3\xA9.part.mcap"));

    // The device's clock is about to wrap, runs 0.1 % fast, and restarts when the device is plugged
    // in again.
    std::array<qltkit::CaptureReport, 4> reports{};
    const std::uint32_t timesUs[] = {0xFFFFFF00, 0xFFFFFF00 + 1001, 0xFFFFFF00 + 2002, 77};
    for (std::uint32_t i = 0; i < 4; ++i)
    {
        for (std::uint32_t j = 0; j < 64; ++j)
        {
            reports[i][j] = static_cast<std::uint8_t>(j < 4   ? (i + 1) >> (8 * j)
                                                      : j < 8 ? timesUs[i] >> (8 * (j - 4))
                                                              : i * 64 + j);
        }
    }
    writer.AddEvent("connected", "port 3");
    clock.nowNs += 1000;
    writer.AddReport(reports[0].data());
    writer.AddReport(reports[1].data(), 1006000);
    writer.AddText(qltkit::CaptureLevel::Error, "Read 63 instead of 64!\n\"\\\x01\xFF\xE2\x82\xAC");
    writer.AddReport(reports[2].data(), 2006000);
    writer.AddFrame({3, 2, 4, "mono8", std::string_view("\0\1\2\3\xFF\xFE\xFD\xFC", 8)});
    writer.AddEvent("lost", {}, 3000000);
    writer.AddEvent("connected", {}, 4000000);
    writer.AddReport(reports[3].data(), 4000000);
    writer.Close();
    writer.Close();
    EXPECT_EQ(writer.Reports(), 4u);
    EXPECT_FALSE(std::filesystem::exists(writer.TemporaryPath()));

    const Contents read(path);
    EXPECT_EQ(read.Problem(), "");
    const Kind kinds[] = {Kind::Event, Kind::Report, Kind::Report, Kind::Text,  Kind::Report,
                          Kind::Frame, Kind::Event,  Kind::Event,  Kind::Report};
    const std::int64_t hostTimes[] = {5000, 6000,    1006000, 6000,   2006000,
                                      6000, 3000000, 4000000, 4000000};
    ASSERT_EQ(read.items.size(), std::size(kinds));
    for (std::size_t i = 0, report = 0; i < std::size(kinds); ++i)
    {
        const qltkit::CaptureItem& item = read.items[i];
        ASSERT_EQ(item.kind, kinds[i]) << i;
        EXPECT_EQ(item.hostTimeNs, hostTimes[i]) << i;
        EXPECT_EQ(item.logTimeNs,
                  1700000000000000000u + static_cast<std::uint64_t>(hostTimes[i]) - 5000)
            << i;
        if (item.kind == Kind::Report)
        {
            const std::int64_t unwrapped =
                report < 3 ? 0xFFFFFF00 + std::int64_t(report) * 1001 : (1LL << 32) + 77;
            EXPECT_EQ(item.report, reports[report]) << i;
            EXPECT_EQ(item.sequence, ++report) << i;
            EXPECT_EQ(item.deviceTimeUs, unwrapped) << i;
        }
    }
    EXPECT_EQ(read.items[4].publishTimeNs, 1700000000000000000u + 1000 + 2002000);
    EXPECT_EQ(read.items[8].publishTimeNs, read.items[8].logTimeNs);
    EXPECT_EQ(read.items[0].name + "|" + read.items[0].text, "connected|port 3");
    EXPECT_EQ(read.items[3].level, qltkit::CaptureLevel::Error);
    EXPECT_EQ(read.items[3].text, "Read 63 instead of 64!\n\"\\\x01\xEF\xBF\xBD\xE2\x82\xAC");
    EXPECT_EQ(read.items[5].frame.step, 4u);
    const std::string stamp = R"({"timestamp":{"sec":1700000000,"nsec":)";
    EXPECT_EQ(read.data[0], stamp + R"(0},"event":"connected","detail":"port 3"})");
    EXPECT_EQ(read.data[3],
              stamp + R"(1000},"level":4,"message":"Read 63 instead of 64!\u000a\"\\\u0001)"
                      "\xEF\xBF\xBD\xE2\x82\xAC"
                      R"(","name":"QueltaSDK","file":"","line":0})");
    EXPECT_EQ(read.data[5], stamp + R"(1000},"frame_id":"camera","width":3,"height":2,"step":4,)"
                                    R"("encoding":"mono8","data":"AAECA//+/fw="})");
    EXPECT_EQ(read.data[6], stamp + R"(2995000},"event":"lost","detail":""})");
    EXPECT_EQ(read.pixels[5], std::string("\0\1\2\3\xFF\xFE\xFD\xFC", 8));
    EXPECT_EQ(read.metadata.at("capture").at("source"), "simulator");
    EXPECT_EQ(read.metadata.at("capture").at("library"), "QueltaKit");
    EXPECT_EQ(read.metadata.at("capture.end").at("reports"), "4");
}

TEST(CaptureWriterTest, EntriesWithoutRoomAreCountedInTheCapture)
{
    constexpr std::uint64_t EACH = 20000;
    qltkit::CaptureOptions options;
    options.ringReports = 64;
    options.waitingBytes = 4096;
    qltkit::CaptureWriter writer("overflow.mcap", options);
    const auto add = [&writer](std::uint8_t thread)
    {
        long allocations = 0;
        for (std::uint32_t i = 0; i < EACH; ++i)
        {
            const qltkit::CaptureReport report{static_cast<std::uint8_t>(i),
                                               static_cast<std::uint8_t>(i >> 8), 0, thread};
            const long before = ThreadAllocationCount();
            writer.AddReport(report.data());
            allocations += ThreadAllocationCount() - before;
            if (i % 100 == 0)
            {
                writer.AddText(qltkit::CaptureLevel::Info, std::string(100, 'x'));
            }
        }
        EXPECT_EQ(allocations, 0);
    };
    std::thread other(add, std::uint8_t{1});
    add(0);
    other.join();
    writer.Close();
    EXPECT_GT(writer.DroppedReports(), 0u);
    EXPECT_GT(writer.DroppedOthers(), 0u);
    EXPECT_EQ(writer.Reports() + writer.DroppedReports(), 2 * EACH);

    const Contents read("overflow.mcap");
    EXPECT_EQ(read.Problem(), "");
    EXPECT_EQ(read.reports, writer.Reports());
    std::uint64_t dropped[2] = {};
    std::uint64_t texts = 0;
    std::int64_t last[2] = {-1, -1};
    for (const qltkit::CaptureItem& item : read.items)
    {
        if (item.kind == Kind::Event)
        {
            const bool isReports = item.text.find(" reports") != std::string::npos;
            dropped[isReports ? 0 : 1] += std::stoul(item.text);
        }
        texts += item.kind == Kind::Text ? 1 : 0;
        // Each thread's entries keep their order, and none is read twice.
        if (item.kind == Kind::Report)
        {
            const std::int64_t number = item.report[0] | item.report[1] << 8;
            EXPECT_GT(number, last[item.report[3]]);
            last[item.report[3]] = number;
        }
    }
    EXPECT_EQ(dropped[0], writer.DroppedReports());
    EXPECT_EQ(dropped[1], writer.DroppedOthers());
    EXPECT_EQ(texts + dropped[1], 2 * EACH / 100);
    EXPECT_EQ(read.metadata.at("capture.end").at("dropped.reports"), std::to_string(dropped[0]));
}

TEST(CaptureWriterDeathTest, AKilledProcessLeavesAllButTheLastSecond)
{
    std::filesystem::remove("killed.part.mcap");
    const auto die = []
    {
        qltkit::CaptureWriter writer("killed.mcap");
        qltkit::SoftwareHeadset headset(1, false);
        for (int i = 0; i < 500; ++i)
        {
            writer.AddReport(headset.Next().report.data());
        }
        // The test asks for no flush. The writer flushes by itself once a second.
        Until([&] { return writer.WrittenReports() >= 500; });
        writer.AddReport(headset.Next().report.data());
        std::_Exit(7); // no destructor runs and no buffer is flushed
    };
    EXPECT_EXIT(die(), testing::ExitedWithCode(7), "");
    const Contents read("killed.part.mcap");
    EXPECT_GE(read.reports, 500u);
    EXPECT_NE(read.Problem().find("cut off"), std::string::npos) << read.Problem();
    EXPECT_EQ(read.metadata.count("capture"), 1u);

    // A new capture does not overwrite it.
    qltkit::CaptureWriter writer("killed.mcap");
    EXPECT_EQ(writer.TemporaryPath(), "killed.part2.mcap");
    EXPECT_EQ(Contents("killed.part.mcap").reports, read.reports);
}

TEST(CaptureWriterTest, AFileThatCannotBeWrittenIsReportedWithASentence)
{
    std::filesystem::create_directories("folder.mcap");
    EXPECT_EQ(Refusal("folder.mcap"), "cannot write folder.mcap: it is a folder");
    EXPECT_EQ(Refusal("no such/folder.mcap").substr(0, 20), "cannot write no such");
    if (std::filesystem::exists("/dev/full"))
    {
        EXPECT_EQ(Refusal("/dev/full"), "cannot write /dev/full: No space left on device");
    }
    qltkit::CaptureWriter writer("frames.mcap");
    const std::string pixels((std::size_t{4} << 20) + 1, 'x');
    EXPECT_THROW(writer.AddFrame({4, 4, 4, "mono8", "too few"}), qltkit::Error);
    EXPECT_THROW(writer.AddFrame({1, 1, (4 << 20) + 1, "mono8", pixels}), qltkit::Error);
    EXPECT_THROW(writer.AddFrame({1, 0x10000, 0x10000, "mono8", ""}), qltkit::Error);
    // The error names the temporary file when it cannot be renamed.
    std::filesystem::create_directories("frames.mcap/in the way");
    EXPECT_THROW(writer.Close(), qltkit::Error);
    EXPECT_EQ(Contents("frames.part.mcap").Problem(), "");
    std::filesystem::remove_all("frames.mcap");
}
