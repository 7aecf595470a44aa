// A USB host that shows what a tracker reads through it: put it between a tracker and the tracker's
// own host, and a sink sees every report of the headset before the tracker does.
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

/// Takes reports on the thread that reads them, between two reads: do not wait here.
class QLTKIT_API ReportSink
{
public:
    virtual ~ReportSink();

    /// A whole report, which was there at `hostNs` of the tap's clock.
    virtual void OnReport(const qlt::SensorReport& report, std::int64_t hostNs) = 0;

    /// A read gave anything but a whole report. The tracker takes this as an unplugged headset: it
    /// closes the device and opens it again, at most a second later.
    virtual void OnLost(std::int64_t hostNs) = 0;
};

/// Adds a look at the clock and one virtual call to each report, and neither a lock nor an
/// allocation. Everything but interrupt endpoints passes through untouched.
class QLTKIT_API ReportTap final : public qlt::UsbHost
{
public:
    /// All three must outlive this, and this must outlive what it has opened.
    ReportTap(qlt::UsbHost& host, qlt::Clock& clock, ReportSink& sink)
        : mHost(host)
        , mClock(clock)
        , mSink(sink)
    {
    }

    std::unique_ptr<qlt::VendorUsbDevice> OpenFirst() override;
    std::uint32_t CountDevices() override;
    std::unique_ptr<qlt::VendorUsbDevice> Open(std::uint32_t index) override;
    std::string Name() const override;
    std::string Problem() const override;

private:
    std::unique_ptr<qlt::VendorUsbDevice> Tapped(std::unique_ptr<qlt::VendorUsbDevice> device);

    qlt::UsbHost& mHost;
    qlt::Clock& mClock;
    ReportSink& mSink;
};

} // namespace qltkit
