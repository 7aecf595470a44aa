// A stream of frames of one size from a bulk endpoint: keeps ten reads in flight, so that the
// device never waits, and hands each complete frame to one consumer through an event and a pointer.
//
//   owner                                        worker
//   Init, CreateFrameConsumerEvent,
//   SetTrashEnabled, Start(true, forever)        opens the device, queues the reads
//   consumer: event, GetCurrentFrame             one pass for each frame
//   Stop(true)                                   waits for the reads, closes the device
//
// Threads: everything but GetCurrentFrame belongs to the owner. A frame stays readable until its
// buffer is queued again nine frames later; nothing is copied and nothing is locked. Without the
// device the worker ends the process: ask for it first.
#pragma once

#include <qlt/Runtime/Usb.h>

#include "Runtime/VRThread.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

class VRUsbStreamAsync final : public VRThread
{
public:
    /// Milliseconds since the hour began, of the system's clock.
    using HourClock = std::uint32_t (*)();
    static std::uint32_t SystemHourClock();

    VRUsbStreamAsync(std::uint16_t vendorId, std::uint16_t productId, std::uint8_t endPointAddress,
                     std::uint32_t frameSize, qlt::UsbHost& host = qlt::UsbHost::System(),
                     HourClock clock = SystemHourClock);

    /// Stops and joins, if the owner has not; the worker still needs all that is here.
    virtual ~VRUsbStreamAsync();

    /// Whether to find the beginning of a frame before the first one is delivered.
    void SetTrashEnabled(bool enabled);

    /// The auto-reset event that is signalled once for each complete frame.
    VREvent CreateFrameConsumerEvent(const std::wstring& name);

    /// The frame that completed last; null before the first one and after the stop.
    const std::uint8_t* GetCurrentFrame() const;

private:
    /// A frame's buffer, in words for the header's sake, and the read that fills it.
    struct Transfer
    {
        std::vector<std::uint32_t> words;
        qlt::NativeEventHandle event = nullptr;
        std::unique_ptr<qlt::UsbTransfer> usb;

        std::uint8_t* Bytes() { return reinterpret_cast<std::uint8_t*>(words.data()); }
    };

    static constexpr std::size_t QUEUE_DEPTH = 10;

    void Run() override;
    void Open();
    void Trash();
    void Begin(Transfer& transfer, std::uint32_t length);
    std::uint32_t Receive(Transfer& transfer);
    void Drain();

    const std::uint16_t mVendorId;
    const std::uint16_t mProductId;
    const std::uint8_t mEndPointAddress;
    const std::uint32_t mFrameSize;
    qlt::UsbHost& mHost;
    const HourClock mClock;
    bool mTrashEnabled = false;
    VREvent mFrameConsumerEvent;
    std::unique_ptr<qlt::VendorUsbDevice> mDevice;
    qlt::UsbEndPoint* mEndPoint = nullptr; // of mDevice
    std::array<Transfer, QUEUE_DEPTH> mTransfers;
    std::deque<Transfer*> mPending; // in the order in which they were begun
    std::atomic<const std::uint8_t*> mCurrentFrame{nullptr};
};
