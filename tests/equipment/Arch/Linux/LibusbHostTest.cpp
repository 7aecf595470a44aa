// The library's own USB access, and the headset's tracker upon it, on an emulated bus.
#include <qlt/Runtime/Usb.h>
#include <qlt/Sensors/Hmd.h>

#include "Runtime/NativeEvent.h"

#include "UsbEmulator.h"
#include "fakes/EventLog.h"
#include "fakes/ManualClock.h"
#include "fakes/OpenHandles.h"
#include "fakes/ReportWriter.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <deque>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{

using Bytes = std::vector<std::uint8_t>;
using std::chrono::steady_clock;

constexpr std::uint8_t REPORTS = 0x81;
constexpr std::uint8_t FRAMES = 0x82;
constexpr std::uint32_t FRAME_SIZE = 0x388000; // a whole picture of the camera
constexpr std::uint32_t LONG_MS = 20000;       // never to be waited for

Bytes Report()
{
    const ReportWriter report(1);
    return {report.begin(), report.end()};
}

double SecondsSince(steady_clock::time_point start)
{
    return std::chrono::duration<double>(steady_clock::now() - start).count();
}

/// One frame on its way, with its event.
struct Frame
{
    explicit Frame(qlt::UsbEndPoint& endPoint)
        : transfer(endPoint.BeginTransfer(bytes.data(), FRAME_SIZE, event))
    {
    }

    ~Frame()
    {
        transfer.reset();
        qlt::CloseNativeEvent(event);
    }

    /// Waits for the event alone, as a stream that waits for other things, too.
    bool IsSignalled(std::uint32_t timeoutMs) const
    {
        return qlt::WaitNativeEvent(event, timeoutMs) == qlt::WAIT_SIGNALLED;
    }

    /// What it ends as; a whole picture is told by its value.
    std::string End() const
    {
        std::uint32_t length = 1;
        const bool hasEnded = transfer->Wait(LONG_MS);
        if (transfer->Finish(length))
        {
            return hasEnded && bytes == Bytes(length, bytes[0]) ? std::to_string(bytes[0]) : "odd";
        }
        return hasEnded ? "failed" : length == 0 ? "refused" : "late";
    }

    Bytes bytes = Bytes(FRAME_SIZE);
    qlt::NativeEventHandle event = qlt::CreateNativeEvent(L"", false);
    std::unique_ptr<qlt::UsbTransfer> transfer;
};

class LibusbHostTest : public testing::Test
{
protected:
    static constexpr std::uint8_t COUNT = 10; // of frames at once, as the camera's stream has them

    /// Plugs the headset in and opens it.
    void Open()
    {
        emulator.Plug();
        device = host.OpenFirst();
        ASSERT_NE(device, nullptr);
    }

    qlt::UsbEndPoint& EndPoint() { return device->EndPoint(2); }

    /// Makes the frames new ones.
    void Begin()
    {
        frames.clear();
        for (std::uint8_t i = 0; i < COUNT; ++i)
        {
            frames.emplace_back(EndPoint());
        }
    }

    void PushAll()
    {
        for (std::uint8_t i = 0; i < COUNT; ++i)
        {
            emulator.Push(FRAMES, Bytes(FRAME_SIZE, i));
        }
    }

    UsbEmulator emulator;
    qlt::UsbHost& host = qlt::UsbHost::System();
    std::unique_ptr<qlt::VendorUsbDevice> device;
    std::deque<Frame> frames;
};

TEST_F(LibusbHostTest, WithoutAHeadsetThereIsNothingAndNoProblem)
{
    EXPECT_EQ(host.CountDevices(), 0u);
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "");
    EXPECT_EQ(host.Name().rfind("libusb 1.0.", 0), 0u);
}

TEST_F(LibusbHostTest, TheVendorsDevicesCountWhicheverTheyAreAndTellTheirEndPoints)
{
    emulator.Plug(0x1D6B, 0x00F1);
    emulator.Plug(0x04B4, 0x6018);
    emulator.Plug();
    EXPECT_EQ(host.CountDevices(), 2u);
    EXPECT_EQ(host.OpenFirst()->ProductId(), 0x6018);
    EXPECT_EQ(host.Open(2), nullptr);
    device = host.Open(1);
    EXPECT_EQ(device->VendorId(), 0x04B4);
    EXPECT_EQ(device->ProductId(), 0x00F1);
    ASSERT_EQ(device->EndPointCount(), 3);
    EXPECT_EQ(device->EndPoint(0).Address(), 0);
    EXPECT_EQ(device->EndPoint(1).Address(), REPORTS);
    EXPECT_EQ(device->EndPoint(1).Attributes(), 3);
    EXPECT_EQ(device->EndPoint(2).Address(), FRAMES);
    EXPECT_EQ(device->EndPoint(2).Attributes(), 2);
}

TEST_F(LibusbHostTest, WhatIsInTheWayOfOpeningIsToldAndForgottenWhenTheHeadsetIsGone)
{
    emulator.Plug();
    emulator.ClaimElsewhere();
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "another program has the headset open");
    emulator.ForbidOpening();
    EXPECT_EQ(host.CountDevices(), 1u);
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "no permission to open the headset; install the udev rule "
                              "70-quelta-orbel-ixo.rules");
    emulator.Unplug();
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "");
}

// Through one opening of a headset that may be open twice, for a tracker and a camera.
TEST_F(LibusbHostTest, AReadGivesWhatCameAndWhetherItFailed)
{
    Open();
    device = host.OpenFirst();
    ASSERT_NE(device, nullptr);
    for (const auto& [data, status] :
         {std::pair(Report(), 0), {Bytes(63, 7), 0}, {Bytes(10, 7), -EPROTO}, {Bytes(), -EPIPE}})
    {
        Bytes report(64);
        std::uint32_t length = 64;
        emulator.Push(REPORTS, data, status);
        EXPECT_EQ(device->EndPoint(1).TransferData(report.data(), length), status == 0);
        report.resize(length);
        EXPECT_EQ(report, data);
    }
}

TEST_F(LibusbHostTest, AReadGivesUpAfterTenSeconds)
{
    Open();
    Bytes report(64);
    std::uint32_t length = 64;
    const auto start = steady_clock::now();
    EXPECT_FALSE(device->EndPoint(1).TransferData(report.data(), length));
    EXPECT_EQ(length, 0u);
    EXPECT_GE(SecondsSince(start), 10.0);
    EXPECT_LT(SecondsSince(start), 15.0);
    EXPECT_EQ(emulator.InFlight(REPORTS), 0u);
}

TEST_F(LibusbHostTest, TheTrackerFindsTheHeadsetAndFindsItAgain)
{
    qlt::Hmd hmd;
    EventLog log;
    hmd.AddListener(log);
    hmd.Start();
    for (const std::size_t lines : {7u, 14u})
    {
        const auto start = steady_clock::now();
        emulator.Plug();
        emulator.WaitForInFlight(REPORTS, 1);
        EXPECT_LT(SecondsSince(start), 5.0); // a second, on a machine with nothing else to do
        emulator.Push(REPORTS, Report());
        EXPECT_EQ(log.WaitFor(lines).back().rfind("orientation", 0), 0u);
        emulator.WaitForInFlight(REPORTS, 1);
        emulator.Unplug();
        while (hmd.IsConnected())
        {
            std::this_thread::yield();
        }
    }
    hmd.Stop();
    hmd.RemoveListener(log);
}

TEST_F(LibusbHostTest, TenWholeFramesArriveInTheirOrder)
{
    Open();
    Begin();
    EXPECT_EQ(emulator.InFlight(FRAMES), COUNT);
    EXPECT_FALSE(frames[0].transfer->Wait(1));
    PushAll();
    for (std::uint8_t i = 0; i < COUNT; ++i)
    {
        // The last one by its wait alone, which takes the signal.
        EXPECT_TRUE(i == COUNT - 1 || frames[i].IsSignalled(LONG_MS));
        EXPECT_EQ(frames[i].End(), std::to_string(i));
    }
    EXPECT_FALSE(frames.back().IsSignalled(0));
}

TEST_F(LibusbHostTest, AbortedTransfersHaveFailedAndDestroyedOnesAreGoneAndNewOnesBegin)
{
    Open();
    Begin();
    EndPoint().AbortTransfers();
    EXPECT_EQ(emulator.InFlight(FRAMES), 0u);
    for (const Frame& frame : frames)
    {
        EXPECT_TRUE(frame.IsSignalled(0));
        EXPECT_EQ(frame.End(), "failed");
    }
    Begin();
    PushAll();
    EXPECT_EQ(frames.back().End(), "9");
    // Those that are destroyed are in flight no more.
    Begin();
    frames.pop_front();
    EXPECT_EQ(emulator.InFlight(FRAMES), COUNT - 1u);
    frames.clear();
    EXPECT_EQ(emulator.InFlight(FRAMES), 0u);
}

TEST_F(LibusbHostTest, UnpluggingFailsWhatIsInFlightAndWhatComesLater)
{
    Open();
    Begin();
    emulator.Unplug();
    for (const Frame& frame : frames)
    {
        EXPECT_TRUE(frame.IsSignalled(LONG_MS));
        EXPECT_EQ(frame.End(), "failed");
    }
    Frame late(EndPoint());
    EXPECT_EQ(late.End(), "refused");
    EXPECT_FALSE(late.IsSignalled(0));
}

// With the kernel's default of 16 MB.
TEST_F(LibusbHostTest, FramesForWhichThereIsNoMemoryWaitForTheOthers)
{
    Open();
    emulator.LimitBytes(16 << 20);
    testing::internal::CaptureStderr();
    Begin();
    EXPECT_EQ(emulator.InFlight(FRAMES), 4u);
    frames.pop_back();
    PushAll();
    for (std::uint8_t i = 0; i < frames.size(); ++i)
    {
        EXPECT_EQ(frames[i].End(), std::to_string(i));
    }
    Begin();
    EndPoint().AbortTransfers();
    EXPECT_EQ(frames.back().End(), "failed");
    const std::string advice = testing::internal::GetCapturedStderr();
    const std::string command = "echo 64 | sudo tee /sys/module/usbcore/parameters/usbfs_memory_mb";
    EXPECT_NE(advice.find(command), std::string::npos);
    EXPECT_EQ(advice.find(command), advice.rfind(command));
    frames.clear();
    emulator.LimitBytes(FRAME_SIZE - 1); // where nothing can make room
    EXPECT_EQ(Frame(EndPoint()).End(), "refused");
}

TEST_F(LibusbHostTest, FiftyUnpluggingsAtAnyMomentLeaveNothingBehind)
{
    const unsigned seed = std::random_device{}();
    std::cout << "seed " << seed << std::endl;
    std::mt19937 random(seed);
    const auto wait = [&random]
    { std::this_thread::sleep_for(std::chrono::microseconds(random() % 1000)); };
    const auto cycle = [&]
    {
        ManualClock clock;
        qlt::Hmd hmd(host, clock);
        EventLog log;
        hmd.AddListener(log);
        hmd.Start();
        clock.WaitForSleep(1);
        emulator.Plug();
        const auto camera = host.OpenFirst();
        ASSERT_NE(camera, nullptr);
        const Frame frame(camera->EndPoint(2));
        clock.Cycle(); // now the tracker opens it, too
        for (int i = 0; i < 5; ++i)
        {
            wait();
            emulator.Push(REPORTS, Report());
        }
        emulator.Push(FRAMES, Bytes(FRAME_SIZE, 1));
        wait();
        emulator.Unplug();
        hmd.Stop();
        hmd.RemoveListener(log);
        clock.KeepAwake();
    };
    cycle(); // what is made once in a process
    const std::size_t handles = CountOpenHandles();
    const std::size_t threads = CountThreads();
    for (int i = 0; i < 50; ++i)
    {
        cycle();
    }
    // The emulator closes its own ends, and the system forgets a thread, a little later.
    const auto isAsBefore = [=]
    { return CountOpenHandles() <= handles && CountThreads() <= threads; };
    for (const auto start = steady_clock::now(); !isAsBefore() && SecondsSince(start) < 5.0;)
    {
        std::this_thread::yield();
    }
    EXPECT_LE(CountOpenHandles(), handles);
    EXPECT_LE(CountThreads(), threads);
}

} // namespace
