#include <qlt/Sensors/Hmd.h>

#include "Sensors/Headset/HardwareIo.h"

namespace qlt
{
namespace
{

constexpr std::uint32_t MAX_SEQUENCE_STEP = 10;

/// True at the first jump of the sequence number: forward by more than 10, or back. deliberate: it
/// is true once in a process, for all headsets together, because applications expect that no later
/// jump turns the view.
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

Hmd::Hmd()
    : Hmd(UsbHost::System())
{
}

Hmd::Hmd(UsbHost& host, Clock& clock)
    : mHardwareIo(std::make_unique<HardwareIo>(host, clock))
    , mFusion(clock)
{
}

Hmd::~Hmd()
{
    EndProcessing();
    mHardwareIo.reset(); // waits for the connection watcher
}

bool Hmd::IsConnected() const { return mHardwareIo->IsConnected(); }

Quaternion Hmd::GetPredictedQuaternion(float /*dt*/) const { return GetOrientation(); }

void Hmd::DoProcess()
{
    SensorReport report{};
    while (!ShouldStop())
    {
        switch (mHardwareIo->Read(report))
        {
        case HardwareIo::ReadResult::Whole:
            Deliver(report);
            break;
        case HardwareIo::ReadResult::NotConnected:
            std::this_thread::yield();
            break;
        case HardwareIo::ReadResult::Incomplete:
            break;
        }
    }
}

void Hmd::Deliver(const SensorReport& report)
{
    SensorSample sample = DecodeSensorReport(report);
    // The host service knows the position better than the device does.
    sample.position = GetClientPosition();
    const float time = mHardwareIo->NextEventTime();
    if (IsFirstJump(sample.sequence))
    {
        mFusion.Reset();
    }
    mFusion.Fuse(sample.accelerometer, sample.gyroscope, sample.magnetometer,
                 static_cast<float>(sample.deviceTimeS));
    NotifyAccelerometerEvent(sample.accelerometer, time);
    NotifyGyroscopeEvent(sample.gyroscope, time);
    NotifyMagnetometerEvent(sample.magnetometer, time);
    NotifyQuaternionEvent(sample.quaternion, time);
    NotifyTemperatureEvent(sample.temperature, time);
    NotifyPositionEvent(sample.position, time);
    NotifyOrientationEvent(mFusion.GetQuaternion(), time);
}

} // namespace qlt
