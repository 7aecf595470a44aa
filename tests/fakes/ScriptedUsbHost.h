// A USB host whose hardware is the test. The test queues the result of every read, for a tracker's
// reports and a camera's frames. Reads get the results in the order in which they are waited for.
#pragma once

#include <qlt/Runtime/Usb.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

struct ScriptedDevice
{
    std::uint16_t vendorId = 0x04B4;
    std::uint16_t productId = 0x00F1;
    std::vector<std::uint8_t> attributes = {0, 3, 2}; // one for each endpoint, from endpoint 0 on
    std::vector<std::uint8_t> addresses = {0, 0x81, 0x82};
};

class ScriptedUsbHost final : public qlt::UsbHost
{
public:
    using Bytes = std::vector<std::uint8_t>;
    using Report = std::array<std::uint8_t, 64>;

    /// The result of one read: the bytes, or the part that fails.
    struct Read
    {
        Bytes bytes;
        bool inTime = true;
        bool succeeds = true;
    };

    explicit ScriptedUsbHost(std::vector<ScriptedDevice> devices = {})
        : mDevices(std::move(devices))
    {
    }

    /// A frame with a valid header whose second word is `number`. The image shows the number, too.
    static Bytes Frame(std::size_t size, std::uint32_t number)
    {
        Bytes bytes(size, static_cast<std::uint8_t>(number));
        const std::uint32_t header[] = {0xDEADBEEF, number, 0, 0, 0, 0U - 0xDEADBEEF - number};
        const auto* headerBytes = reinterpret_cast<const std::uint8_t*>(header);
        std::copy_n(headerBytes, sizeof header, bytes.begin());
        return bytes;
    }

    /// From now on this is the only device.
    void Plug(const ScriptedDevice& device)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mDevices = {device};
    }

    /// From now on a read for which nothing is queued fails with length 0, instead of waiting.
    void Unplug()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mDevices.clear();
        mChanged.notify_all();
    }

    void Queue(const std::vector<Read>& reads)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mReads.insert(mReads.end(), reads.begin(), reads.end());
        mChanged.notify_all();
    }

    /// Queues a report, or its first `length` bytes.
    void QueueRead(const Report& report, std::uint32_t length = 64, bool succeeds = true)
    {
        Queue({{{report.begin(), report.begin() + length}, true, succeeds}});
    }

    /// Waits until somebody reads and nothing is queued; returns the endpoint.
    int WaitForIdle()
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this] { return mReadingFrom >= 0 && mReads.empty(); });
        return mReadingFrom;
    }

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override { return Open(0); }
    std::uint32_t CountDevices() override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return static_cast<std::uint32_t>(mDevices.size());
    }
    std::unique_ptr<qlt::VendorUsbDevice> Open(std::uint32_t index) override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return index < mDevices.size() ? std::make_unique<OpenDevice>(*this, mDevices[index])
                                       : nullptr;
    }

    std::atomic<int> opened{0};
    std::atomic<int> closed{0};
    std::atomic<int> inFlight{0}; // transfers begun and not finished
    std::atomic<int> aborts{0};
    std::atomic<std::uint32_t> lastWaitMs{0}; // the time limit of the last wait
    // The event of the stream, valid until the stream is stopped.
    std::vector<std::uint32_t> transferSizes;

private:
    struct Transfer final : qlt::UsbTransfer
    {
        Transfer(ScriptedUsbHost& usbHost, int from, std::uint8_t* to, std::uint32_t bytes)
            : host(usbHost)
            , endPoint(from)
            , buffer(to)
            , wanted(bytes)
        {
            ++host.inFlight;
        }
        bool Wait(std::uint32_t timeoutMs) override
        {
            host.lastWaitMs = timeoutMs;
            return (read = host.Next(endPoint)).inTime;
        }
        bool Finish(std::uint32_t& length) override
        {
            --host.inFlight;
            length = std::min(wanted, static_cast<std::uint32_t>(read.bytes.size()));
            std::copy_n(read.bytes.begin(), length, buffer);
            return read.succeeds;
        }
        ScriptedUsbHost& host;
        const int endPoint;
        std::uint8_t* const buffer;
        const std::uint32_t wanted;
        Read read;
    };

    struct EndPointOf final : qlt::UsbEndPoint
    {
        EndPointOf(ScriptedUsbHost& usbHost, const ScriptedDevice& plugged, std::uint8_t at)
            : host(usbHost)
            , device(plugged)
            , index(at)
        {
        }
        std::uint8_t Attributes() const override { return device.attributes.at(index); }
        std::uint8_t Address() const override { return device.addresses.at(index); }
        bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
        {
            Transfer transfer(host, index, buffer, length);
            transfer.Wait(0);
            return transfer.Finish(length);
        }
        void SetTransferSize(std::uint32_t bytes) override { host.transferSizes.push_back(bytes); }
        void AbortTransfers() override { ++host.aborts; }
        std::unique_ptr<qlt::UsbTransfer> BeginTransfer(std::uint8_t* buffer, std::uint32_t length,
                                                        void*) override
        {
            return std::make_unique<Transfer>(host, index, buffer, length);
        }
        ScriptedUsbHost& host;
        const ScriptedDevice& device;
        const std::uint8_t index;
    };

    struct OpenDevice final : qlt::VendorUsbDevice
    {
        OpenDevice(ScriptedUsbHost& usbHost, const ScriptedDevice& plugged)
            : host(usbHost)
            , device(plugged)
        {
            ++host.opened;
            while (endPoints.size() < device.attributes.size())
            {
                endPoints.emplace_back(host, device, EndPointCount());
            }
        }
        ~OpenDevice() override { ++host.closed; }
        std::uint16_t VendorId() const override { return device.vendorId; }
        std::uint16_t ProductId() const override { return device.productId; }
        std::uint8_t EndPointCount() const override
        {
            return static_cast<std::uint8_t>(endPoints.size());
        }
        qlt::UsbEndPoint& EndPoint(std::uint8_t index) override { return endPoints.at(index); }
        ScriptedUsbHost& host;
        const ScriptedDevice device;
        std::deque<EndPointOf> endPoints;
    };

    Read Next(int endPoint)
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mReadingFrom = endPoint;
        mChanged.notify_all();
        mChanged.wait(lock, [this] { return !mReads.empty() || mDevices.empty(); });
        mReadingFrom = -1;
        Read read{{}, false, false};
        if (!mReads.empty())
        {
            read = std::move(mReads.front());
            mReads.pop_front();
        }
        return read;
    }

    std::mutex mMutex; // guards the members below
    std::condition_variable mChanged;
    std::vector<ScriptedDevice> mDevices;
    std::deque<Read> mReads;
    int mReadingFrom = -1; // the endpoint, while a read waits
};
