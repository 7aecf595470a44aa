// Decoders of USB descriptors. A device may send wrong lengths, so the decoders never read outside
// the given bytes. They are pure functions; any thread may call them.
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

/// The length of a device descriptor, and a length that suffices for every configuration of the
/// headset, in bytes.
constexpr std::uint16_t DEVICE_DESCRIPTOR_SIZE = 18;
constexpr std::uint16_t MAX_CONFIGURATION_SIZE = 512;

/// The largest number of endpoints of an interface: fifteen in each direction.
constexpr std::size_t MAX_END_POINTS = 30;

/// The identifiers in a device descriptor. Nothing when the bytes are another descriptor or too
/// short.
std::optional<UsbIds> ParseDeviceDescriptor(const std::vector<std::uint8_t>& bytes);

/// The endpoints of interface 0 in its alternate setting 0. `bytes` is a configuration descriptor
/// with all descriptors that follow it. The result leaves out incomplete endpoints, and endpoints
/// beyond the number that the interface announces.
std::vector<UsbEndPointRecord> ParseConfiguration(const std::vector<std::uint8_t>& bytes);

/// `bytes`, rounded up to whole packets. It stays unchanged when 32 bits cannot hold the result and
/// when `maxPacket` is 0.
std::uint32_t RoundUpToPackets(std::uint32_t bytes, std::uint32_t maxPacket);

} // namespace qlt
