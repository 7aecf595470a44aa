// What a test says to the driver of the virtual headset, on \\.\VirtualHeadset. One record for all
// commands, with the bytes of the command behind it. Shared by driver and tests: no system headers.
#pragma once

#include <cstdint>

namespace virtual_headset
{

constexpr std::uint32_t DEVICE_COUNT = 2; // one more than the headset, to be a foreign one
constexpr std::uint32_t PIPE_COUNT = 2;

/// The endpoints: reports, and frames.
constexpr std::uint8_t PIPE_ADDRESSES[PIPE_COUNT] = {0x81, 0x82};

/// Control codes with buffered data, from 0x800 on as for all that is not the system's.
constexpr std::uint32_t Command(std::uint32_t number) { return 0x220000 | (0x800 + number) << 2; }

constexpr std::uint32_t RESET = Command(0); // unplugs both devices: every read fails
constexpr std::uint32_t PLUG = Command(1);  // the first that is not, with the record's ids
constexpr std::uint32_t PUSH = Command(2);  // the bytes, or a failure, to a pipe's oldest read
constexpr std::uint32_t COUNT = Command(3); // gives Counts back

struct Order
{
    std::uint32_t pipe = 0;   // an index into PIPE_ADDRESSES, of the first device
    std::uint32_t status = 0; // of the read that a push ends, or of all descriptors: an NT status
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
};

struct Counts
{
    std::uint32_t devices;             // that the driver has, plugged in or not
    std::uint32_t transferSize;        // what was set last
    std::uint32_t pending[PIPE_COUNT]; // reads that wait for a push
};

} // namespace virtual_headset
