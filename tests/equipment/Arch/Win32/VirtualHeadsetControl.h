// What a test says to the driver of the virtual headset, on \\.\VirtualHeadset. One record for all
// commands, with the bytes of the command behind it. Shared by driver and tests: no system headers.
#pragma once

#include <cstdint>

namespace virtual_headset
{

constexpr std::uint32_t DEVICE_COUNT = 2; // one more than the headset, to be a foreign one
constexpr std::uint32_t PIPE_COUNT = 2;

/// Where the endpoints are, whatever the configuration descriptor says: reports, and frames.
constexpr std::uint8_t PIPE_ADDRESSES[PIPE_COUNT] = {0x81, 0x82};

/// Control codes with buffered data, from 0x800 on as for all that is not the system's.
constexpr std::uint32_t Command(std::uint32_t number) { return 0x220000 | (0x800 + number) << 2; }

constexpr std::uint32_t RESET = Command(0);     // both devices, as after the start: unplugged
constexpr std::uint32_t PLUG = Command(1);      // with the record's ids and status
constexpr std::uint32_t UNPLUG = Command(2);    // every read fails
constexpr std::uint32_t CONFIGURE = Command(3); // the bytes are the configuration descriptor
constexpr std::uint32_t PUSH = Command(4);      // the bytes, or a failure, to a pipe's oldest read
constexpr std::uint32_t COUNT = Command(5);     // gives Counts back

struct Order
{
    std::uint32_t device = 0;
    std::uint32_t pipe = 0;   // an index into PIPE_ADDRESSES
    std::uint32_t status = 0; // of the read that a push ends, or of all descriptors: an NT status
    std::uint16_t vendorId = 0x04B4;
    std::uint16_t productId = 0x00F1;
};

/// Of one device, since the start of the driver.
struct Counts
{
    std::uint32_t opened;
    std::uint32_t closed;
    std::uint32_t aborts;
    std::uint32_t transferSize;        // what was set last
    std::uint32_t pending[PIPE_COUNT]; // reads that wait for a push
    std::uint32_t queued[PIPE_COUNT];  // pushes that wait for a read
};

} // namespace virtual_headset
