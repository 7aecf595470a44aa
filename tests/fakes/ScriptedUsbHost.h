// A USB host of which the test is the hardware: what is plugged in, what each read returns.
#pragma once

#include <qlt/Runtime/Usb.h>

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

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
    void Plug(const Device& device);

    /// The device is gone: the read that waits, and every later one, fails with length 0.
    void Unplug();

    /// What the next read returns: a report, or its first `length` bytes, as a failed transfer or
    /// not.
    void QueueRead(const Report& report, std::uint32_t length = 64, bool succeeds = true);

    /// Waits until the tracker wants to read and nothing is queued.
    void WaitForIdleRead();

    /// Waits until so many devices have been closed.
    void WaitForClosed(int count);

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;

    int Opened() const;
    int Closed() const;

    /// The endpoint that the last read came from.
    int LastEndPoint() const;

private:
    class ScriptedEndPoint;
    class OpenDevice;

    struct Read
    {
        Report report;
        std::uint32_t length;
        bool succeeds;
    };

    bool NextRead(int endPoint, std::uint8_t* buffer, std::uint32_t& length);

    mutable std::mutex mMutex; // guards everything below
    std::condition_variable mChanged;
    bool mPlugged = false;
    Device mDevice;
    std::deque<Read> mReads;
    bool mReading = false;
    int mOpened = 0;
    int mClosed = 0;
    int mLastEndPoint = -1;
};
