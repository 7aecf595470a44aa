// Where a headset's reports come from: the machine's own USB, or a headset in software.
#pragma once

#include <qlt/Runtime/Clock.h>
#include <qlt/Runtime/Usb.h>
#include <qltkit/Export.h>

#include <memory>
#include <string>

namespace qltkit
{

/// A USB host together with the clock that its reports go by. A tracker takes it for both.
class QLTKIT_API Source : public qlt::UsbHost, public qlt::Clock
{
public:
    /// Ends the sleeps that are under way and, where the source can, the reads. From now on no read
    /// succeeds, no device can be opened, and a sleep lasts a millisecond. Any thread; a second
    /// call does nothing.
    virtual void Close() = 0;
};

/// The source of that name:
///   "headset"    the machine's own USB; a headset that is not there yet is waited for
///   "simulator"  a headset in software that turns its head, a report each millisecond
/// Error with one clear sentence for any other name. Any thread.
QLTKIT_API std::unique_ptr<Source> OpenSource(const std::string& name);

/// A source of a host, which must outlive it. Close does not end a read that `host` has begun.
QLTKIT_API std::unique_ptr<Source> SourceOf(qlt::UsbHost& host);

/// The same with another clock, which must outlive it too. Close does not end the sleeps of that
/// clock that are under way.
QLTKIT_API std::unique_ptr<Source> SourceOf(qlt::UsbHost& host, qlt::Clock& clock);

} // namespace qltkit
