#include <qlt/Sensors/Hmd.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/EventLog.h"
#include "fakes/ManualClock.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <memory>

namespace
{

using Device = ScriptedUsbHost::Device;

class HmdTest : public testing::Test
{
protected:
    void SetUp() override
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }

    /// Ends everything and collects what was printed.
    void TearDown() override
    {
        host.Unplug();
        clock.KeepAwake();
        if (hmd != nullptr && hmd->IsTracking())
        {
            hmd->Stop();
            hmd->RemoveListener(log);
        }
        hmd.reset();
        EXPECT_EQ(host.Opened(), host.Closed());
        if (!mCollected)
        {
            Collect();
        }
    }

    void Collect()
    {
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
        mCollected = true;
        if (HasFailure())
        {
            std::cout << out; // which holds what failed
        }
    }

    /// A headset whose connection watcher has looked once.
    void MakeHmd()
    {
        hmd = std::make_unique<qlt::Hmd>(host, clock);
        clock.WaitForSleep(1);
    }

    void Start()
    {
        hmd->AddListener(log);
        hmd->Start();
    }

    /// Lets the watcher look once more.
    void WatchAgain()
    {
        clock.Wake();
        clock.WaitForSleep(++mWatches);
    }

    ScriptedUsbHost host;
    ManualClock clock;
    EventLog log;
    std::unique_ptr<qlt::Hmd> hmd;
    std::string out;
    std::string err;

private:
    int mWatches = 1;
    bool mCollected = false;
};

/// How often `part` occurs in `text`.
int Occurrences(const std::string& text, const std::string& part)
{
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    {
        ++count;
    }
    return count;
}

} // namespace

TEST_F(HmdTest, WithoutADeviceItStaysSilentAndLooksOnceASecond)
{
    MakeHmd();
    EXPECT_FALSE(hmd->IsConnected());
    EXPECT_EQ(clock.lastSleepNs, 1000000000);
    WatchAgain();
    Start();
    TearDown();
    EXPECT_EQ(log.Count(), 0u);
    EXPECT_EQ(out + err, "");
}

TEST_F(HmdTest, DevicesThatAreNotTheHeadsetAreClosedSilently)
{
    const Device others[] = {
        {0x04B5, 0x00F1, {0, 3}}, {0x04B4, 0x00F2, {0, 3}}, {0x04B4, 0x00F1, {0}},
        {0x04B4, 0x00F1, {}},     {0x04B4, 0x00F1, {3}},    {0x04B4, 0x00F1, {0, 2, 1, 0x83}},
    };
    host.Plug(others[0]);
    MakeHmd();
    for (const Device& other : others)
    {
        host.Plug(other);
        WatchAgain();
        EXPECT_FALSE(hmd->IsConnected());
    }
    EXPECT_EQ(host.Opened(), 7);
    EXPECT_EQ(host.Closed(), 7);
    TearDown();
    EXPECT_EQ(out + err, "");
}

TEST_F(HmdTest, ReadsTheFirstInterruptEndPointAfterTheControlOne)
{
    host.Plug({0x04B4, 0x00F1, {3, 2, 3, 3}});
    MakeHmd();
    EXPECT_TRUE(hmd->IsConnected());
    Start();
    host.WaitForIdleRead();
    EXPECT_EQ(host.LastEndPoint(), 2);
    TearDown();
    EXPECT_EQ(out, "USB Connected\nUSB Disconnected\n");
}

TEST_F(HmdTest, AReportBecomesSevenEventsInOrderWithCountedTime)
{
    AssertionRecorder assertions;
    host.Plug({});
    MakeHmd();
    Start();
    for (std::uint32_t i = 0; i < 3; ++i)
    {
        ReportWriter report(100 + i, 7000000 + 5000 * i);
        host.QueueRead(report.I16(34, 8000).U32(44, 1000000));
    }
    const std::vector<std::string> lines = log.WaitFor(21);
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
    TearDown();
    EXPECT_EQ(assertions.Take(), std::vector<std::string>{});
}

TEST_F(HmdTest, EveryOtherLengthOfAReadIsReportedAndDisconnects)
{
    MakeHmd();
    Start();
    host.Plug({});
    std::string expected;
    for (std::uint32_t length = 0; length < 64; ++length)
    {
        host.QueueRead(ReportWriter(1), length, length % 2 == 0);
        WatchAgain();
        host.WaitForClosed(static_cast<int>(length) + 1);
        expected += "Read " + std::to_string(length) + " instead of 64!\n";
    }
    EXPECT_EQ(log.Count(), 0u);
    // A failed transfer counts as its length: here is a whole report.
    host.QueueRead(ReportWriter(1), 64, false);
    WatchAgain();
    log.WaitFor(7);
    host.WaitForIdleRead();
    TearDown();
    EXPECT_EQ(err, expected + "Read 0 instead of 64!\n");
    EXPECT_EQ(Occurrences(out, "USB Connected\n"), 65);
    EXPECT_EQ(Occurrences(out, "USB Disconnected\n"), 65);
}

TEST_F(HmdTest, UnplugWhileReadingDisconnectsAndReplugReconnects)
{
    host.Plug({});
    MakeHmd();
    Start();
    for (int round = 0; round < 3; ++round)
    {
        host.QueueRead(ReportWriter(1));
        log.WaitFor(7u * static_cast<std::size_t>(round + 1));
        host.WaitForIdleRead();
        host.Unplug();
        host.WaitForClosed(round + 1);
        EXPECT_FALSE(hmd->IsConnected());
        host.Plug({});
        WatchAgain(); // and the next round reads again
    }
    // Reports are counted, whatever happened between them.
    EXPECT_EQ(log.WaitFor(21)[14], "accelerometer 0.0121987 0.910223 0.0197377 @ 0.002");
    host.WaitForIdleRead(); // so that the end of the test finds a read to break off
    TearDown();
    EXPECT_EQ(Occurrences(err, "Read 0 instead of 64!\n"), 4);
}

TEST_F(HmdTest, TheDestructorClosesTheDevice)
{
    host.Plug({});
    MakeHmd();
    EXPECT_EQ(host.Opened(), 1);
    clock.KeepAwake();
    hmd.reset();
    EXPECT_EQ(host.Closed(), 1);
    TearDown();
    EXPECT_EQ(out, "USB Connected\nUSB Disconnected\n");
}

TEST_F(HmdTest, ThePredictionCarriesTheYawOriginTwice)
{
    host.Plug({});
    MakeHmd();
    Start();
    ReportWriter turned(1);
    host.QueueRead(turned.I16(18, 0).I16(16, 32000));
    log.WaitFor(7);
    clock.nowNs += 500000000;
    host.QueueRead(turned);
    log.WaitFor(14);
    hmd->ResetYawOrigin();
    const qlt::Quaternion once = hmd->GetOrientation();
    const qlt::Quaternion twice = hmd->GetPredictedOrientation(0.1f);
    EXPECT_NEAR(qlt::Quaternion::Rotate(once, qlt::Vec3(0, 0, -1)).x(), 0.0f, 1e-4f);
    EXPECT_GT(std::abs(qlt::Quaternion::Rotate(twice, qlt::Vec3(0, 0, -1)).x()), 0.1f);
}

namespace
{

/// The reports, bit 0 for the first, at which the fusion starts again while these sequence numbers
/// are read. The headset turns by a tenth of a radian with every report, so that w falls unless
/// there is a new start.
int ResetsAt(const std::vector<std::uint32_t>& sequences)
{
    ScriptedUsbHost host;
    ManualClock clock;
    EventLog log;
    host.Plug({});
    qlt::Hmd hmd(host, clock);
    clock.WaitForSleep(1);
    hmd.AddListener(log);
    hmd.Start();
    int resets = 0;
    float lastW = 1.0f;
    for (std::size_t i = 0; i < sequences.size(); ++i)
    {
        clock.nowNs += 10000000;
        host.QueueRead(ReportWriter(sequences[i]).I16(16, 18771)); // 10 rad/s about y
        log.WaitFor(7 * (i + 1));
        const float w = hmd.GetOrientation().w();
        resets |= w >= lastW ? 1 << i : 0; // from the third report on: the first turns by half
        lastW = w;
    }
    host.WaitForIdleRead();
    host.Unplug();
    clock.KeepAwake();
    hmd.Stop();
    hmd.RemoveListener(log);
    return resets;
}

} // namespace

// Each in a process of its own, because a process resynchronises once.
TEST(HmdDeathTest, TheFirstJumpOfTheSequenceResetsTheFusionOnce)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const struct
    {
        std::vector<std::uint32_t> sequences;
        int resetsAt;
    } rows[] = {
        {{100, 101, 111, 112}, 0},                // ten is no jump
        {{100, 101, 112, 113}, 1 << 2},           // eleven is
        {{100, 101, 115, 116}, 1 << 2},           //
        {{100, 101, 100, 101}, 1 << 2},           // backwards
        {{100, 101, 115, 200, 50, 51}, 1 << 2},   // no second time
        {{0xFFFFFFFEu, 0xFFFFFFFFu, 0}, 0},       // around
        {{0xFFFFFFFEu, 0xFFFFFFFFu, 11}, 1 << 2}, // a jump around
        {{5, 5, 5, 5}, 0},                        // standing still
    };
    for (const auto& row : rows)
    {
        EXPECT_EXIT(std::exit(ResetsAt(row.sequences)), testing::ExitedWithCode(row.resetsAt), "");
    }
}
