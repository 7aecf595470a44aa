#include "Sensors/HardwareIo.h"

#include "Runtime/Check.h"

#include <iostream>

// deliberate: the place that clients of the Windows library know these assertions by.
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
constexpr std::uint32_t MAX_SEQUENCE_STEP = 10;

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

/// True at the first jump of the sequence, forward by more than 10 or any step back. deliberate:
/// once in a process, over all its headsets; applications rely on no later jump turning the view.
bool IsFirstJump(std::uint32_t sequence)
{
    static std::atomic<std::uint32_t> previous{sequence};
    static std::atomic<bool> synchronised{false};
    if (synchronised)
    {
        return false;
    }
    const std::uint32_t step = sequence - previous.load(std::memory_order_relaxed);
    previous.store(sequence, std::memory_order_relaxed);
    if (step <= MAX_SEQUENCE_STEP)
    {
        return false;
    }
    synchronised = true;
    return true;
}

} // namespace

Hmd::HardwareIo::HardwareIo(Hmd* hmd, UsbHost& host, Clock& clock)
    : mHmd(hmd)
    , mHost(host)
    , mClock(clock)
    , mWatcher([this] { Watch(); })
{
    QLT_CHECK_LINE(mHmd != nullptr, 269);
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
    mScales = HEADSET_SCALES;
    mConnected = true;
    std::cout << "USB Connected" << std::endl;
}

void Hmd::HardwareIo::Disconnect()
{
    const Lock lock(mMutex);
    QLT_CHECK_LINE(IsConnected(), 358);
    QLT_CHECK_LINE(mUSBDevice != nullptr, 359);
    QLT_CHECK_LINE(mEndPoint != nullptr, 360);
    mEndPoint = nullptr;
    mUSBDevice.reset();
    std::cout << "USB Disconnected" << std::endl;
    mConnected = false;
}

bool Hmd::HardwareIo::Read()
{
    std::uint32_t length = SENSOR_REPORT_SIZE;
    {
        const Lock lock(mMutex);
        if (!mConnected)
        {
            return false;
        }
        // A failure shows in the length.
        mEndPoint->TransferData(mReport.data(), length);
    }
    if (length != SENSOR_REPORT_SIZE)
    {
        std::cerr << "Read " << length << " instead of " << SENSOR_REPORT_SIZE << "!" << std::endl;
        Disconnect();
        return true;
    }
    // The scales change only while disconnected, and only this thread disconnects.
    SensorSample sample = DecodeSensorReport(mReport, mScales);
    // The host service knows better than the device where it is.
    sample.position = mHmd->GetClientPosition();
    Deliver(sample);
    return true;
}

void Hmd::HardwareIo::Deliver(const SensorSample& sample)
{
    const float t = mEventTime;
    mEventTime = t + REPORT_PERIOD_S;
    SensorFusion& fusion = mHmd->mFusion;
    if (IsFirstJump(sample.sequence))
    {
        fusion.Reset();
    }
    fusion.Fuse(sample.accelerometer, sample.gyroscope, sample.magnetometer,
                static_cast<float>(sample.deviceTimeS));
    mHmd->NotifyAccelerometerEvent(sample.accelerometer, t);
    mHmd->NotifyGyroscopeEvent(sample.gyroscope, t);
    mHmd->NotifyMagnetometerEvent(sample.magnetometer, t);
    mHmd->NotifyQuaternionEvent(sample.quaternion, t);
    mHmd->NotifyTemperatureEvent(sample.temperature, t);
    mHmd->NotifyPositionEvent(sample.position, t);
    mHmd->NotifyOrientationEvent(fusion.GetQuaternion(), t);
}

} // namespace qlt
