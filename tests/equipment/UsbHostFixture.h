// A fixture with the library's own USB access on an emulated bus, and with reads of the camera's
// size.
#pragma once

#include <qlt/Runtime/Usb.h>

#include "Runtime/NativeEvent.h"

#include "equipment/EmulatedBus.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>

using Bytes = EmulatedBus::Bytes;
constexpr std::uint8_t REPORTS = EmulatedBus::REPORTS;
constexpr std::uint8_t FRAMES = EmulatedBus::FRAMES;
constexpr std::uint32_t FRAME_SIZE = 0x388000; // a whole frame of the camera
constexpr std::uint32_t LONG_MS = 20000;       // a test never waits this long

/// One read of a frame, with its event.
struct Frame
{
    explicit Frame(qlt::UsbEndPoint& endPoint)
        : transfer(endPoint.BeginTransfer(bytes.data(), FRAME_SIZE, event))
    {
    }
    ~Frame()
    {
        transfer.reset();
        qlt::CloseNativeEvent(event);
    }

    /// Waits only for the event, as a stream does that also waits for other events.
    bool IsSignalled(std::uint32_t timeoutMs) const
    {
        return qlt::WaitNativeEvent(event, timeoutMs) == qlt::WAIT_SIGNALLED;
    }

    /// The result of the read. For a frame of one value it is that value.
    std::string End() const
    {
        std::uint32_t length = 1;
        // A second wait succeeds, too.
        const bool hasEnded = transfer->Wait(LONG_MS) && transfer->Wait(0);
        if (transfer->Finish(length))
        {
            const bool isWhole = length == FRAME_SIZE && bytes == Bytes(length, bytes[0]);
            return hasEnded && isWhole ? std::to_string(bytes[0]) : "odd";
        }
        return length != 0 ? "odd" : hasEnded ? "failed" : "refused";
    }

    Bytes bytes = Bytes(FRAME_SIZE);
    qlt::NativeEventHandle event = qlt::CreateNativeEvent(L"", false);
    std::unique_ptr<qlt::UsbTransfer> transfer;
};

class UsbHostFixture : public testing::Test
{
protected:
    static constexpr std::uint8_t COUNT = 10; // frames in flight, as in the camera's stream

    /// Plugs the headset in and opens it.
    void Open()
    {
        bus->Plug();
        device = host.OpenFirst();
        ASSERT_NE(device, nullptr) << host.Problem();
    }

    qlt::UsbEndPoint& EndPoint() { return device->EndPoint(2); }

    /// Replaces the frames by new ones.
    void Begin()
    {
        frames.clear();
        while (frames.size() < COUNT)
        {
            frames.emplace_back(EndPoint());
        }
    }

    void PushAll()
    {
        for (std::uint8_t i = 0; i < COUNT; ++i)
        {
            bus->Push(FRAMES, Bytes(FRAME_SIZE, i));
        }
    }

    std::unique_ptr<EmulatedBus> bus = MakeEmulatedBus();
    qlt::UsbHost& host = qlt::UsbHost::System();
    std::unique_ptr<qlt::VendorUsbDevice> device;
    std::deque<Frame> frames;
};
