// What a USB device says of itself, read out of the bytes of its descriptors. Every length in them
// is the device's word: nothing outside the given bytes is touched, whatever they say. Pure
// functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qlt
{

struct UsbIds
{
    std::uint16_t vendor;
    std::uint16_t product;
};

struct UsbEndPointRecord
{
    std::uint8_t address;
    std::uint8_t attributes;
    std::uint32_t maxPacket; // bytes in one service interval
};

/// A device descriptor's length, and enough for any configuration of the headset.
constexpr std::uint16_t DEVICE_DESCRIPTOR_SIZE = 18;
constexpr std::uint16_t MAX_CONFIGURATION_SIZE = 512;

/// No interface has more: fifteen each way.
constexpr std::size_t MAX_END_POINTS = 30;

/// Out of a device descriptor; nothing when it is none, or cut.
std::optional<UsbIds> ParseDeviceDescriptor(const std::vector<std::uint8_t>& bytes);

/// The endpoints of interface 0 in its alternate setting 0, out of a configuration descriptor with
/// all that follows it: those that are there in full, and no more than the interface announces.
std::vector<UsbEndPointRecord> ParseConfiguration(const std::vector<std::uint8_t>& bytes);

/// `bytes` rounded up to whole packets; unchanged where there is no such number.
std::uint32_t RoundUpToPackets(std::uint32_t bytes, std::uint32_t maxPacket);

} // namespace qlt
