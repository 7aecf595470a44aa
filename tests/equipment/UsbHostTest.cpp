// Tests of the machine's own USB, as Usb.h describes it, and of a tracker and a camera that use it.
// They run on the emulated bus of each system.
#include <qlt/Sensors/Hmd.h>

#include "equipment/UsbHostFixture.h"
#include "fakes/EventLog.h"
#include "fakes/OpenHandles.h"
#include "fakes/ReportWriter.h"

#include <algorithm>
#include <future>
#include <iostream>
#include <random>

namespace
{

using std::chrono::steady_clock;

Bytes Report()
{
    const ReportWriter report(1);
    return {report.begin(), report.end()};
}

double SecondsSince(steady_clock::time_point start)
{
    return std::chrono::duration<double>(steady_clock::now() - start).count();
}

class UsbHostTest : public UsbHostFixture
{
protected:
    void WaitForPending(std::uint8_t endPoint)
    {
        Until([&] { return bus->Pending(endPoint) == 1; });
    }
};

/// The program destroys this object after all objects that it has made later. Its destructor takes
/// some time.
struct LateEnd
{
    ~LateEnd() { std::this_thread::sleep_for(duration); }
    std::chrono::milliseconds duration{0};
} gLateEnd;

using UsbHostDeathTest = UsbHostTest;

/// A started tracker with a listener.
class UsbHostHmdTest : public UsbHostTest
{
protected:
    void Start(qlt::Clock& by)
    {
        hmd.emplace(host, by);
        hmd->AddListener(log);
        hmd->Start();
    }

    ~UsbHostHmdTest() override
    {
        bus->Unplug(); // this ends the read for which the stop would wait
        clock.KeepAwake();
        hmd->Stop();
        hmd->RemoveListener(log);
    }

    /// Sends reports until `count` of them have reached the listener.
    void ExpectReports(std::size_t count)
    {
        WaitForPending(REPORTS);
        for (std::size_t i = 0; i < count; ++i)
        {
            bus->Push(REPORTS, Report());
        }
        events += 7 * count;
        EXPECT_EQ(log.WaitFor(events).back().rfind("orientation", 0), 0u);
    }

    ManualClock clock;
    EventLog log;
    std::size_t events = 0;
    std::optional<qlt::Hmd> hmd;
};

} // namespace

TEST_F(UsbHostTest, WithoutADeviceNothingIsOpenedAndThereIsNoProblem)
{
    EXPECT_EQ(host.CountDevices(), 0u);
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Open(1), nullptr);
    EXPECT_EQ(host.Problem(), "");
    EXPECT_NE(host.Name(), "");
}

TEST_F(UsbHostTest, DevicesAreCountedAndListTheirEndPoints)
{
    bus->Plug();
    bus->Plug();
    EXPECT_EQ(host.CountDevices(), 2u);
    EXPECT_EQ(host.Open(2), nullptr);
    device = host.Open(1);
    ASSERT_NE(device, nullptr) << host.Problem();
    EXPECT_EQ(device->VendorId(), 0x04B4);
    EXPECT_EQ(device->ProductId(), 0x00F1);
    ASSERT_EQ(device->EndPointCount(), 3);
    EXPECT_EQ(device->EndPoint(0).Attributes(), 0);
    EXPECT_EQ(device->EndPoint(1).Address(), REPORTS);
    EXPECT_EQ(device->EndPoint(1).Attributes(), 3);
    EXPECT_EQ(EndPoint().Address(), FRAMES);
    EXPECT_EQ(EndPoint().Attributes(), 2);
}

// The headset may be open twice, for a tracker and a camera. The test uses one of the two devices.
TEST_F(UsbHostTest, AReadWaitsAndGivesItsBytesAndItsSuccess)
{
    Open();
    device = host.OpenFirst();
    ASSERT_NE(device, nullptr);
    for (const Bytes& bytes : {Report(), Bytes(63, 7), Bytes()})
    {
        Bytes report(64);
        std::uint32_t length = 64;
        const auto pushed = std::async(std::launch::async,
                                       [&]
                                       {
                                           WaitForPending(REPORTS);
                                           bus->Push(REPORTS, bytes, !bytes.empty());
                                       });
        EXPECT_EQ(device->EndPoint(1).TransferData(report.data(), length), !bytes.empty());
        report.resize(length);
        EXPECT_EQ(report, bytes);
    }
}

TEST_F(UsbHostTest, AReadGivesUpAfterTenSeconds)
{
    Open();
    Bytes report(64);
    std::uint32_t length = 64;
    const auto start = steady_clock::now();
    EXPECT_FALSE(device->EndPoint(1).TransferData(report.data(), length));
    EXPECT_EQ(length, 0u);
    EXPECT_GE(SecondsSince(start), 9.9);
    EXPECT_LT(SecondsSince(start), 15.0);
    EXPECT_EQ(bus->Pending(REPORTS), 0u);
    bus->Push(REPORTS, Report());
    length = 64;
    EXPECT_TRUE(device->EndPoint(1).TransferData(report.data(), length))
        << "A read after the failed one must succeed.";
}

TEST_F(UsbHostTest, TenWholeFramesArriveInTheirOrder)
{
    Open();
    Begin();
    EXPECT_EQ(bus->Pending(FRAMES), COUNT);
    EXPECT_FALSE(frames[0].transfer->Wait(1));
    PushAll();
    for (std::uint8_t i = 0; i < COUNT; ++i)
    {
        EXPECT_TRUE(frames[i].IsSignalled(LONG_MS));
        qlt::SetNativeEvent(frames[i].event);
        EXPECT_EQ(frames[i].End(), std::to_string(i));
        EXPECT_FALSE(frames[i].IsSignalled(0)) << "The wait must take the signal.";
    }
    // These bytes arrived before the read began. Finish needs no wait before it.
    bus->Push(FRAMES, Bytes(512, 5));
    const Frame late(EndPoint());
    std::uint32_t length = 0;
    EXPECT_TRUE(late.transfer->Finish(length));
    EXPECT_EQ(length, 512u);
}

TEST_F(UsbHostTest, AbortedTransfersFailAndDestroyedOnesEndAndNewOnesBegin)
{
    Open();
    Begin();
    EndPoint().AbortTransfers();
    EXPECT_EQ(bus->Pending(FRAMES), 0u);
    for (const Frame& frame : frames)
    {
        EXPECT_TRUE(frame.transfer->Wait(0)) << "The transfer must have ended.";
        EXPECT_EQ(frame.End(), "failed");
    }
    Begin();
    PushAll();
    EXPECT_EQ(frames.back().End(), "9");
    // Destroyed reads are no longer in flight.
    frames.clear();
    {
        const Frame dropped(EndPoint());
        EXPECT_EQ(bus->Pending(FRAMES), 1u);
    }
    EXPECT_EQ(bus->Pending(FRAMES), 0u);
}

TEST_F(UsbHostTest, UnpluggingFailsTheReadsInFlightAndLaterReads)
{
    Open();
    Begin();
    bus->Unplug();
    for (const Frame& frame : frames)
    {
        EXPECT_EQ(frame.End(), "failed");
    }
    EXPECT_EQ(Frame(EndPoint()).End(), "refused");
    EXPECT_EQ(host.OpenFirst(), nullptr);
}

TEST_F(UsbHostTest, ClosingOneOfTwoDevicesKeepsTheReadsOfTheOther)
{
    Open();
    const Frame frame(EndPoint());
    std::unique_ptr<qlt::VendorUsbDevice> tracker = host.OpenFirst();
    ASSERT_NE(tracker, nullptr);
    tracker.reset();
    EXPECT_EQ(bus->Pending(FRAMES), 1u);
    bus->Push(FRAMES, Bytes(FRAME_SIZE, 3));
    EXPECT_EQ(frame.End(), "3");
}

// The connection watcher looks for the headset once more while the program ends.
TEST_F(UsbHostDeathTest, AProgramEndsEvenIfNobodyHasStoppedItsTracker)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::pair<bool, bool> rows[] = {{true, false}, {true, true}, {false, false}};
    for (const auto& [isLeaked, isPluggedIn] : rows)
    {
        const auto run = [this, isLeaked = isLeaked, isPluggedIn = isPluggedIn]
        {
            gLateEnd.duration = std::chrono::milliseconds(1500);
            if (isLeaked)
            {
                (new qlt::Hmd)->Start();
            }
            else
            {
                static qlt::Hmd hmd;
                hmd.Start();
            }
            if (isPluggedIn)
            {
                bus->Plug();
                WaitForPending(REPORTS);
            }
            std::exit(0);
        };
        EXPECT_EXIT(run(), testing::ExitedWithCode(0), "") << isLeaked << isPluggedIn;
    }
}

TEST_F(UsbHostHmdTest, TheHeadsetIsFoundAndItsReportsReachTheListenerAndItIsFoundAgain)
{
    Start(qlt::Clock::System());
    for (int round = 0; round < 2; ++round)
    {
        const auto start = steady_clock::now();
        bus->Plug();
        ExpectReports(1);
        EXPECT_LT(SecondsSince(start), 3.0) << "The tracker looks for the headset once a second.";
        ExpectReports(200); // the reports come without a pause
        bus->Unplug();
        Until([this] { return !hmd->IsConnected(); });
    }
}

TEST_F(UsbHostHmdTest, ShortAndFailedReportsDisconnectAndForeignDevicesAreNotRead)
{
    Start(clock);
    clock.WaitForSleep(1);
    bus->Plug(0x04B4, 0x1234);
    clock.Cycle();
    EXPECT_FALSE(hmd->IsConnected());
    EXPECT_EQ(bus->Pending(REPORTS), 0u);
    bus->Unplug();
    bus->Plug();
    for (const bool succeeds : {true, false})
    {
        clock.Cycle();
        WaitForPending(REPORTS);
        bus->Push(REPORTS, Bytes(succeeds ? 63 : 0), succeeds);
        Until([this] { return !hmd->IsConnected(); });
    }
    clock.Cycle();
    ExpectReports(1);
}

TEST_F(UsbHostHmdTest, FiftyUnpluggingsAtAnyMomentLeaveNothingBehind)
{
    const unsigned seed = std::random_device()();
    std::cout << "The seed is " << seed << std::endl;
    std::mt19937 random(seed);
    const auto wait = [&random]
    { std::this_thread::sleep_for(std::chrono::microseconds(random() % 1000)); };
    Start(clock);
    clock.WaitForSleep(1);
    std::size_t handles = 0;
    std::size_t threads = 0;
    for (int i = 0; i < 60; ++i)
    {
        if (i == 10) // from here on, the objects of the process exist
        {
            handles = CountOpenHandles();
            threads = CountThreads();
        }
        bus->Plug();
        device = host.OpenFirst();
        ASSERT_NE(device, nullptr) << host.Problem();
        for (auto reads = random() % 4; reads > 0; --reads)
        {
            frames.emplace_back(EndPoint());
        }
        std::thread finder([this] { clock.Cycle(); }); // the tracker also opens the headset
        for (auto pushes = random() % 20; pushes > 0; --pushes)
        {
            wait();
            bus->Push(REPORTS, random() % 50 == 0 ? Bytes(63) : Report());
            bus->Push(FRAMES, Bytes(512));
        }
        bus->Unplug();
        finder.join();
        for (const Frame& frame : frames)
        {
            EXPECT_TRUE(frame.transfer->Wait(LONG_MS));
        }
        frames.clear();
        device.reset();
        Until([this] { return !hmd->IsConnected(); });
    }
    EXPECT_GT(log.Count(), 0u) << "The tracker must have read reports.";
    // The emulator closes its own descriptors a little later, and a thread also ends a little
    // later.
    const auto isAsBefore = [=]
    { return CountOpenHandles() <= handles + RUNTIME_HANDLES && CountThreads() <= threads; };
    const auto end = steady_clock::now();
    Until([&] { return isAsBefore() || SecondsSince(end) > 5.0; });
    EXPECT_TRUE(isAsBefore()) << CountOpenHandles() - handles << " " << CountThreads() - threads;
}
