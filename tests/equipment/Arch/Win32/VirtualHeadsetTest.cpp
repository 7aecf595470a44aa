// The shipped library with the virtual headset, found and read the way a real one is.
#include "VirtualHeadset.h"
#include "fakes/EventLog.h"
#include "fakes/OpenHandles.h"
#include "fakes/ReportWriter.h"

#include <qlt/qlt.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <thread>
#include <windows.h>

namespace
{

using namespace qlt;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::uint32_t REPORTS = VirtualHeadset::REPORTS;
constexpr std::uint32_t FRAMES = VirtualHeadset::FRAMES;
constexpr std::uint32_t FRAME_SIZE = 0x388000;
constexpr std::size_t EVENTS_PER_REPORT = 7;
constexpr std::uint8_t INTERRUPT = 1; // the endpoints' indices
constexpr std::uint8_t BULK = 2;

/// A second's sleep is over in ten milliseconds, or when it is held no longer.
class HastyClock final : public Clock
{
public:
    std::int64_t NowNs() override { return Clock::System().NowNs(); }

    void SleepNs(std::int64_t ns) override
    {
        do
        {
            resting = held.load();
            Clock::System().SleepNs(ns / 100);
        } while (held);
        resting = false;
    }

    std::atomic<bool> held{false};
    std::atomic<bool> resting{false}; // until no longer held
};

/// Waits, for ten seconds at most, until it has come true.
bool Becomes(const std::function<bool()>& condition)
{
    const auto end = steady_clock::now() + std::chrono::seconds(10);
    while (!condition())
    {
        if (steady_clock::now() > end)
        {
            return false;
        }
        std::this_thread::sleep_for(milliseconds(2));
    }
    return true;
}

/// A read of a frame, with what it needs until its end.
struct FrameRead
{
    explicit FrameRead(UsbEndPoint& endPoint)
        : transfer(endPoint.BeginTransfer(frame.data(), FRAME_SIZE, event))
    {
    }
    ~FrameRead()
    {
        transfer.reset();
        CloseHandle(event);
    }
    FrameRead(const FrameRead&) = delete;
    FrameRead& operator=(const FrameRead&) = delete;

    bool Finish() { return transfer->Finish(length); }

    std::vector<std::uint8_t> frame = std::vector<std::uint8_t>(FRAME_SIZE);
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::uint32_t length = 1;
    std::unique_ptr<UsbTransfer> transfer;
};
using FrameReads = std::vector<std::unique_ptr<FrameRead>>;

FrameReads BeginTen(UsbEndPoint& endPoint)
{
    FrameReads reads;
    for (int i = 0; i < 10; ++i)
    {
        reads.push_back(std::make_unique<FrameRead>(endPoint));
    }
    return reads;
}

class VirtualHeadsetTest : public testing::Test
{
protected:
    std::unique_ptr<VendorUsbDevice> PlugAndOpen()
    {
        mHeadset.Plug();
        return mHost.OpenFirst();
    }

    void PushReport(std::size_t length = 64, std::uint32_t status = 0)
    {
        const ReportWriter report(++mSequence);
        mHeadset.Push(REPORTS, report.data(), length, status);
    }

    bool IsPending(std::uint32_t pipe, std::uint32_t count)
    {
        return Becomes([&] { return mHeadset.Count().pending[pipe] == count; });
    }

    /// Whether so many devices have been opened since, and each was closed.
    bool HaveClosed(std::uint32_t count)
    {
        return Becomes(
            [&]
            {
                const virtual_headset::Counts now = mHeadset.Count();
                return now.opened == now.closed && now.opened >= mOpenedBefore + count;
            });
    }

    UsbHost& mHost = UsbHost::System();
    VirtualHeadset mHeadset;
    std::uint32_t mOpenedBefore = mHeadset.Count().opened;
    std::uint32_t mSequence = 0;
};

/// A started tracker with a listener.
class VirtualHeadsetHmdTest : public VirtualHeadsetTest
{
protected:
    VirtualHeadsetHmdTest()
    {
        mHmd.AddListener(mLog);
        mHmd.Start();
    }
    ~VirtualHeadsetHmdTest() override
    {
        mHeadset.Unplug(); // ends the read that the stop would wait for
        mHmd.Stop();
        mHmd.RemoveListener(mLog);
    }

    /// One more report reaches the listener.
    void ExpectReport()
    {
        mEvents += EVENTS_PER_REPORT;
        PushReport();
        EXPECT_TRUE(Becomes([&] { return mLog.Count() == mEvents; }));
    }

    EventLog mLog;
    std::size_t mEvents = 0;
    Hmd mHmd;
};

/// A tracker and a camera's reads, while the test thread plugs and unplugs.
class VirtualHeadsetUnplugTest : public VirtualHeadsetTest
{
protected:
    VirtualHeadsetUnplugTest() { mHmd.Start(); }
    ~VirtualHeadsetUnplugTest() override
    {
        mClock.held = false;
        mHmd.Stop();
    }

    std::uint32_t Below(std::uint32_t limit) { return mRandom() % limit; }

    void PlugAndUnplug()
    {
        mHeadset.Plug();
        std::this_thread::sleep_for(std::chrono::microseconds(Below(15000)));
        const std::unique_ptr<VendorUsbDevice> camera = mHost.OpenFirst();
        ASSERT_NE(camera, nullptr) << mHost.Problem();
        FrameReads reads;
        for (std::uint32_t i = Below(4); i > 0; --i)
        {
            reads.push_back(std::make_unique<FrameRead>(camera->EndPoint(BULK)));
        }
        for (std::uint32_t i = Below(20); i > 0; --i)
        {
            PushReport(Below(50) == 0 ? 63 : 64);
            if (Below(4) == 0)
            {
                mHeadset.Push(FRAMES, "frame", 5);
            }
        }
        mHeadset.Unplug();
        for (const auto& read : reads)
        {
            EXPECT_TRUE(read->transfer->Wait(10000));
            read->Finish();
        }
    }

    /// The handles of the process once the tracker has noticed the last unplug and sleeps.
    std::size_t CountHandlesAtRest()
    {
        EXPECT_TRUE(HaveClosed(1));
        mClock.held = true;
        EXPECT_TRUE(Becomes([this] { return mClock.resting.load(); }));
        const std::size_t count = CountOpenHandles();
        mClock.held = false;
        return count;
    }

    std::uint32_t mSeed = std::random_device()();
    std::mt19937 mRandom{mSeed};
    HastyClock mClock;
    Hmd mHmd{mHost, mClock};
};

} // namespace

TEST_F(VirtualHeadsetTest, WithoutADeviceThereIsNothingAndNoProblem)
{
    EXPECT_EQ(mHost.CountDevices(), 0U);
    EXPECT_EQ(mHost.OpenFirst(), nullptr);
    EXPECT_EQ(mHost.Open(1), nullptr);
    EXPECT_EQ(mHost.Problem(), "");
    EXPECT_EQ(mHost.Name(), "the vendor's USB driver");
}

TEST_F(VirtualHeadsetTest, ADeviceSaysWhatItIs)
{
    const std::unique_ptr<VendorUsbDevice> device = PlugAndOpen();
    ASSERT_NE(device, nullptr) << mHost.Problem();
    EXPECT_EQ(device->VendorId(), 0x04B4);
    EXPECT_EQ(device->ProductId(), 0x00F1);
    ASSERT_EQ(device->EndPointCount(), 3);
    EXPECT_EQ(device->EndPoint(0).Attributes(), 0);
    EXPECT_EQ(device->EndPoint(INTERRUPT).Attributes(), 3);
    EXPECT_EQ(device->EndPoint(INTERRUPT).Address(), 0x81);
    EXPECT_EQ(device->EndPoint(BULK).Attributes(), 2);
    EXPECT_EQ(device->EndPoint(BULK).Address(), 0x82);

    device->EndPoint(BULK).SetTransferSize(FRAME_SIZE - 1);
    EXPECT_EQ(mHeadset.Count().transferSize, FRAME_SIZE) << "in whole packets";
}

TEST_F(VirtualHeadsetTest, SeveralDevicesAreCountedAndOpenedOneByOne)
{
    VirtualHeadset foreign(1);
    foreign.Plug(0x04B4, 0x1234);
    mHeadset.Plug();
    EXPECT_EQ(mHost.CountDevices(), 2U);
    std::vector<std::uint16_t> products;
    for (std::uint32_t i = 0; const auto device = mHost.Open(i); ++i)
    {
        products.push_back(device->ProductId());
    }
    EXPECT_EQ(products, (std::vector<std::uint16_t>{0x00F1, 0x1234}));
    EXPECT_TRUE(HaveClosed(1));
}

TEST_F(VirtualHeadsetTest, ADeviceThatLiesAboutItselfHasTheEndpointsThatAreThere)
{
    mHeadset.Configure({9, 2, 255,  255, 1,  1, 0, 0x80, 250, 9,   4, 0, 0, 99, 0, 0, 0, 0, //
                        7, 5, 0x81, 3,   64, 0, 1, 255,  5,   0x82});
    EXPECT_EQ(PlugAndOpen()->EndPointCount(), 2);
    mHeadset.Configure({});
    EXPECT_EQ(mHost.OpenFirst()->EndPointCount(), 1);
    EXPECT_TRUE(HaveClosed(2));
}

TEST_F(VirtualHeadsetTest, ADeviceThatSaysNothingIsAProblem)
{
    mHeadset.Plug(0x04B4, 0x00F1, VirtualHeadset::FAILURE);
    EXPECT_EQ(mHost.OpenFirst(), nullptr);
    EXPECT_NE(mHost.Problem(), "");
    EXPECT_TRUE(HaveClosed(1));
    mHeadset.Unplug();
    EXPECT_NE(PlugAndOpen(), nullptr);
    EXPECT_EQ(mHost.Problem(), "");
}

TEST_F(VirtualHeadsetTest, ABlockingReadWaitsForItsReport)
{
    const std::unique_ptr<VendorUsbDevice> device = PlugAndOpen();
    std::array<std::uint8_t, 64> buffer{};
    std::uint32_t length = 64;
    std::thread pusher(
        [&]
        {
            EXPECT_TRUE(IsPending(REPORTS, 1));
            PushReport();
        });
    EXPECT_TRUE(device->EndPoint(INTERRUPT).TransferData(buffer.data(), length));
    pusher.join();
    EXPECT_EQ(length, 64U);
    EXPECT_EQ(buffer, ReportWriter(mSequence));

    PushReport(63);
    EXPECT_TRUE(device->EndPoint(INTERRUPT).TransferData(buffer.data(), length));
    EXPECT_EQ(length, 63U);

    PushReport(0, VirtualHeadset::FAILURE);
    length = 64;
    EXPECT_FALSE(device->EndPoint(INTERRUPT).TransferData(buffer.data(), length));
    EXPECT_EQ(length, 0U);
}

TEST_F(VirtualHeadsetTest, ABlockingReadEndsAfterTenSeconds)
{
    const std::unique_ptr<VendorUsbDevice> device = PlugAndOpen();
    std::array<std::uint8_t, 64> buffer{};
    std::uint32_t length = 64;
    const auto start = steady_clock::now();
    EXPECT_FALSE(device->EndPoint(INTERRUPT).TransferData(buffer.data(), length));
    const auto duration = steady_clock::now() - start;
    EXPECT_GE(duration, milliseconds(9900));
    EXPECT_LE(duration, milliseconds(20000));
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(mHeadset.Count().pending[REPORTS], 0U);

    PushReport();
    length = 64;
    EXPECT_TRUE(device->EndPoint(INTERRUPT).TransferData(buffer.data(), length)) << "afterwards";
}

TEST_F(VirtualHeadsetTest, TenFramesArriveInTheirOrder)
{
    const std::unique_ptr<VendorUsbDevice> device = PlugAndOpen();
    const FrameReads reads = BeginTen(device->EndPoint(BULK));
    EXPECT_EQ(mHeadset.Count().pending[FRAMES], 10U);
    EXPECT_FALSE(reads.front()->transfer->Wait(0));

    std::mt19937 random(1);
    std::vector<std::uint8_t> frame(FRAME_SIZE);
    for (const auto& read : reads)
    {
        frame[random() % FRAME_SIZE] ^= 0xFF;
        mHeadset.Push(FRAMES, frame.data(), FRAME_SIZE);
        EXPECT_TRUE(read->transfer->Wait(10000));
        EXPECT_TRUE(read->transfer->Wait(0)) << "again";
        EXPECT_TRUE(read->Finish());
        EXPECT_EQ(read->length, FRAME_SIZE);
        EXPECT_TRUE(read->frame == frame);
    }
    EXPECT_FALSE(reads.front()->Finish()) << "once only";

    // One that was there before its read is done at once; one may be finished without a wait.
    mHeadset.Push(FRAMES, frame.data(), 512);
    FrameRead late(device->EndPoint(BULK));
    EXPECT_TRUE(late.Finish());
    EXPECT_EQ(late.length, 512U);
}

TEST_F(VirtualHeadsetTest, AnAbortEndsAllTenReadsInFlight)
{
    const std::unique_ptr<VendorUsbDevice> device = PlugAndOpen();
    const FrameReads reads = BeginTen(device->EndPoint(BULK));
    device->EndPoint(BULK).AbortTransfers();
    EXPECT_EQ(mHeadset.Count().pending[FRAMES], 0U);
    for (const auto& read : reads)
    {
        EXPECT_TRUE(read->transfer->Wait(0)) << "it has ended";
        EXPECT_FALSE(read->Finish());
        EXPECT_EQ(read->length, 0U);
    }
}

TEST_F(VirtualHeadsetTest, UnpluggingEndsAllTenReadsInFlight)
{
    std::unique_ptr<VendorUsbDevice> device = PlugAndOpen();
    const FrameReads reads = BeginTen(device->EndPoint(BULK));
    mHeadset.Unplug();
    for (const auto& read : reads)
    {
        EXPECT_TRUE(read->transfer->Wait(10000));
        EXPECT_FALSE(read->Finish());
    }
    FrameRead late(device->EndPoint(BULK));
    EXPECT_FALSE(late.transfer->Wait(0)) << "it cannot start";
    EXPECT_FALSE(late.Finish());
    EXPECT_EQ(mHost.OpenFirst(), nullptr);
    device.reset();
    EXPECT_TRUE(HaveClosed(1));
}

TEST_F(VirtualHeadsetTest, WhatIsDroppedInFlightIsEnded)
{
    std::unique_ptr<VendorUsbDevice> device = PlugAndOpen();
    {
        const FrameRead dropped(device->EndPoint(BULK));
        EXPECT_EQ(mHeadset.Count().pending[FRAMES], 1U);
    }
    EXPECT_EQ(mHeadset.Count().pending[FRAMES], 0U);

    const FrameReads reads = BeginTen(device->EndPoint(BULK));
    device.reset();
    EXPECT_EQ(mHeadset.Count().pending[FRAMES], 0U);
    EXPECT_FALSE(reads.back()->Finish());
}

TEST_F(VirtualHeadsetTest, ClosingOneOfTwoLeavesTheOthersReadsAlone)
{
    const std::unique_ptr<VendorUsbDevice> camera = PlugAndOpen();
    FrameRead read(camera->EndPoint(BULK));
    std::unique_ptr<VendorUsbDevice> tracker = mHost.OpenFirst();
    ASSERT_NE(tracker, nullptr);
    tracker.reset();
    EXPECT_EQ(mHeadset.Count().pending[FRAMES], 1U);
    mHeadset.Push(FRAMES, "frame", 5);
    EXPECT_TRUE(read.Finish());
    EXPECT_EQ(read.length, 5U);
}

TEST_F(VirtualHeadsetHmdTest, AHeadsetIsFoundAndItsReportsReachTheListener)
{
    const auto start = steady_clock::now();
    mHeadset.Plug();
    ASSERT_TRUE(IsPending(REPORTS, 1));
    EXPECT_LT(steady_clock::now() - start, milliseconds(2500)) << "it looks once a second";
    ExpectReport();
    ExpectReport();
    // Not one after another, as a listener sees it, but as fast as they come.
    for (int i = 0; i < 200; ++i)
    {
        PushReport();
    }
    mEvents += 200 * EVENTS_PER_REPORT;
    ExpectReport();
}

TEST_F(VirtualHeadsetHmdTest, AnUnpluggedHeadsetIsFoundAgain)
{
    for (std::uint32_t round = 1; round <= 2; ++round)
    {
        mHeadset.Plug();
        ASSERT_TRUE(IsPending(REPORTS, 1));
        ExpectReport();
        mHeadset.Unplug();
        EXPECT_TRUE(HaveClosed(round));
        EXPECT_FALSE(mHmd.IsConnected());
    }
}

TEST_F(VirtualHeadsetHmdTest, ShortAndFailedReportsDisconnectAndItConnectsAgain)
{
    mHeadset.Plug();
    ASSERT_TRUE(IsPending(REPORTS, 1));
    PushReport(63);
    EXPECT_TRUE(HaveClosed(1));
    ASSERT_TRUE(IsPending(REPORTS, 1));
    PushReport(64, VirtualHeadset::FAILURE);
    EXPECT_TRUE(HaveClosed(2));
    ASSERT_TRUE(IsPending(REPORTS, 1));
    ExpectReport();
}

TEST_F(VirtualHeadsetHmdTest, AForeignDeviceIsClosedAgainAndNotRead)
{
    mHeadset.Plug(0x04B4, 0x1234);
    EXPECT_TRUE(HaveClosed(2));
    EXPECT_FALSE(mHmd.IsConnected());
    EXPECT_EQ(mHeadset.Count().pending[REPORTS], 0U);
    mHeadset.Unplug();
    mHeadset.Plug();
    ASSERT_TRUE(IsPending(REPORTS, 1));
    ExpectReport();
}

TEST_F(VirtualHeadsetUnplugTest, FiftyUnplugsAtAnyMomentLeaveNothingOpen)
{
    std::cout << "seed " << mSeed << std::endl;
    std::size_t before = 0;
    for (int i = 0; i < 60; ++i)
    {
        if (i == 10) // the system keeps some handles from the first times
        {
            before = CountHandlesAtRest();
        }
        PlugAndUnplug();
    }
    EXPECT_EQ(CountHandlesAtRest(), before);
    EXPECT_GT(mHeadset.Count().opened, mOpenedBefore + 60) << "the tracker has opened it, too";
    EXPECT_EQ(mHeadset.Count().pending[REPORTS], 0U);
    EXPECT_EQ(mHeadset.Count().pending[FRAMES], 0U);
}
