// The commands of a test to the driver of the virtual headset, on \\.\VirtualHeadset. All commands
// use one record, which the bytes of the command follow. Driver and tests share this file, so it
// includes no system headers.
#pragma once

#include <cstdint>

namespace virtual_headset
{

constexpr std::uint32_t DEVICE_COUNT = 2; // the headset and a foreign device
constexpr std::uint32_t PIPE_COUNT = 2;

/// The endpoints: reports, and frames.
constexpr std::uint8_t PIPE_ADDRESSES[PIPE_COUNT] = {0x81, 0x82};

/// Control codes with buffered data. Codes from 0x800 on do not belong to the system.
constexpr std::uint32_t Command(std::uint32_t number) { return 0x220000 | (0x800 + number) << 2; }

constexpr std::uint32_t RESET = Command(0); // unplugs both devices: every read fails
constexpr std::uint32_t PLUG = Command(1);  // plugs in a device with the identifiers of the record
// Ends the oldest read of a pipe with the bytes or a failure.
constexpr std::uint32_t PUSH = Command(2);
constexpr std::uint32_t COUNT = Command(3); // the driver returns Counts

struct Order
{
    std::uint32_t pipe = 0;   // an index into PIPE_ADDRESSES; the pipe is of the first device
    std::uint32_t status = 0; // the NT status of the read that a push ends, or of all descriptors
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
};

struct Counts
{
    std::uint32_t devices;             // devices of the driver, plugged in or not
    std::uint32_t transferSize;        // the last size that was set
    std::uint32_t pending[PIPE_COUNT]; // reads that wait for a push
};

} // namespace virtual_headset
