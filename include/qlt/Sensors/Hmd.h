// The tracker of the real headset: finds its inertial sensor on USB, decodes and calibrates its
// reports, fuses them and raises every tracker event.
//
// A connection watcher lives as long as the object and looks for the headset once a second, started
// or not; an unplugged headset is found again by itself. Progress ("USB Connected") goes to
// standard output, read errors to standard error.
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

class QLT_API Hmd : public Tracker
{
public:
    /// On the machine's own USB.
    Hmd();

    /// On another source of reports; `host` and `clock` must outlive this.
    explicit Hmd(UsbHost& host, Clock& clock = Clock::System());

    /// May take a second, until the connection watcher has noticed.
    ~Hmd() override;

    /// Whether the headset is there; waits while a report is being read.
    bool IsConnected() const override;

protected:
    /// deliberate: the last orientation, not extrapolated, with the yaw origin already in it.
    Quaternion GetPredictedQuaternion(float dt) const override;

    void DoProcess() override;

private:
    class QLT_LOCAL HardwareIo;

    /// Decodes a report, fuses it and raises its events. On the processing thread.
    void Deliver(const SensorReport& report);

    std::unique_ptr<HardwareIo> mHardwareIo;
    SensorFusion mFusion; // only the processing thread touches it
};

} // namespace qlt
