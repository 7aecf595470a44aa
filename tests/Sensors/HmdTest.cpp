#include <qlt/Sensors/Hmd.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

namespace
{

const std::string CAME_AND_WENT = "USB Connected\nUSB Disconnected\n";

std::string Times(int count, const std::string& part)
{
    return count == 0 ? "" : part + Times(count - 1, part);
}

/// The reports, bit 0 for the first, at which the fusion starts again while these sequence numbers
/// are read. The headset turns by a tenth of a radian with every report, so that w falls unless
/// there is a new start.
int ResetsAt(const std::vector<std::uint32_t>& sequences)
{
    ScriptedHeadset headset;
    headset.Start(headset.log);
    int resets = 0;
    float lastW = 1.0f;
    for (std::size_t i = 0; i < sequences.size(); ++i)
    {
        headset.clock.nowNs += 10000000;
        headset.Deliver(ReportWriter(sequences[i]).I16(16, 18771)); // 10 rad/s about y
        const float w = headset.hmd->GetOrientation().w();
        resets |= w >= lastW ? 1 << i : 0; // from the third report on: the first turns by half
        lastW = w;
    }
    headset.End();
    return resets;
}

} // namespace

TEST(HmdTest, OnlyTheHeadsetIsKeptOpenAndSoughtOnceASecond)
{
    const ScriptedUsbHost::Device others[] = {
        {0x04B5, 0x00F1, {0, 3}}, {0x04B4, 0x00F2, {0, 3}}, {0x04B4, 0x00F1, {0}},
        {0x04B4, 0x00F1, {}},     {0x04B4, 0x00F1, {3}},    {0x04B4, 0x00F1, {0, 2, 1, 0x83}},
    };
    ScriptedHeadset headset(others[0]);
    for (const auto& other : others)
    {
        headset.host.Plug(other);
        headset.clock.Cycle();
        EXPECT_FALSE(headset.hmd->IsConnected());
        EXPECT_EQ(headset.clock.lastSleepNs, 1000000000);
    }
    EXPECT_EQ(headset.host.closed, 7);
    headset.host.Plug({});
    headset.clock.Cycle();
    EXPECT_TRUE(headset.hmd->IsConnected());
    headset.End(); // which closes the device
    EXPECT_EQ(headset.out, CAME_AND_WENT);
    EXPECT_EQ(headset.err, "");
}

TEST(HmdTest, AReportBecomesSevenEventsInOrderWithCountedTime)
{
    AssertionRecorder assertions;
    ScriptedHeadset headset;
    headset.Start(headset.log);
    for (std::uint32_t i = 0; i < 3; ++i)
    {
        headset.Deliver(ReportWriter(100 + i, 7000000 + 5000 * i).I16(34, 8000).U32(44, 1000000));
    }
    const std::vector<std::string> lines = headset.log.WaitFor(21);
    const char* const kinds[] = {"accelerometer", "gyroscope", "magnetometer", "quaternion",
                                 "temperature",   "position",  "orientation"};
    const char* const times[] = {" @ 0", " @ 0.001", " @ 0.002"};
    for (std::size_t i = 0; i < lines.size(); ++i)
    {
        EXPECT_EQ(lines[i].substr(0, lines[i].find(' ')), kinds[i % 7]);
        EXPECT_EQ(lines[i].substr(lines[i].find(" @ ")), times[i / 7]);
    }
    // The device's own estimate, not the fused one: w alone is a quarter turn about x.
    EXPECT_EQ(lines[3], "quaternion 0.707107 0.707107 0 -0 @ 0");
    EXPECT_EQ(lines[4], "temperature 31.25 @ 0");
    // The device's own position is not believed; the host service has none.
    EXPECT_EQ(lines[5], "position 0 0 0 @ 0");
    headset.End();
    EXPECT_TRUE(assertions.Take().empty());
}

TEST(HmdTest, EveryOtherLengthOfAReadIsReportedAndDisconnects)
{
    ScriptedHeadset headset;
    headset.Start(headset.log);
    std::string expected;
    for (int length = 0; length < 64; ++length)
    {
        headset.host.QueueRead(ReportWriter(1), static_cast<std::uint32_t>(length), length % 2);
        Until([&] { return headset.host.closed > length; });
        headset.clock.Cycle();
        expected += "Read " + std::to_string(length) + " instead of 64!\n";
    }
    EXPECT_EQ(headset.log.Count(), 0u);
    // A failed transfer counts as its length: here is a whole report.
    headset.host.QueueRead(ReportWriter(1), 64, false);
    headset.host.WaitForIdleRead();
    EXPECT_EQ(headset.log.Count(), 7u);
    headset.End();
    EXPECT_EQ(headset.err, expected + "Read 0 instead of 64!\n");
    EXPECT_EQ(headset.out, Times(65, CAME_AND_WENT));
}

TEST(HmdTest, UnplugWhileReadingDisconnectsAndReplugReconnects)
{
    const ScriptedUsbHost::Device device{0x04B4, 0x00F1, {3, 2, 3, 3}};
    ScriptedHeadset headset(device);
    headset.Start(headset.log);
    for (int round = 1; round <= 3; ++round)
    {
        EXPECT_EQ(headset.host.WaitForIdleRead(), 2); // the first interrupt one but the control one
        headset.Deliver(ReportWriter(1));
        headset.host.Unplug();
        Until([&] { return headset.host.closed == round; });
        EXPECT_FALSE(headset.hmd->IsConnected());
        headset.host.Plug(device);
        headset.clock.Cycle();
    }
    // Reports are counted, whatever happened between them.
    EXPECT_EQ(headset.log.WaitFor(21)[14], "accelerometer 0.0121987 0.910223 0.0197377 @ 0.002");
    headset.host.WaitForIdleRead(); // so that the end finds a read to break off
    headset.End();
    EXPECT_EQ(headset.err, Times(4, "Read 0 instead of 64!\n"));
}

TEST(HmdTest, ThePredictionCarriesTheYawOriginTwice)
{
    ScriptedHeadset headset;
    headset.Start(headset.log);
    for (int i = 0; i < 2; ++i)
    {
        headset.clock.nowNs += 250000000;
        headset.Deliver(ReportWriter(1).I16(18, 0).I16(16, 32000));
    }
    headset.hmd->ResetYawOrigin();
    const qlt::Vec3 forward(0, 0, -1);
    const qlt::Quaternion once = headset.hmd->GetOrientation();
    EXPECT_NEAR(qlt::Quaternion::Rotate(once, forward).x(), 0.0f, 1e-4f);
    const qlt::Quaternion twice = headset.hmd->GetPredictedOrientation(0.1f);
    EXPECT_GT(std::abs(qlt::Quaternion::Rotate(twice, forward).x()), 0.1f);
    headset.End();
}

// Each in a process of its own, because a process resynchronises once.
TEST(HmdDeathTest, TheFirstJumpOfTheSequenceResetsTheFusionOnce)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::pair<std::vector<std::uint32_t>, int> resets[] = {
        {{100, 101, 111, 112}, 0},                // ten is no jump
        {{100, 101, 112, 113}, 1 << 2},           // eleven is
        {{100, 101, 100, 101}, 1 << 2},           // backwards
        {{100, 101, 115, 200, 50, 51}, 1 << 2},   // no second time
        {{0xFFFFFFFEu, 0xFFFFFFFFu, 0}, 0},       // around
        {{0xFFFFFFFEu, 0xFFFFFFFFu, 11}, 1 << 2}, // a jump around
        {{5, 5, 5, 5}, 0},                        // standing still
    };
    for (const auto& [sequences, at] : resets)
    {
        EXPECT_EXIT(std::exit(ResetsAt(sequences)), testing::ExitedWithCode(at), "");
    }
}
