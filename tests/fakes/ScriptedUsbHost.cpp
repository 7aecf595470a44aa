#include "fakes/ScriptedUsbHost.h"

#include <algorithm>

class ScriptedUsbHost::ScriptedEndPoint final : public qlt::UsbEndPoint
{
public:
    ScriptedEndPoint(ScriptedUsbHost& host, int index, std::uint8_t attributes)
        : mHost(host)
        , mIndex(index)
        , mAttributes(attributes)
    {
    }

    std::uint8_t Attributes() const override { return mAttributes; }

    bool TransferData(std::uint8_t* buffer, std::uint32_t& length) override
    {
        return mHost.NextRead(mIndex, buffer, length);
    }

private:
    ScriptedUsbHost& mHost;
    const int mIndex;
    const std::uint8_t mAttributes;
};

class ScriptedUsbHost::OpenDevice final : public qlt::VendorUsbDevice
{
public:
    OpenDevice(ScriptedUsbHost& host, const Device& device)
        : mHost(host)
        , mDevice(device)
    {
        for (std::size_t i = 0; i < device.attributes.size(); ++i)
        {
            mEndPoints.push_back(std::make_unique<ScriptedEndPoint>(host, static_cast<int>(i),
                                                                    device.attributes[i]));
        }
    }

    ~OpenDevice() override
    {
        const std::lock_guard<std::mutex> lock(mHost.mMutex);
        ++mHost.mClosed;
        mHost.mChanged.notify_all();
    }

    std::uint16_t VendorId() const override { return mDevice.vendorId; }
    std::uint16_t ProductId() const override { return mDevice.productId; }
    std::uint8_t EndPointCount() const override
    {
        return static_cast<std::uint8_t>(mEndPoints.size());
    }
    qlt::UsbEndPoint& EndPoint(std::uint8_t index) override { return *mEndPoints.at(index); }

private:
    ScriptedUsbHost& mHost;
    const Device mDevice;
    std::vector<std::unique_ptr<qlt::UsbEndPoint>> mEndPoints;
};

void ScriptedUsbHost::Plug(const Device& device)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    mDevice = device;
    mPlugged = true;
}

void ScriptedUsbHost::Unplug()
{
    const std::lock_guard<std::mutex> lock(mMutex);
    mPlugged = false;
    mChanged.notify_all();
}

void ScriptedUsbHost::QueueRead(const Report& report, std::uint32_t length, bool succeeds)
{
    const std::lock_guard<std::mutex> lock(mMutex);
    mReads.push_back({report, length, succeeds});
    mChanged.notify_all();
}

void ScriptedUsbHost::WaitForIdleRead()
{
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait(lock, [this] { return mReading && mReads.empty(); });
}

void ScriptedUsbHost::WaitForClosed(int count)
{
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait(lock, [this, count] { return mClosed >= count; });
}

std::unique_ptr<qlt::VendorUsbDevice> ScriptedUsbHost::OpenFirst()
{
    const std::lock_guard<std::mutex> lock(mMutex);
    if (!mPlugged)
    {
        return nullptr;
    }
    ++mOpened;
    return std::make_unique<OpenDevice>(*this, mDevice);
}

bool ScriptedUsbHost::NextRead(int endPoint, std::uint8_t* buffer, std::uint32_t& length)
{
    std::unique_lock<std::mutex> lock(mMutex);
    mLastEndPoint = endPoint;
    mReading = true;
    mChanged.notify_all();
    mChanged.wait(lock, [this] { return !mReads.empty() || !mPlugged; });
    mReading = false;
    if (mReads.empty())
    {
        length = 0;
        return false;
    }
    const Read read = mReads.front();
    mReads.pop_front();
    std::copy_n(read.report.begin(), std::min(read.length, length), buffer);
    length = read.length;
    return read.succeeds;
}

int ScriptedUsbHost::Opened() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mOpened;
}

int ScriptedUsbHost::Closed() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mClosed;
}

int ScriptedUsbHost::LastEndPoint() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLastEndPoint;
}
