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

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
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

Bytes Report(std::uint32_t sequence)
{
    const ReportWriter report(sequence);
    return {report.begin(), report.end()};
}

double SecondsSince(steady_clock::time_point start)
{
    return std::chrono::duration<double>(steady_clock::now() - start).count();
}

std::size_t CountThreads()
{
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(threads), end(threads)));
}

class LibusbHostTest : public testing::Test
{
protected:
    /// Plugs the headset in and opens it.
    void Open()
    {
        emulator.Plug();
        device = host.OpenFirst();
        ASSERT_NE(device, nullptr);
    }

    UsbEmulator emulator;
    qlt::UsbHost& host = qlt::UsbHost::System();
    std::unique_ptr<qlt::VendorUsbDevice> device;
};

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

    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    /// Waits for the event alone, as a stream that waits for other things, too.
    bool IsSignalled(std::uint32_t timeoutMs) const
    {
        return qlt::WaitNativeEvent(event, timeoutMs) == qlt::WAIT_SIGNALLED;
    }

    /// Has ended, as a failure.
    bool HasFailed() const
    {
        std::uint32_t length = 0;
        return transfer->Wait(LONG_MS) && !transfer->Finish(length);
    }

    /// Has ended with a whole picture of this value.
    bool Shows(std::uint8_t value) const
    {
        std::uint32_t length = 0;
        return transfer->Wait(LONG_MS) && transfer->Finish(length) && length == FRAME_SIZE &&
               bytes == Bytes(FRAME_SIZE, value);
    }

    Bytes bytes = Bytes(FRAME_SIZE);
    qlt::NativeEventHandle event = qlt::CreateNativeEvent(L"", false);
    std::unique_ptr<qlt::UsbTransfer> transfer;
};

/// Ten frames on their way at once, as the camera's stream has them.
class LibusbStreamTest : public LibusbHostTest
{
protected:
    static constexpr std::uint8_t COUNT = 10;

    void SetUp() override { Open(); }

    qlt::UsbEndPoint& EndPoint() { return device->EndPoint(2); }

    void Begin()
    {
        for (std::uint8_t i = 0; i < COUNT; ++i)
        {
            frames.push_back(std::make_unique<Frame>(EndPoint()));
        }
    }

    void PushAll()
    {
        for (std::uint8_t i = 0; i < COUNT; ++i)
        {
            emulator.Push(FRAMES, Bytes(FRAME_SIZE, i));
        }
    }

    std::vector<std::unique_ptr<Frame>> frames;
};

TEST_F(LibusbHostTest, WithoutAHeadsetThereIsNothingAndNoProblem)
{
    EXPECT_EQ(host.CountDevices(), 0u);
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "");
    EXPECT_EQ(host.Name().rfind("libusb 1.0.", 0), 0u);
}

TEST_F(LibusbHostTest, ADeviceTellsItsIdentifiersAndEndPoints)
{
    Open();
    EXPECT_EQ(device->VendorId(), 0x04B4);
    EXPECT_EQ(device->ProductId(), 0x00F1);
    ASSERT_EQ(device->EndPointCount(), 3);
    EXPECT_EQ(device->EndPoint(0).Address(), 0);
    EXPECT_EQ(device->EndPoint(1).Address(), REPORTS);
    EXPECT_EQ(device->EndPoint(1).Attributes(), 3);
    EXPECT_EQ(device->EndPoint(2).Address(), FRAMES);
    EXPECT_EQ(device->EndPoint(2).Attributes(), 2);
}

TEST_F(LibusbHostTest, TheVendorsDevicesCountWhicheverTheyAreAndNoOthers)
{
    emulator.Plug(0x1D6B, 0x00F1);
    emulator.Plug(0x04B4, 0x6018);
    emulator.Plug();
    EXPECT_EQ(host.CountDevices(), 2u);
    EXPECT_EQ(host.OpenFirst()->ProductId(), 0x6018);
    EXPECT_EQ(host.Open(1)->ProductId(), 0x00F1);
    EXPECT_EQ(host.Open(2), nullptr);
}

TEST_F(LibusbHostTest, AHeadsetMayBeOpenTwiceForATrackerAndACamera)
{
    Open();
    const auto other = host.OpenFirst();
    ASSERT_NE(other, nullptr);
    device.reset();
    emulator.Push(REPORTS, Report(1));
    Bytes report(64);
    std::uint32_t length = 64;
    EXPECT_TRUE(other->EndPoint(1).TransferData(report.data(), length));
}

TEST_F(LibusbHostTest, AMissingPermissionIsToldAndForgottenWhenTheHeadsetIsGone)
{
    emulator.Plug();
    emulator.ForbidOpening();
    EXPECT_EQ(host.CountDevices(), 1u);
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "no permission to open the headset; install the udev rule "
                              "70-quelta-orbel-ixo.rules");
    emulator.Unplug();
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "");
}

TEST_F(LibusbHostTest, AnotherProgramsHeadsetIsToldToBeOpenThere)
{
    emulator.Plug();
    emulator.ClaimElsewhere();
    EXPECT_EQ(host.OpenFirst(), nullptr);
    EXPECT_EQ(host.Problem(), "another program has the headset open");
}

TEST_F(LibusbHostTest, AReadGivesWhatCameAndWhetherItFailed)
{
    Open();
    const auto read = [this](const Bytes& data, int status, std::uint32_t& length)
    {
        Bytes report(64);
        length = 64;
        emulator.Push(REPORTS, data, status);
        const bool succeeded = device->EndPoint(1).TransferData(report.data(), length);
        report.resize(length);
        EXPECT_EQ(report, data);
        return succeeded;
    };
    std::uint32_t length = 0;
    EXPECT_TRUE(read(Report(1), 0, length));
    EXPECT_EQ(length, 64u);
    EXPECT_TRUE(read(Bytes(63, 7), 0, length));
    EXPECT_FALSE(read(Bytes(10, 7), -EPROTO, length));
    EXPECT_EQ(length, 10u);
    EXPECT_FALSE(read({}, -EPIPE, length));
    EXPECT_EQ(length, 0u);
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
        emulator.Push(REPORTS, Report(1));
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

TEST_F(LibusbStreamTest, TenWholeFramesArriveInTheirOrder)
{
    Begin();
    EXPECT_EQ(emulator.InFlight(FRAMES), COUNT);
    EXPECT_FALSE(frames[0]->transfer->Wait(1));
    PushAll();
    for (std::uint8_t i = 0; i < COUNT; ++i)
    {
        EXPECT_TRUE(frames[i]->IsSignalled(LONG_MS));
        EXPECT_TRUE(frames[i]->Shows(i));
    }
}

TEST_F(LibusbStreamTest, AWaitTakesTheSignal)
{
    Frame frame(EndPoint());
    emulator.Push(FRAMES, Bytes(FRAME_SIZE, 1));
    EXPECT_TRUE(frame.Shows(1));
    EXPECT_FALSE(frame.IsSignalled(0));
}

TEST_F(LibusbStreamTest, AbortedTransfersHaveFailedAndNewOnesBegin)
{
    Begin();
    EndPoint().AbortTransfers();
    EXPECT_EQ(emulator.InFlight(FRAMES), 0u);
    for (const auto& frame : frames)
    {
        EXPECT_TRUE(frame->IsSignalled(0));
        EXPECT_TRUE(frame->HasFailed());
    }
    frames.clear();
    Begin();
    PushAll();
    EXPECT_TRUE(frames.back()->Shows(COUNT - 1));
}

TEST_F(LibusbStreamTest, ATransferThatIsDestroyedIsInFlightNoMore)
{
    Begin();
    frames.erase(frames.begin());
    EXPECT_EQ(emulator.InFlight(FRAMES), COUNT - 1u);
    frames.clear();
    EXPECT_EQ(emulator.InFlight(FRAMES), 0u);
}

TEST_F(LibusbStreamTest, UnpluggingFailsWhatIsInFlightAndWhatComesLater)
{
    Begin();
    emulator.Unplug();
    for (const auto& frame : frames)
    {
        EXPECT_TRUE(frame->IsSignalled(LONG_MS));
        EXPECT_TRUE(frame->HasFailed());
    }
    Frame late(EndPoint());
    std::uint32_t length = 1;
    EXPECT_FALSE(late.transfer->Wait(LONG_MS));
    EXPECT_FALSE(late.transfer->Finish(length));
    EXPECT_EQ(length, 0u);
    EXPECT_FALSE(late.IsSignalled(0));
}

// With the kernel's default of 16 MB.
TEST_F(LibusbStreamTest, FramesForWhichThereIsNoMemoryWaitForTheOthers)
{
    emulator.LimitBytes(16 << 20);
    testing::internal::CaptureStderr();
    Begin();
    EXPECT_EQ(emulator.InFlight(FRAMES), 4u);
    frames.pop_back();
    PushAll();
    for (std::uint8_t i = 0; i < frames.size(); ++i)
    {
        EXPECT_TRUE(frames[i]->Shows(i));
    }
    frames.clear();
    Begin();
    EndPoint().AbortTransfers();
    EXPECT_TRUE(frames.back()->HasFailed());
    const std::string advice = testing::internal::GetCapturedStderr();
    const std::string command = "echo 64 | sudo tee /sys/module/usbcore/parameters/usbfs_memory_mb";
    EXPECT_NE(advice.find(command), std::string::npos);
    EXPECT_EQ(advice.find(command), advice.rfind(command));
}

TEST_F(LibusbStreamTest, AFrameThatNothingMakesRoomForIsRefused)
{
    emulator.LimitBytes(FRAME_SIZE - 1);
    Frame frame(EndPoint());
    std::uint32_t length = 1;
    EXPECT_FALSE(frame.transfer->Wait(LONG_MS));
    EXPECT_FALSE(frame.transfer->Finish(length));
    EXPECT_EQ(length, 0u);
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
            emulator.Push(REPORTS, Report(1));
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
