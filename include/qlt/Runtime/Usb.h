// The USB access that the trackers need, as an interface: `UsbHost::System()` is the machine's own,
// and an application may hand a tracker another one (a recording, a scripted headset in a test).
//
// Ownership: a host lends nothing; a device belongs to whom it was opened for and owns its
// endpoints. Threads: a tracker opens and closes devices on its connection watcher and reads on its
// processing thread, never both at once.
#pragma once

#include <qlt/Export.h>

#include <cstdint>
#include <memory>

namespace qlt
{

/// One endpoint of an open device.
class QLT_API UsbEndPoint
{
public:
    virtual ~UsbEndPoint();

    /// The endpoint descriptor's attributes byte: 2 bulk, 3 interrupt.
    virtual std::uint8_t Attributes() const = 0;

    /// Reads at most `length` bytes into `buffer` and blocks until they are there, the transfer
    /// fails or the host's own time-out has passed. On return `length` is the byte count received,
    /// also after a failure (then usually 0). False on failure.
    virtual bool TransferData(std::uint8_t* buffer, std::uint32_t& length) = 0;
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

    /// Opens the first device bound to the headset's driver, whichever it is; null when there is
    /// none or it cannot be opened.
    virtual std::unique_ptr<VendorUsbDevice> OpenFirst() = 0;

    /// The machine's own USB.
    static UsbHost& System();
};

} // namespace qlt
