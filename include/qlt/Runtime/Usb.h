// USB access as an interface. UsbHost::System() is the USB of this machine. An application may pass
// another host to a tracker or a camera, such as a recording or a scripted headset.
#pragma once

#include <qlt/Export.h>
#include <qlt/Runtime/EventHandle.h>

#include <cstdint>
#include <memory>
#include <string>

namespace qlt
{

/// A read that UsbEndPoint::BeginTransfer has started. Its destructor ends a read that is still in
/// flight. One thread at a time.
class QLT_API UsbTransfer
{
public:
    virtual ~UsbTransfer();

    /// Waits for the end of the transfer and takes the signal of its event. True when the transfer
    /// has ended; false when it could not start or `timeoutMs` milliseconds have passed.
    virtual bool Wait(std::uint32_t timeoutMs) = 0;

    /// Waits for the end without a time limit and gives the number of bytes received. False when
    /// the transfer failed. Call it once, as the last operation.
    virtual bool Finish(std::uint32_t& length) = 0;
};

/// One endpoint of an open device. A host for trackers has interrupt endpoints only and implements
/// the two pure operations; the defaults of the others say that there is nothing to stream. One
/// thread at a time for each device.
class QLT_API UsbEndPoint
{
public:
    virtual ~UsbEndPoint();

    /// The endpoint descriptor's attributes byte: 2 bulk, 3 interrupt.
    virtual std::uint8_t Attributes() const = 0;

    /// The address of the endpoint. Bit 7 is set for an endpoint that the host reads from.
    virtual std::uint8_t Address() const;

    /// Reads at most `length` bytes into `buffer`. It returns when they have arrived, when the
    /// transfer has failed, or when the host's own time limit has passed. On return `length` is the
    /// number of bytes received, even after a failure. False on failure.
    virtual bool TransferData(std::uint8_t* buffer, std::uint32_t& length) = 0;

    /// Sets the number of bytes that one request of the system asks for, rounded up to whole
    /// packets. It is only a hint for speed, and the default ignores it.
    virtual void SetTransferSize(std::uint32_t bytes);

    /// Starts to read `length` bytes into `buffer`, which must exist until the transfer has
    /// finished. At the end it signals `event`, an event of the system: the HANDLE of an auto-reset
    /// event on Windows, and elsewhere an eventfd as a pointer of that value. The result is never
    /// null; a start that fails shows in Wait and in Finish.
    virtual std::unique_ptr<UsbTransfer> BeginTransfer(std::uint8_t* buffer, std::uint32_t length,
                                                       NativeEventHandle event);

    /// Ends every transfer of this endpoint that is in flight. They have failed when it returns.
    virtual void AbortTransfers();
};

/// An open device, which owns its endpoints. Its destructor closes it; no transfer may be in flight
/// then. One thread at a time may use a device. A tracker opens and closes devices on its
/// connection watcher and reads on its processing thread, never both at once. A camera's stream
/// does everything on its own thread.
class QLT_API VendorUsbDevice
{
public:
    virtual ~VendorUsbDevice();

    /// The USB identifier of the vendor.
    virtual std::uint16_t VendorId() const = 0;

    /// The USB identifier of the product.
    virtual std::uint16_t ProductId() const = 0;

    /// The number of endpoints, with the control endpoint 0.
    virtual std::uint8_t EndPointCount() const = 0;

    /// The endpoint at `index`, which is in 1 .. EndPointCount() - 1.
    virtual UsbEndPoint& EndPoint(std::uint8_t index) = 0;
};

/// A source of devices. It must outlive every tracker and camera that uses it. Several threads may
/// open devices at once, and several opened devices of one headset may be used at once.
class QLT_API UsbHost
{
public:
    virtual ~UsbHost();

    /// Opens the first of the headset's devices. Null when there is none, and when it cannot be
    /// opened. On Windows the machine's own host finds all devices that are bound to the headset's
    /// driver. Elsewhere it finds the devices with vendor 04B4 and product 00F1.
    virtual std::unique_ptr<VendorUsbDevice> OpenFirst() = 0;

    /// The number of devices that Open can open. The default is 1.
    virtual std::uint32_t CountDevices();

    /// Opens the device at `index`, from 0 to CountDevices() - 1. Returns null when the device
    /// cannot be opened and when the index is too large. The default opens the first device only.
    virtual std::unique_ptr<VendorUsbDevice> Open(std::uint32_t index);

    /// The name of the host, for example "libusb 1.0.26". It may be empty. Any thread.
    virtual std::string Name() const;

    /// The reason why the last device could not be opened, as a sentence for a person. It may be
    /// empty. Any thread.
    virtual std::string Problem() const;

    /// The machine's own USB host, which is never destroyed.
    static UsbHost& System();
};

} // namespace qlt
