// The library's own USB access on an emulated bus, with reads of the camera's size.
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
constexpr std::uint32_t FRAME_SIZE = 0x388000; // a whole picture of the camera
constexpr std::uint32_t LONG_MS = 20000;       // never to be waited for

/// One frame on its way, with its event.
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

    /// Waits for the event alone, as a stream that waits for other things, too.
    bool IsSignalled(std::uint32_t timeoutMs) const
    {
        return qlt::WaitNativeEvent(event, timeoutMs) == qlt::WAIT_SIGNALLED;
    }

    /// What it ends as; a picture of one value is told by it.
    std::string End() const
    {
        std::uint32_t length = 1;
        const bool hasEnded = transfer->Wait(LONG_MS) && transfer->Wait(0); // and again
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
    static constexpr std::uint8_t COUNT = 10; // of frames at once, as the camera's stream has them

    /// Plugs the headset in and opens it.
    void Open()
    {
        bus->Plug();
        device = host.OpenFirst();
        ASSERT_NE(device, nullptr) << host.Problem();
    }

    qlt::UsbEndPoint& EndPoint() { return device->EndPoint(2); }

    /// Makes the frames new ones.
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
