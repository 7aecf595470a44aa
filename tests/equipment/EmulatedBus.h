// A USB bus on which the test is the device. The library uses it through its own USB access, as if
// it were real. Each system has its own implementation. Only one bus may exist at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class EmulatedBus
{
public:
    using Bytes = std::vector<std::uint8_t>;

    static constexpr std::uint8_t REPORTS = 0x81; // the interrupt endpoint
    static constexpr std::uint8_t FRAMES = 0x82;  // the bulk endpoint

    virtual ~EmulatedBus() = default;

    /// Plugs in a device with both endpoints. Another device may be plugged in already.
    virtual void Plug(std::uint16_t vendorId = 0x04B4, std::uint16_t productId = 0x00F1) = 0;

    /// Unplugs all devices. Their reads in flight fail, and pushes that no read has taken are lost.
    virtual void Unplug() = 0;

    /// Ends the oldest read of the endpoint, or the next one, with these bytes or as a failure.
    virtual void Push(std::uint8_t endPoint, const Bytes& bytes, bool succeeds = true) = 0;

    /// The number of reads of the endpoint that are in flight.
    virtual std::size_t Pending(std::uint8_t endPoint) = 0;
};

std::unique_ptr<EmulatedBus> MakeEmulatedBus();
