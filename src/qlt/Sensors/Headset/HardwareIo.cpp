#include "Sensors/Headset/HardwareIo.h"

#include "Runtime/Check.h"
#include "Runtime/LogLine.h"

// deliberate: assertions report this path on every system, because support identifies them by it.
#define QLT_SOURCE_FILE L"Arch/Win32/Sensors/Hmd"

namespace qlt
{
namespace
{

constexpr std::uint16_t HEADSET_VENDOR_ID = 0x04B4;
constexpr std::uint16_t HEADSET_PRODUCT_ID = 0x00F1;
constexpr std::uint8_t INTERRUPT_TRANSFER = 3;
constexpr std::int64_t WATCH_PERIOD_NS = 1000000000;
constexpr float REPORT_PERIOD_S = 0.001f;

using Lock = std::lock_guard<std::recursive_mutex>;

bool IsHeadset(const VendorUsbDevice& device)
{
    return device.VendorId() == HEADSET_VENDOR_ID && device.ProductId() == HEADSET_PRODUCT_ID;
}

UsbEndPoint* FindInterruptEndPoint(VendorUsbDevice& device)
{
    for (std::uint8_t i = 1; i < device.EndPointCount(); ++i)
    {
        UsbEndPoint& endPoint = device.EndPoint(i);
        if (endPoint.Attributes() == INTERRUPT_TRANSFER)
        {
            return &endPoint;
        }
    }
    return nullptr;
}

} // namespace

Hmd::HardwareIo::HardwareIo(UsbHost& host, Clock& clock)
    : mHost(host)
    , mClock(clock)
    , mWatcher([this] { Watch(); })
{
}

Hmd::HardwareIo::~HardwareIo()
{
    mRunning = false;
    mWatcher.join();
    const Lock lock(mMutex);
    if (mConnected)
    {
        Disconnect();
    }
}

bool Hmd::HardwareIo::IsConnected() const
{
    const Lock lock(mMutex);
    return mConnected;
}

void Hmd::HardwareIo::Watch()
{
    while (mRunning)
    {
        {
            const Lock lock(mMutex);
            if (!mConnected)
            {
                Connect();
            }
        }
        mClock.SleepNs(WATCH_PERIOD_NS);
    }
}

void Hmd::HardwareIo::Connect()
{
    QLT_CHECK_LINE(!IsConnected(), 324);
    QLT_CHECK_LINE(mUSBDevice == nullptr, 325);
    QLT_CHECK_LINE(mEndPoint == nullptr, 326);
    std::unique_ptr<VendorUsbDevice> device = mHost.OpenFirst();
    if (device == nullptr || !IsHeadset(*device))
    {
        return;
    }
    UsbEndPoint* endPoint = FindInterruptEndPoint(*device);
    if (endPoint == nullptr)
    {
        return;
    }
    mUSBDevice = std::move(device);
    mEndPoint = endPoint;
    mConnected = true;
    LogLine(LogLevel::Info) << "USB Connected";
}

void Hmd::HardwareIo::Disconnect()
{
    const Lock lock(mMutex);
    QLT_CHECK_LINE(IsConnected(), 358);
    QLT_CHECK_LINE(mUSBDevice != nullptr, 359);
    QLT_CHECK_LINE(mEndPoint != nullptr, 360);
    mEndPoint = nullptr;
    mUSBDevice.reset();
    LogLine(LogLevel::Info) << "USB Disconnected";
    mConnected = false;
}

Hmd::HardwareIo::ReadResult Hmd::HardwareIo::Read(SensorReport& report)
{
    std::uint32_t length = SENSOR_REPORT_SIZE;
    {
        const Lock lock(mMutex);
        if (!mConnected)
        {
            return ReadResult::NotConnected;
        }
        // Ignore the result and check the length, because a failed read may be whole.
        mEndPoint->TransferData(report.data(), length);
    }
    if (length != SENSOR_REPORT_SIZE)
    {
        LogLine(LogLevel::Error) << "Read " << length << " instead of " << SENSOR_REPORT_SIZE
                                 << "!";
        Disconnect();
        return ReadResult::Incomplete;
    }
    return ReadResult::Whole;
}

float Hmd::HardwareIo::NextEventTime()
{
    const float time = mEventTime;
    mEventTime = time + REPORT_PERIOD_S;
    return time;
}

} // namespace qlt
