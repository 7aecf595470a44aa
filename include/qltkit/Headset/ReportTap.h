#pragma once

#include <qlt/Runtime/Clock.h>
#include <qlt/Runtime/Usb.h>
#include <qlt/Sensors/SensorReport.h>
#include <qltkit/Export.h>

#include <cstdint>
#include <memory>
#include <string>

namespace qltkit
{

/// Takes the reports that a tap has seen. The tap calls these operations on the thread that reads
/// the reports, between two reads, so they must not wait. They must not throw either, because
/// nothing catches exceptions on that thread.
class QLTKIT_API ReportSink
{
public:
    virtual ~ReportSink();

    /// A whole report has arrived. `hostNs` is its arrival time in nanoseconds of the tap's clock.
    /// The reference is valid during the call.
    virtual void OnReport(const qlt::SensorReport& report, std::int64_t hostNs) = 0;

    /// A read has failed or was too short. The tracker treats this as an unplugged headset: it
    /// closes the device and tries to open it again each second. `hostNs` is the time of the
    /// failure.
    virtual void OnLost(std::int64_t hostNs) = 0;
};

/// A USB host between a tracker and another host. It gives every report that the tracker reads to a
/// sink, before the tracker gets the report. ReportRecorder shows an example.
///
/// Each report costs one read of the clock and one virtual call, but no lock and no allocation.
/// Only interrupt endpoints are tapped; all others pass through unchanged. Threads: as for
/// qlt::UsbHost.
class QLTKIT_API ReportTap final : public qlt::UsbHost
{
public:
    /// Makes a tap. `host`, `clock` and `sink` must outlive it, and the tap must outlive the
    /// devices that it has opened.
    ReportTap(qlt::UsbHost& host, qlt::Clock& clock, ReportSink& sink)
        : mHost(host)
        , mClock(clock)
        , mSink(sink)
    {
    }

    /// Opens the first device of the host and taps it. Null when the host opens none.
    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;

    /// The number of devices of the host.
    std::uint32_t CountDevices() override;

    /// Opens the device of the host at `index` and taps it. Null when the host opens none.
    std::unique_ptr<qlt::VendorUsbDevice> Open(std::uint32_t index) override;

    /// The name of the host.
    std::string Name() const override;

    /// The reason why the host could not open the last device.
    std::string Problem() const override;

private:
    std::unique_ptr<qlt::VendorUsbDevice> Tapped(std::unique_ptr<qlt::VendorUsbDevice> device);

    qlt::UsbHost& mHost;
    qlt::Clock& mClock;
    ReportSink& mSink;
};

} // namespace qltkit
