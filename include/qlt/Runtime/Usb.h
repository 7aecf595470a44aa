// The USB access that the trackers and the camera need, as an interface: `UsbHost::System()` is the
// machine's own, and an application may hand them another one (a recording, a scripted headset in a
// test).
//
// Ownership: a host lends nothing; a device belongs to whom it was opened for and owns its
// endpoints; it must not be closed while a transfer is in flight. Threads: one at a time for each
// device. A tracker opens and closes devices on its connection watcher and reads on its processing
// thread, never both at once; a camera's stream does everything on its own thread. Several devices
// may be opened and used at once, for the same hardware, too.
#pragma once

#include <qlt/Export.h>

#include <cstdint>
#include <memory>
#include <string>

namespace qlt
{

/// A read in flight, from UsbEndPoint::BeginTransfer on. Its destructor ends what is still in
/// flight.
class QLT_API UsbTransfer
{
public:
    virtual ~UsbTransfer();

    /// Waits for the end: true when the transfer has ended, or had at once; false when it could not
    /// start or `timeoutMs` have passed. Takes the signal of the transfer's event.
    virtual bool Wait(std::uint32_t timeoutMs) = 0;

    /// Once, at last: waits for the end without a limit, and gives the byte count received; false
    /// when the transfer failed.
    virtual bool Finish(std::uint32_t& length) = 0;
};

/// One endpoint of an open device. A host of interrupt endpoints only, for a tracker, needs no more
/// than the two pure operations; the others then say that there is nothing to stream.
class QLT_API UsbEndPoint
{
public:
    virtual ~UsbEndPoint();

    /// The endpoint descriptor's attributes byte: 2 bulk, 3 interrupt.
    virtual std::uint8_t Attributes() const = 0;

    /// The endpoint's address; bit 7 is set for one that is read from.
    virtual std::uint8_t Address() const;

    /// Reads at most `length` bytes into `buffer` and blocks until they are there, the transfer
    /// fails or the host's own time-out has passed. On return `length` is the byte count received,
    /// also after a failure (then usually 0). False on failure.
    virtual bool TransferData(std::uint8_t* buffer, std::uint32_t& length) = 0;

    /// How many bytes one request of the system asks for, rounded up to whole packets.
    virtual void SetTransferSize(std::uint32_t bytes);

    /// Starts to read `length` bytes into `buffer`, which must stay until the transfer has
    /// finished. `event`, a handle of the system's (an auto-reset event on Windows, an eventfd
    /// elsewhere), is signalled at the end. Never null: a start that fails shows in the wait and at
    /// the finish.
    virtual std::unique_ptr<UsbTransfer> BeginTransfer(std::uint8_t* buffer, std::uint32_t length,
                                                       void* event);

    /// Ends every transfer of this endpoint in flight; they have failed when it returns.
    virtual void AbortTransfers();
};

/// An open device; its destructor closes it.
class QLT_API VendorUsbDevice
{
public:
    virtual ~VendorUsbDevice();

    virtual std::uint16_t VendorId() const = 0;
    virtual std::uint16_t ProductId() const = 0;

    /// The number of endpoints, the control endpoint 0 included.
    virtual std::uint8_t EndPointCount() const = 0;

    /// The endpoint at `index` in 1 .. EndPointCount() - 1; index 0 is the control endpoint.
    virtual UsbEndPoint& EndPoint(std::uint8_t index) = 0;
};

/// Where devices come from. Must outlive every tracker that was given it.
class QLT_API UsbHost
{
public:
    virtual ~UsbHost();

    /// Opens the first of the headset's devices; null when there is none or it cannot be opened.
    /// The system's own host takes for one: on Windows every device that is bound to the headset's
    /// driver, elsewhere a device with vendor 04B4 and product 00F1 and no other.
    virtual std::unique_ptr<VendorUsbDevice> OpenFirst() = 0;

    /// How many such devices there are, and one of them; null as OpenFirst, and for an index past
    /// the count. The defaults know of the first one only.
    virtual std::uint32_t CountDevices();
    virtual std::unique_ptr<VendorUsbDevice> Open(std::uint32_t index);

    /// What this is, "libusb 1.0.26" for one, and why the last device could not be opened; empty
    /// when there is no such device or nothing is known. In words for a person.
    virtual std::string Name() const;
    virtual std::string Problem() const;

    /// The machine's own USB.
    static UsbHost& System();
};

} // namespace qlt
