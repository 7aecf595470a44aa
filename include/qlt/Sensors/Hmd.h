#pragma once

#include <qlt/Export.h>
#include <qlt/Runtime/Clock.h>
#include <qlt/Runtime/Usb.h>
#include <qlt/Sensors/SensorFusion.h>
#include <qlt/Sensors/SensorReport.h>
#include <qlt/Sensors/Tracker.h>

#include <memory>

namespace qlt
{

/// The tracker of the real headset. It finds the inertial sensor on USB, decodes and calibrates the
/// reports, fuses them and raises every event of a tracker.
///
///     qlt::Hmd hmd;
///     hmd.Start(); // the headset may be plugged in later
///     const qlt::Quaternion head = hmd.CopyOrientation();
///     hmd.Stop();
///
/// A connection watcher lives as long as the object. It looks for the headset once a second, also
/// while the tracker is stopped, so an unplugged headset is found again. The tracker
/// prints progress ("USB Connected") on standard output and read errors on standard error. A
/// started tracker without a headset keeps one core busy.
class QLT_API Hmd : public Tracker
{
public:
    /// Uses the machine's own USB.
    Hmd();

    /// Uses another source of reports. `host` and `clock` must outlive the tracker.
    explicit Hmd(UsbHost& host, Clock& clock = Clock::System());

    /// May take a second, because it waits for the connection watcher's current sleep.
    ~Hmd() override;

    /// True when the headset is connected. The call waits while a report is being read. Any thread.
    bool IsConnected() const override;

protected:
    /// deliberate: returns the last orientation without extrapolation. The yaw origin is already
    /// applied to it, and engines compensate for that. `dt` is ignored.
    Quaternion GetPredictedQuaternion(float dt) const override;

    /// Reads reports until the tracker is stopped.
    void DoProcess() override;

private:
    class QLT_LOCAL HardwareIo;

    /// Decodes a report, fuses it and raises its events, on the processing thread.
    void Deliver(const SensorReport& report);

    std::unique_ptr<HardwareIo> mHardwareIo;
    SensorFusion mFusion; // only the processing thread touches it
};

} // namespace qlt
