#pragma once

#include <qlt/Runtime/Clock.h>
#include <qlt/Runtime/Usb.h>
#include <qltkit/Export.h>

#include <memory>
#include <string>

namespace qltkit
{

/// Where a headset's reports come from: a USB host together with the clock of its reports.
class QLTKIT_API Source : public qlt::UsbHost, public qlt::Clock
{
public:
    /// Ends the sleeps that are under way, and the reads if the source can do that. From now on no
    /// device can be opened, and a sleep lasts a millisecond. Any thread; a second call does
    /// nothing.
    virtual void Close() = 0;
};

/// Opens the source of that name. Throws Error with one clear sentence for an unknown name. Any
/// thread.
///
/// - "headset" is the machine's own USB. The headset may be plugged in later.
/// - "simulator" is a headset in software. It moves its head and sends a report each millisecond.
QLTKIT_API std::unique_ptr<Source> OpenSource(const std::string& name);

/// Makes a source of a host, which must outlive it, and of the machine's clock. Close does not end
/// a read that `host` has begun.
QLTKIT_API std::unique_ptr<Source> SourceOf(qlt::UsbHost& host);

/// The same with another clock, which must outlive the source, too. Close does not end a sleep that
/// `clock` has begun.
QLTKIT_API std::unique_ptr<Source> SourceOf(qlt::UsbHost& host, qlt::Clock& clock);

} // namespace qltkit
