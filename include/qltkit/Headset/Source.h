#pragma once

#include <qlt/Runtime/Clock.h>
#include <qlt/Runtime/Usb.h>
#include <qltkit/Export.h>

#include <memory>
#include <string>

namespace qltkit
{

/// A source of a headset's reports: a USB host together with the clock of its reports. A
/// HeadTracker can own one, so that it can end its reads and sleeps when it is destroyed. Threads:
/// as for qlt::UsbHost and qlt::Clock.
class QLTKIT_API Source : public qlt::UsbHost, public qlt::Clock
{
public:
    /// Ends the sleeps in progress, and the reads if the source can do that. After this call no
    /// device can be opened, and each sleep lasts one millisecond. A second call does nothing. Any
    /// thread.
    virtual void Close() = 0;

    /// True when the source has given its last report: at the end of a recording or of a script.
    /// Every later read fails. False by default. Any thread.
    virtual bool IsOver() const;
};

/// Opens the source with this name. Throws Error with one clear sentence for an unknown name, and
/// for a file that cannot be read or is something else. Any thread.
///
/// - "headset" is the machine's own USB. The headset may be plugged in later.
/// - "simulator" is a headset in software. It moves its head and sends a report each millisecond.
/// - A name that ends in .json, .mcap or .bin is a file, which OpenScriptedHeadset opens. The
///   headset does in real time what the file says. Error also when the file cannot be read.
QLTKIT_API std::unique_ptr<Source> OpenSource(const std::string& name);

/// Makes a source from a host and the machine's clock. `host` must outlive the source. Close does
/// not end a read that `host` has begun. Any thread.
QLTKIT_API std::unique_ptr<Source> SourceOf(qlt::UsbHost& host);

/// Makes a source from a host and another clock. Both must outlive the source. Close does not end a
/// sleep that `clock` has begun. Any thread.
QLTKIT_API std::unique_ptr<Source> SourceOf(qlt::UsbHost& host, qlt::Clock& clock);

} // namespace qltkit
