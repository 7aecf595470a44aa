// A USB host with a stream of which the test is the device: what every read of the bulk endpoint
// gives, in the order in which the reads are waited for.
#pragma once

#include <qlt/Runtime/Usb.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

struct ScriptedStreamDevice
{
    std::uint16_t vendorId = 0x04B4;
    std::uint16_t productId = 0x00F1;
    std::vector<std::uint8_t> addresses = {0x81, 0x82};
};

class ScriptedStream final : public qlt::UsbHost
{
public:
    using Bytes = std::vector<std::uint8_t>;
    using Device = ScriptedStreamDevice;

    /// What one read gives: the bytes, or what fails of it.
    struct Read
    {
        Bytes bytes;
        bool inTime = true;
        bool succeeds = true;
    };

    explicit ScriptedStream(std::vector<Device> devices = std::vector<Device>(1))
        : mDevices(std::move(devices))
    {
    }

    /// A frame with a valid header whose second word is `number`, and an image that tells it, too.
    static Bytes Frame(std::size_t size, std::uint32_t number)
    {
        std::vector<std::uint32_t> words(size / 4, (number & 0xFF) * 0x01010101U);
        const std::uint32_t header[] = {0xDEADBEEF, number, 0, 0, 0, 0U - 0xDEADBEEF - number};
        std::copy(std::begin(header), std::end(header), words.begin());
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(words.data());
        return {bytes, bytes + size};
    }

    void Queue(const std::vector<Read>& reads)
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mReads.insert(mReads.end(), reads.begin(), reads.end());
        mChanged.notify_all();
    }

    /// From now on a read for which nothing is queued is not in time, instead of waiting.
    void End()
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mEnded = true;
        mChanged.notify_all();
    }

    /// Waits until all that was queued has been read.
    void WaitForIdle()
    {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this] { return mReads.empty() && mWaiting; });
    }

    /// When the stream has been stopped.
    const std::vector<std::uint32_t>& TransferSizes() const { return mSizes; }

    int Aborts() const { return mAborts; }
    /// Reads begun and not finished; devices open.
    int InFlight() const { return mInFlight; }
    int OpenDevices() const { return mOpenDevices; }

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override { return Open(0); }
    std::uint32_t CountDevices() override { return static_cast<std::uint32_t>(mDevices.size()); }
    std::unique_ptr<qlt::VendorUsbDevice> Open(std::uint32_t index) override
    {
        return index < mDevices.size() ? std::make_unique<OpenDevice>(*this, mDevices[index])
                                       : nullptr;
    }

private:
    struct Transfer final : qlt::UsbTransfer
    {
        Transfer(ScriptedStream& host, std::uint8_t* buffer, std::uint32_t length)
            : mHost(host)
            , mBuffer(buffer)
            , mLength(length)
        {
            ++mHost.mInFlight;
        }

        bool Wait(std::uint32_t) override
        {
            std::unique_lock<std::mutex> lock(mHost.mMutex);
            mHost.mWaiting = true;
            mHost.mChanged.notify_all();
            mHost.mChanged.wait(lock, [this] { return !mHost.mReads.empty() || mHost.mEnded; });
            mHost.mWaiting = false;
            mRead = {{}, false, false};
            if (!mHost.mReads.empty())
            {
                mRead = mHost.mReads.front();
                mHost.mReads.pop_front();
            }
            return mRead.inTime;
        }

        bool Finish(std::uint32_t& length) override
        {
            --mHost.mInFlight;
            length = std::min(mLength, static_cast<std::uint32_t>(mRead.bytes.size()));
            std::copy_n(mRead.bytes.begin(), length, mBuffer);
            return mRead.succeeds;
        }

        ScriptedStream& mHost;
        std::uint8_t* const mBuffer;
        const std::uint32_t mLength;
        Read mRead;
    };

    /// Also the endpoint of it that was asked for last.
    struct OpenDevice final : qlt::VendorUsbDevice, qlt::UsbEndPoint
    {
        OpenDevice(ScriptedStream& host, const Device& device)
            : mHost(host)
            , mDevice(device)
        {
            ++mHost.mOpenDevices;
        }
        ~OpenDevice() override { --mHost.mOpenDevices; }

        std::uint16_t VendorId() const override { return mDevice.vendorId; }
        std::uint16_t ProductId() const override { return mDevice.productId; }
        std::uint8_t EndPointCount() const override
        {
            return static_cast<std::uint8_t>(mDevice.addresses.size() + 1);
        }
        qlt::UsbEndPoint& EndPoint(std::uint8_t index) override
        {
            mAddress = mDevice.addresses[index - 1U];
            return *this;
        }

        std::uint8_t Attributes() const override { return 2; }
        std::uint8_t Address() const override { return mAddress; }
        bool TransferData(std::uint8_t*, std::uint32_t&) override { return false; }
        void SetTransferSize(std::uint32_t bytes) override { mHost.mSizes.push_back(bytes); }
        void AbortTransfers() override { ++mHost.mAborts; }
        std::unique_ptr<qlt::UsbTransfer> BeginTransfer(std::uint8_t* buffer, std::uint32_t length,
                                                        void*) override
        {
            return std::make_unique<Transfer>(mHost, buffer, length);
        }

        ScriptedStream& mHost;
        const Device mDevice;
        std::uint8_t mAddress = 0;
    };

    const std::vector<Device> mDevices;
    std::vector<std::uint32_t> mSizes; // the stream's, until it has been stopped
    std::atomic<int> mAborts{0};
    std::atomic<int> mInFlight{0};
    std::atomic<int> mOpenDevices{0};
    std::mutex mMutex; // guards everything below
    std::condition_variable mChanged;
    std::deque<Read> mReads;
    bool mEnded = false;
    bool mWaiting = false;
};
