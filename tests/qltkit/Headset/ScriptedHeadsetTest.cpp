#include <qltkit/Headset/ScriptedHeadset.h>

#include <qltkit/Capture/CaptureWriter.h>
#include <qltkit/Error.h>
#include <qltkit/Headset/SoftwareHeadset.h>

#include "fakes/HashOf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <future>
#include <iterator>
#include <random>
#include <sstream>

namespace
{

using qltkit::HeadsetScript;
using qltkit::ParseHeadsetScript;
using qltkit::ScriptedHeadset;
using Pace = ScriptedHeadset::Pace;

constexpr double RAD_PER_DEG = 0.017453292519943295;

HeadsetScript Shipped(const std::string& name)
{
    return qltkit::LoadHeadsetScript(std::string(QLT_SCRIPTS) + "/" + name + ".json");
}

/// A script of a head at rest, with these additional fields.
HeadsetScript Resting(const std::string& fields)
{
    return ParseHeadsetScript(R"({"motion": {"kind": "rest"}, )" + fields + "}");
}

struct Read
{
    qlt::SensorReport report{};
    std::uint32_t length = 64;
    qltkit::ScriptedTruth truth;
    qlt::SensorSample Sample() const { return qlt::DecodeSensorReport(report); }
};

qlt::Vec3 InDegrees(const qlt::Vec3& v) { return v * static_cast<float>(1.0 / RAD_PER_DEG); }

/// The result of one read of the first endpoint.
Read ReadOnce(ScriptedHeadset& headset, qlt::VendorUsbDevice& device)
{
    Read read;
    const bool succeeded = device.EndPoint(1).TransferData(read.report.data(), read.length);
    EXPECT_EQ(succeeded, read.length > 0);
    read.truth = headset.Truth();
    return read;
}

/// All reads of a script. After an incomplete read the device is opened again. While there is no
/// device, the clock moves on. A device that is no headset counts as a read of length 1000.
std::vector<Read> ReadAll(ScriptedHeadset& headset)
{
    std::vector<Read> reads;
    while (!headset.IsOver())
    {
        const auto device = headset.OpenFirst();
        if (device == nullptr || device->ProductId() != 0x00F1)
        {
            reads.insert(reads.end(), device == nullptr ? 0 : 1, {{}, 1000, {}});
            headset.SleepNs(1000000000);
            continue;
        }
        do
        {
            reads.push_back(ReadOnce(headset, *device));
        } while (reads.back().length == 64 && !headset.IsOver());
    }
    return reads;
}

std::vector<Read> ReadAll(const HeadsetScript& script)
{
    ScriptedHeadset headset(script, Pace::Fastest);
    return ReadAll(headset);
}

/// The reads as a text. "7@6.5" says that report 7 arrives 6.5 ms after the start. "7(2000)@6.5"
/// says that its device time is 2000 us, although it should be 1006000. "[17]" is a read of 17
/// bytes.
std::string Trace(const std::string& events)
{
    std::ostringstream trace;
    const std::string begin = R"("seconds": 0.006, "events": [{"at": )";
    for (const Read& read : ReadAll(Resting(begin + events + "]")))
    {
        const std::uint32_t sequence = read.truth.sequence;
        const std::uint32_t us = read.report[4] | read.report[5] << 8 | read.report[6] << 16;
        trace << (trace.tellp() > 0 ? " " : "");
        if (read.length != 64)
        {
            trace << "[" << read.length << "]";
            continue;
        }
        EXPECT_EQ(read.Sample().sequence, sequence);
        trace << sequence << (us == 999000 + 1000 * sequence ? "" : "(" + std::to_string(us) + ")");
        trace << "@" << static_cast<double>(read.truth.arrivalNs / 1000) / 1000.0;
    }
    return trace.str();
}

} // namespace

TEST(ScriptedHeadsetTest, EachEventChangesTheReads)
{
    // Each row has events and reads. The first event is at 2 ms unless the row says otherwise.
    const std::pair<const char*, const char*> cases[] = {
        // The other device comes after the headset.
        {R"(0.002, "event": "foreign_plug"})", "1@0 2@1 3@2 4@3 5@4 6@5"},
        {R"(0.002, "event": "unplug"})", "1@0 2@1"},
        {R"(0.002, "event": "unplug"}, {"at": 0.0041, "event": "plug"})",
         "1@0 2@1 [0] 1@4.1 2@5.1"},
        {R"(0.002, "event": "stall", "for": 0.0025})", "1@0 2@1 3@4.5 4@4.5 5@4.5 6@5"},
        {R"(0.002, "event": "stall", "for": 9}, {"at": 0.004, "event": "unplug"},
            {"at": 0.005, "event": "plug"})",
         "1@0 2@1 [0] 1@5"},
        {R"(0.002, "event": "short_read", "length": 17})", "1@0 2@1 [17] 4@3 5@4 6@5"},
        {R"(0.002, "event": "short_read", "length": 0})", "1@0 2@1 [0] 4@3 5@4 6@5"},
        {R"(0.005, "event": "sequence_jump", "by": -7})",
         "1@0 2@1 3@2 4@3 5@4 4294967295(1005000)@5"},
        {R"(0, "event": "sequence_jump", "by": 7})",
         "8(1000000)@0 9(1001000)@1 10(1002000)@2 11(1003000)@3 12(1004000)@4 13(1005000)@5"},
        {R"(0.002, "event": "repeat", "count": 2})", "1@0 2@1 3@2 3@2 3@2 4@3 5@4 6@5"},
        {R"(0.002, "event": "drop", "count": 2}, {"at": 0.002, "event": "repeat", "count": 1})",
         "1@0 2@1 5@4 5@4 6@5"},
        {R"(0.004, "event": "clock_jump", "us": -4500})",
         "1@0 2@1 3@2 4@3 5(999500)@4 6(1000500)@5"},
        {R"(0.002, "event": "clock_drift", "ppm": 100000})",
         "1@0 2@1 3@2 4@2.909 5@3.818 6@4.727 7@5.636"},
        {R"(0, "event": "foreign_plug"}, {"at": 0.003, "event": "foreign_unplug"})",
         "[1000] 4@3 5@4 6@5"},
    };
    for (const auto& [events, reads] : cases)
    {
        EXPECT_EQ(Trace(events), reads) << events;
    }
}

TEST(ScriptedHeadsetTest, EachFaultIsSeenInTheValuesOfTheTracker)
{
    const auto last = [](const std::string& fields)
    { return ReadAll(Resting(R"("seconds": 0.5, "sensors": )" + fields)).back().Sample(); };
    // Each axis is within half a count: 0.0305 degrees a second, 0.000122 g, 0.000146 gauss.
    const auto expectNear = [](const qlt::Vec3& v, const qlt::Vec3& expected, float count)
    { EXPECT_LT((v - expected).Length(), 0.9f * count); };
    auto sample = last(R"({"gyroscope": {"bias": [10, -20, 30]}, "accelerometer":
        {"bias": [0.25, 0.5, -0.125], "scale": [2, 0.5, 1]}, "magnetometer": {"bias": [0.5, 0, -0.25]}})");
    expectNear(InDegrees(sample.gyroscope), {10, -20, 30}, 0.0305f);
    expectNear(sample.accelerometer, {0.25f, 1.0f, -0.125f}, 0.000122f);
    expectNear(sample.magnetometer, {0.5f, -0.45f, -0.45f}, 0.000146f);
    // The last report is 1 ms before the end of a ramp by 3 degrees.
    sample = last(R"({"temperature": {"from": 27, "to": 30, "begin": 0, "end": 0.5},
        "gyroscope": {"bias_per_kelvin": [1, 2, -3], "bias": [0, 1, 0], "clip": 6.5}})");
    EXPECT_NEAR(sample.temperature, 29.994, 0.002);
    expectNear(InDegrees(sample.gyroscope), {2.994f, 6.5f, -6.5f}, 0.0305f);

    const auto reads = ReadAll(Resting(R"("seconds": 4, "seed": 3, "sensors": {"gyroscope":
        {"noise": 2}}, "events": [{"at": 3, "event": "stick", "sensor": "gyroscope",
        "axis": "y", "for": 0.05}])"));
    double squares = 0.0;
    for (const Read& read : reads)
    {
        squares += std::pow(static_cast<double>(InDegrees(read.Sample().gyroscope).x()), 2.0);
    }
    // The standard error of the estimate is 0.02.
    EXPECT_NEAR(std::sqrt(squares / 4000.0), 2.0, 0.1);
    const auto y = [&reads](std::size_t i) { return reads[i].Sample().gyroscope.y(); };
    for (std::size_t i = 3000; i < 3050; ++i)
    {
        EXPECT_EQ(y(i), y(2999));
    }
    EXPECT_NE(y(3050), y(2999));
    EXPECT_NE(y(2998), y(2999));
}

TEST(ScriptedHeadsetTest, TheHeadGoesSmoothlyThroughItsPointsAndNoFurther)
{
    const HeadsetScript script = ParseHeadsetScript(R"({"seconds": 5, "motion": {"kind": "angles",
        "points": [{"at": 1, "yaw": 10}, {"at": 2, "yaw": 50, "pitch": -20}, {"at": 2.5, "yaw": 60,
        "roll": 30}, {"at": 4, "yaw": 60}]}})");
    const auto reads = ReadAll(script);
    ASSERT_EQ(reads.size(), 5000u);
    const auto degrees = [](double radians) { return radians / RAD_PER_DEG; };
    for (const auto& point : script.points)
    {
        const auto& angles = reads[static_cast<std::size_t>(point.atS * 1000.0)].truth.angles;
        EXPECT_NEAR(degrees(angles.yaw), point.yawDeg, 1e-9);
        EXPECT_NEAR(degrees(angles.pitch), point.pitchDeg, 1e-9);
        EXPECT_NEAR(degrees(angles.roll), point.rollDeg, 1e-9);
    }
    EXPECT_NEAR(degrees(reads[0].truth.angles.yaw), 10.0, 1e-9);
    for (std::size_t i = 1; i + 1 < reads.size(); ++i)
    {
        const auto& before = reads[i - 1].truth.angles;
        const auto& here = reads[i].truth.angles;
        const auto& after = reads[i + 1].truth.angles;
        ASSERT_GE(after.yaw, here.yaw) << i; // the angle never decreases on its way up
        ASSERT_NEAR(degrees(here.yawRate), degrees(after.yaw - before.yaw) / 0.002, 0.2) << i;
        ASSERT_NEAR(degrees(here.rollRate), degrees(after.roll - before.roll) / 0.002, 0.2) << i;
        ASSERT_NEAR(degrees(here.pitchRate - before.pitchRate), 0.0, 1.0) << i;
    }
    EXPECT_EQ(reads.back().truth.angles.yawRate, 0.0);
}

TEST(ScriptedHeadsetTest, AScriptWithoutFaultsEqualsTheIdealSoftwareHeadset)
{
    qltkit::SoftwareHeadset ideal(77, true);
    for (const Read& read :
         ReadAll(ParseHeadsetScript(R"({"seconds": 20, "motion": {"kind": "turns", "seed": 77}})")))
    {
        const auto sample = ideal.Next();
        ASSERT_EQ(read.report, sample.report) << read.truth.sequence;
        ASSERT_EQ(read.truth.orientation, sample.orientation);
    }
}

// The hash covers all bytes that are read, which are the same on every system. The number of
// reports is one for each millisecond. The drift and repeated reports add to it; dropped, short and
// unplugged reports reduce it.
TEST(ScriptedHeadsetTest, AShippedScriptAlwaysGivesTheSameBytes)
{
    const std::tuple<const char*, std::size_t, std::uint64_t> scripts[] = {
        {"still", 30000, 0x0FF6C382CC472622},     {"conversation", 30000, 0x26A4DA4C8FC94BF2},
        {"fast_game", 29777, 0x58D22FDBD9C642B6}, {"bad_cable", 21601, 0x61D442CFE1DEA3C8},
        {"hot_room", 60005, 0xE14D07D2A80F86DA},
    };
    for (const auto& [name, count, hash] : scripts)
    {
        std::vector<std::uint8_t> bytes;
        std::size_t whole = 0;
        for (const Read& read : ReadAll(Shipped(name)))
        {
            whole += read.length == 64 ? 1 : 0;
            bytes.insert(bytes.end(), read.report.begin(), read.report.end());
        }
        EXPECT_EQ(whole, count) << name;
        EXPECT_EQ(HashOf(bytes), hash) << name;
    }
}

TEST(ScriptedHeadsetTest, ARecordingPlaysAndObeysTheScript)
{
    qltkit::SoftwareHeadset recorded(5, false);
    std::vector<qlt::SensorReport> reports(100);
    for (auto& report : reports)
    {
        report = recorded.Next().report;
    }
    const std::filesystem::path folder = "scripted_headset_test";
    std::filesystem::create_directories(folder / "inner");
    std::ofstream(folder / "inner/walk.bin", std::ios::binary)
        .write(reinterpret_cast<const char*>(reports.data()), 6400);
    std::ofstream(folder / "cut.bin", std::ios::binary).write("cut", 3);
    qltkit::CaptureWriter capture(folder / "walk.mcap");
    for (const auto& report : reports)
    {
        capture.AddReport(report.data());
    }
    capture.Close();
    const auto parse = [&folder](const std::string& file, const std::string& fields)
    {
        return ParseHeadsetScript(
            R"({"motion": {"kind": "recording", "file": ")" + file + "\"}" + fields + "}", folder);
    };
    const auto reads = ReadAll(parse("inner/walk.bin", ""));
    ASSERT_EQ(reads.size(), 100u);
    for (std::size_t i = 0; i < reads.size(); ++i)
    {
        EXPECT_EQ(reads[i].report, reports[i]);
        EXPECT_EQ(reads[i].truth.arrivalNs, static_cast<std::int64_t>(i) * 1000000);
        EXPECT_FALSE(reads[i].truth.isKnown);
    }
    // A file is opened by its kind.
    const auto opened = qltkit::OpenScriptedHeadset((folder / "walk.mcap").string(), Pace::Fastest);
    EXPECT_EQ(ReadAll(*opened).size(), 100u);
    const auto still = qltkit::OpenScriptedHeadset(QLT_SCRIPTS "/still.json", Pace::Fastest);
    EXPECT_EQ(ReadAll(*still).size(), 30000u);
    const auto changed = ReadAll(parse("walk.mcap", R"(, "clock": {"start_us": 4294967295},
        "sensors": {"accelerometer": {"bias": [0, 1, 0]}}, "events": [{"at": 0.010, "event":
        "unplug"}, {"at": 0.030, "event": "plug"}])"));
    ASSERT_EQ(changed.size(), 81u); // the read at the gap is one of them
    EXPECT_EQ(changed[11].Sample().sequence, reads[0].Sample().sequence);
    EXPECT_EQ(changed[11].report[4], 0xFF);
    EXPECT_EQ(changed[12].report[4], 999 & 0xFF);
    EXPECT_NEAR(changed[12].Sample().accelerometer.y(), reads[31].Sample().accelerometer.y() + 1.0f,
                0.0001f);
    for (const char* file : {"../inner/walk.bin", "inner/../../walk.bin", "/etc/passwd", "inner",
                             "C:walk.bin", "inner\\\\walk.bin", "cut.bin", "missing.bin", ""})
    {
        EXPECT_THROW(parse(file, ""), qltkit::Error) << file;
    }
    EXPECT_THROW(ParseHeadsetScript(R"({"motion": {"kind": "recording", "file": "cut.bin"}})"),
                 qltkit::Error);
    std::filesystem::remove_all(folder);
}

TEST(ScriptedHeadsetTest, InRealTimeReportsComeAtTheirTimesAndAreLostWithoutAReader)
{
    qlt::Clock& clock = qlt::Clock::System();
    ScriptedHeadset headset(Resting(R"("events": [{"at": 0.4, "event": "unplug"},
        {"at": 0.45, "event": "plug"}, {"at": 1, "event": "stall", "for": 100000}])"));
    auto device = headset.OpenFirst();
    const std::int64_t beginNs = clock.NowNs();
    clock.SleepNs(250000000);
    std::uint32_t last = 0;
    for (Read read; (read = ReadOnce(headset, *device)).length == 64; last = read.truth.sequence)
    {
        EXPECT_GE(headset.NowNs(), read.truth.arrivalNs);
        EXPECT_GT(read.truth.sequence, std::max(last, 140u));
    }
    // The read in flight when the headset was unplugged.
    EXPECT_GE(clock.NowNs(), beginNs + 399000000);
    EXPECT_EQ(ReadOnce(headset, *device).length, 0u);
    EXPECT_LE(last, 400u);
    while ((device = headset.OpenFirst()) == nullptr)
    {
        headset.SleepNs(1000000);
    }
    EXPECT_EQ(ReadOnce(headset, *device).length, 64u);
    auto stalled = std::async(std::launch::async,
                              [&]
                              {
                                  while (ReadOnce(headset, *device).length == 64)
                                  {
                                  }
                              });
    headset.SleepNs(700000000);
    EXPECT_EQ(stalled.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    headset.Close();
    stalled.wait();
    headset.SleepNs(1000000000000); // this returns at once
}
