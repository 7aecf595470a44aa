#include <qlt/Sensors/SimulatorTracker.h>

#include "Math/FloatMath.h"

namespace qlt
{
namespace
{

constexpr std::int64_t CYCLE_NS = 1000000;

} // namespace

SimulatorTracker::SimulatorTracker()
    : SimulatorTracker(Clock::System())
{
}

SimulatorTracker::SimulatorTracker(Clock& clock)
    : mClock(clock)
{
}

SimulatorTracker::~SimulatorTracker() { EndProcessing(); }

void SimulatorTracker::DoProcess()
{
    while (!ShouldStop())
    {
        const float t = mSimulatedTime;
        mSimulatedTime = t + 0.001f;
        RaiseEvents(t);
        mClock.SleepNs(CYCLE_NS);
    }
}

void SimulatorTracker::RaiseEvents(float t)
{
    const float c = Cos(t);
    const float s = Sin(t);
    NotifyAccelerometerEvent(Vec3(s, c, c * c), t);
    NotifyGyroscopeEvent(Vec3(Sin(3.0f * t), Cos(t / 2.0f), s * c), t);
    NotifyMagnetometerEvent(Vec3(s * s, Cos(2.0f * t), c), t);
    NotifyQuaternionEvent(Quaternion::RotationQuaternion(t, Vec3(0.0f, 1.0f, 0.0f)), t);
    NotifyTemperatureEvent(c * 10.0f + 60.0f, t);
    NotifyPositionEvent(Vec3(), t);
    NotifyOrientationEvent(Quaternion::RotationQuaternion(t, Vec3(1.0f, 0.0f, 0.0f)), t);
}

} // namespace qlt
