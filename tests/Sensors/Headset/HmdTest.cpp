#include <qlt/Sensors/Hmd.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/ExpectNear.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedHeadset.h"

#include <gtest/gtest.h>

namespace
{

const std::string CAME_AND_WENT = "USB Connected\nUSB Disconnected\n";
const std::string BROKEN_OFF = "Read 0 instead of 64!\n";

/// The indices of the reports at which the fusion is reset, for these sequence numbers. The headset
/// turns by a tenth of a radian with every report, so w decreases unless the fusion is reset.
std::vector<std::size_t> ResetsAt(const std::vector<std::uint32_t>& sequences)
{
    ScriptedHeadset headset;
    headset.Start(headset.log);
    std::vector<std::size_t> resets;
    float lastW = 1.0f;
    for (std::size_t i = 0; i < sequences.size(); ++i)
    {
        headset.clock.nowNs += 10000000;
        headset.Deliver(ReportWriter(sequences[i]).I16(16, 18771)); // 10 rad/s about y
        const float w = headset.hmd->GetOrientation().w();
        if (w >= lastW)
        {
            resets.push_back(i);
        }
        lastW = w;
    }
    headset.End();
    return resets;
}

} // namespace

TEST(HmdTest, TheHeadsetIsSoughtOnceASecondAndOtherDevicesAreClosed)
{
    const ScriptedDevice others[] = {
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
    headset.host.Plug({0x04B4, 0x00F1, {3, 2, 3, 3}});
    headset.clock.Cycle();
    EXPECT_TRUE(headset.hmd->IsConnected());
    headset.Start(headset.log);
    // The first interrupt endpoint after the control endpoint.
    EXPECT_EQ(headset.host.WaitForIdle(), 2);
    headset.End(); // a wrong length closes the device
    EXPECT_EQ(headset.out + headset.err, CAME_AND_WENT + BROKEN_OFF);
}

TEST(HmdTest, AReportBecomesSevenEventsInOrderWithCountedTime)
{
    AssertionRecorder assertions;
    ScriptedHeadset headset;
    headset.Start(headset.log);
    headset.Deliver(ReportWriter(1).I16(34, 8000).U32(44, 1000000));
    headset.Deliver(ReportWriter(2, 7000000));
    // The quaternion event has the device's own estimate and not the fused orientation. An estimate
    // with only w is a quarter turn about x. The position of the report is not used, and the host
    // service has no position.
    EXPECT_EQ(headset.log.WaitFor(8),
              (std::vector<std::string>{
                  "accelerometer 0.0121987 0.910223 0.0197377 @ 0",
                  "gyroscope 0.00555505 0.00799716 0.00657676 @ 0", "magnetometer -0 0 0 @ 0",
                  "quaternion 0.707107 0.707107 0 -0 @ 0", "temperature 31.25 @ 0",
                  "position 0 0 0 @ 0", "orientation 1 -1.08404e-05 0 6.69979e-06 @ 0",
                  "accelerometer 0.0121987 0.910223 0.0197377 @ 0.001"}));
    headset.End();
    EXPECT_TRUE(assertions.Take().empty());
}

TEST(HmdTest, AReadOfAWrongLengthIsReportedAndDisconnects)
{
    ScriptedHeadset headset;
    headset.Start(headset.log);
    std::string err, out;
    for (int length = 0; length < 64; ++length)
    {
        headset.host.QueueRead(ReportWriter(1), static_cast<std::uint32_t>(length), length % 2);
        Until([&] { return headset.host.closed > length; });
        headset.clock.Cycle();
        err += "Read " + std::to_string(length) + " instead of 64!\n";
        out += CAME_AND_WENT;
    }
    EXPECT_EQ(headset.log.Count(), 0u);
    // A failed transfer is judged by its length, and this one has a whole report.
    headset.host.QueueRead(ReportWriter(1), 64, false);
    headset.host.WaitForIdle();
    EXPECT_EQ(headset.log.Count(), 7u);
    // The time counts the reports and ignores what happens between them.
    headset.host.QueueRead(ReportWriter(1), 0, false);
    Until([&] { return headset.host.closed > 64; });
    headset.clock.Cycle();
    headset.Deliver(ReportWriter(1));
    EXPECT_EQ(headset.log.WaitFor(8)[7], "accelerometer 0.0121987 0.910223 0.0197377 @ 0.001");
    headset.End();
    EXPECT_EQ(headset.err, err + BROKEN_OFF + BROKEN_OFF);
    EXPECT_EQ(headset.out, out + CAME_AND_WENT + CAME_AND_WENT);
}

TEST(HmdTest, ThePredictionCarriesTheYawOriginTwice)
{
    ScriptedHeadset headset;
    headset.Start(headset.log);
    headset.clock.nowNs += 250000000;
    headset.Deliver(ReportWriter(1).I16(16, 32000));
    const qlt::Quaternion raw = headset.hmd->GetOrientation();
    headset.hmd->ResetYawOrigin();
    const qlt::Quaternion once = headset.hmd->GetOrientation();
    EXPECT_GT(std::abs(once.y() - raw.y()), 0.1f);
    ExpectNear(headset.hmd->GetPredictedOrientation(0.1f), once * raw.Conjugate() * once, 1e-6f);
    headset.End();
}

TEST(HmdTest, AHeadsetThatIsDeletedWhileItMovesEndsItsThreadsFirst)
{
    AssertionRecorder assertions;
    for (int i = 0; i < 20; ++i)
    {
        ScriptedHeadset headset;
        headset.Start(headset.log);
        for (std::uint32_t sequence = 0; sequence < 1000; ++sequence)
        {
            headset.host.QueueRead(ReportWriter(sequence, 1000 * sequence));
        }
        headset.log.WaitFor(7);
        headset.listener = nullptr; // the test leaks the tracker, so nobody stops it
        headset.End();
    }
    for (const std::string& report : assertions.TakeTexts())
    {
        EXPECT_NE(report.find("|Sensors/Tracker"), std::string::npos) << report;
    }
}

// Each row runs in its own process, because the reset happens once in a process.
TEST(HmdDeathTest, TheFirstJumpOfTheSequenceResetsTheFusionOnce)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::pair<std::vector<std::uint32_t>, std::vector<std::size_t>> rows[] = {
        {{100, 101, 111, 112}, {}},            // a step of ten is no jump
        {{100, 101, 112, 113}, {2}},           // a step of eleven is one
        {{100, 101, 100, 101}, {2}},           // backwards
        {{100, 101, 115, 200, 50, 51}, {2}},   // the second jump is ignored
        {{0xFFFFFFFEu, 0xFFFFFFFFu, 0}, {}},   // the numbers wrap around
        {{0xFFFFFFFEu, 0xFFFFFFFFu, 11}, {2}}, // a jump over the wrap
        {{5, 5, 5, 5}, {}},                    // standing still
    };
    for (const auto& [sequences, resets] : rows)
    {
        EXPECT_EXIT(std::exit(ResetsAt(sequences) == resets ? 0 : 1), testing::ExitedWithCode(0),
                    "")
            << sequences[2];
    }
}
