// Streams frames of one size from a bulk endpoint. It keeps ten reads in flight, so the device
// never waits. One consumer receives each complete frame through an event and a pointer.
//
//   owner                                        worker
//   Init, CreateFrameConsumerEvent,
//   SetTrashEnabled, Start(true, forever)        opens the device, queues the reads
//   consumer: event, GetCurrentFrame             makes one pass for each frame
//   Stop(true)                                   waits for the reads, closes the device
//
// Threads: any thread may call GetCurrentFrame; the other operations belong to the owner. Nothing
// is copied or locked. A frame stays readable until its buffer is queued again, nine frames later.
// Without the device the worker ends the process, so look for the device first.
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
    /// The milliseconds since the hour began. SystemHourClock reads the clock of the system.
    using HourClock = std::uint32_t (*)();
    static std::uint32_t SystemHourClock();

    VRUsbStreamAsync(std::uint16_t vendorId, std::uint16_t productId, std::uint8_t endPointAddress,
                     std::uint32_t frameSize, qlt::UsbHost& host = qlt::UsbHost::System(),
                     HourClock clock = SystemHourClock);

    /// Stops and joins the worker if the owner has not, because the worker uses the members.
    virtual ~VRUsbStreamAsync();

    /// With `enabled` the worker finds the beginning of a frame before it delivers the first one.
    void SetTrashEnabled(bool enabled);

    /// Creates the auto-reset event that the worker signals once for each complete frame.
    VREvent CreateFrameConsumerEvent(const std::wstring& name);

    /// The newest complete frame; null before the first one and after the stop.
    const std::uint8_t* GetCurrentFrame() const;

private:
    /// The buffer of a frame, and the read that fills it. The buffer consists of words, because the
    /// header does.
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
    qlt::UsbEndPoint* mEndPoint = nullptr; // owned by mDevice
    std::array<Transfer, QUEUE_DEPTH> mTransfers;
    std::deque<Transfer*> mPending; // the read that was begun first comes first
    std::atomic<const std::uint8_t*> mCurrentFrame{nullptr};
};
