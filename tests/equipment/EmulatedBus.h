// A USB bus on which the test is the device, below the library's own access: what the library
// finds there, it takes for real. One body for each system; one bus at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class EmulatedBus
{
public:
    using Bytes = std::vector<std::uint8_t>;

    static constexpr std::uint8_t REPORTS = 0x81; // the endpoints: interrupt
    static constexpr std::uint8_t FRAMES = 0x82;  // and bulk

    virtual ~EmulatedBus() = default;

    /// A device with both endpoints, beside the one that may be there already.
    virtual void Plug(std::uint16_t vendorId = 0x04B4, std::uint16_t productId = 0x00F1) = 0;

    /// All devices are gone, what they had in flight fails, what was pushed is forgotten.
    virtual void Unplug() = 0;

    /// Ends the oldest read of the endpoint, or the next one, with these bytes or as a failure.
    virtual void Push(std::uint8_t endPoint, const Bytes& bytes, bool succeeds = true) = 0;

    /// Reads of the endpoint in flight.
    virtual std::size_t Pending(std::uint8_t endPoint) = 0;
};

std::unique_ptr<EmulatedBus> MakeEmulatedBus();
