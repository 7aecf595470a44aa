// A USB host of which the test is the hardware, and a headset tracker with it.
#pragma once

#include <qlt/Sensors/Hmd.h>

#include "fakes/EventLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <deque>
#include <iostream>
#include <optional>
#include <tuple>

class ScriptedUsbHost final : public qlt::UsbHost
{
public:
    using Report = std::array<std::uint8_t, 64>;

    struct Device
    {
        std::uint16_t vendorId = 0x04B4;
        std::uint16_t productId = 0x00F1;
        std::vector<std::uint8_t> attributes = {0, 3}; // of the endpoints, endpoint 0 included
    };

    /// From now on a device is there; the next Open finds it.
    void Plug(const Device& device)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mDevice = device;
    }

    /// The device is gone: the read that waits, and every later one, fails with length 0.
    void Unplug()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mDevice.reset();
        mChanged.notify_all();
    }

    /// What the next read returns: a report, or its first `length` bytes, as a failed transfer or
    /// not.
    void QueueRead(const Report& report, std::uint32_t length = 64, bool succeeds = true)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mReads.emplace_back(report, length, succeeds);
        mChanged.notify_all();
    }

    /// Waits until the tracker wants to read and nothing is queued; returns the endpoint.
    int WaitForIdleRead()
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this] { return mReadingFrom >= 0 && mReads.empty(); });
        return mReadingFrom;
    }

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        opened += mDevice ? 1 : 0;
        return mDevice ? std::make_unique<OpenDevice>(*this, *mDevice) : nullptr;
    }

    std::atomic<int> opened{0};
    std::atomic<int> closed{0};

private:
    /// And its endpoint: the one that was asked for last.
    struct OpenDevice final : qlt::VendorUsbDevice, qlt::UsbEndPoint
    {
        OpenDevice(ScriptedUsbHost& usbHost, const Device& plugged)
            : host(usbHost)
            , device(plugged)
        {
        }
        ~OpenDevice() override { ++host.closed; }
        std::uint16_t VendorId() const override { return device.vendorId; }
        std::uint16_t ProductId() const override { return device.productId; }
        std::uint8_t EndPointCount() const override
        {
            return static_cast<std::uint8_t>(device.attributes.size());
        }
        UsbEndPoint& EndPoint(std::uint8_t index) override { return asked = index, *this; }
        std::uint8_t Attributes() const override { return device.attributes.at(asked); }
        bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
        {
            std::unique_lock<std::mutex> lock(host.mMutex);
            host.mReadingFrom = asked;
            host.mChanged.notify_all();
            host.mChanged.wait(lock, [this] { return !host.mReads.empty() || !host.mDevice; });
            host.mReadingFrom = -1;
            length = 0;
            if (host.mReads.empty())
            {
                return false;
            }
            const auto [report, size, succeeds] = host.mReads.front();
            host.mReads.pop_front();
            std::copy_n(report.begin(), length = size, buffer);
            return succeeds;
        }
        ScriptedUsbHost& host;
        const Device device;
        std::uint8_t asked = 0;
    };

    std::mutex mMutex; // guards what follows
    std::condition_variable mChanged;
    std::optional<Device> mDevice;
    std::deque<std::tuple<Report, std::uint32_t, bool>> mReads;
    int mReadingFrom = -1; // the endpoint, while a read waits
};

/// Reads what is printed, too.
struct ScriptedHeadset
{
    /// The tracker has looked for the device once.
    explicit ScriptedHeadset(const ScriptedUsbHost::Device& device = {})
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        host.Plug(device);
        hmd.emplace(host, clock);
        clock.WaitForSleep(1);
    }

    void Start(qlt::TrackerListener& toListener)
    {
        listener = &toListener;
        hmd->AddListener(*listener);
        hmd->Start();
    }

    /// All its events are over when this returns.
    void Deliver(const ScriptedUsbHost::Report& report)
    {
        host.QueueRead(report);
        host.WaitForIdleRead();
    }

    /// Ends the tracker and collects what was printed.
    void End()
    {
        host.Unplug();
        clock.KeepAwake();
        if (listener != nullptr)
        {
            hmd->Stop();
            hmd->RemoveListener(*listener);
        }
        hmd.reset();
        EXPECT_EQ(host.opened, host.closed);
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
        std::cout << (testing::Test::HasFailure() ? out : ""); // which holds what failed
    }

    ScriptedUsbHost host;
    ManualClock clock;
    EventLog log;
    std::optional<qlt::Hmd> hmd;
    qlt::TrackerListener* listener = nullptr;
    std::string out, err;
};
