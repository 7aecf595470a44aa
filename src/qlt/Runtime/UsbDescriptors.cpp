#include "Runtime/UsbDescriptors.h"

#include <algorithm>
#include <limits>

namespace qlt
{
namespace
{

constexpr std::uint8_t DEVICE = 1;
constexpr std::uint8_t CONFIGURATION = 2;
constexpr std::uint8_t INTERFACE = 4;
constexpr std::uint8_t END_POINT = 5;

constexpr std::size_t MIN_RECORD_SIZE = 2; // its length and its type
constexpr std::size_t CONFIGURATION_SIZE = 9;
constexpr std::size_t INTERFACE_SIZE = 9;
constexpr std::size_t END_POINT_SIZE = 7;

std::uint16_t Word(const std::uint8_t* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

/// High-bandwidth endpoints send up to three packets in an interval.
std::uint32_t MaxPacket(std::uint16_t word) { return (word & 0x7FFU) * (1U + (word >> 11 & 3U)); }

/// The number of endpoints that an interface record announces. It is 0 unless the record describes
/// interface 0 in its alternate setting 0.
std::size_t AnnouncedEndPoints(const std::uint8_t* record)
{
    const bool matters = record[2] == 0 && record[3] == 0;
    return matters ? std::min<std::size_t>(record[4], MAX_END_POINTS) : 0;
}

} // namespace

std::optional<UsbIds> ParseDeviceDescriptor(const std::vector<std::uint8_t>& bytes)
{
    if (bytes.size() < DEVICE_DESCRIPTOR_SIZE || bytes[1] != DEVICE)
    {
        return std::nullopt;
    }
    return UsbIds{Word(&bytes[8]), Word(&bytes[10])};
}

std::vector<UsbEndPointRecord> ParseConfiguration(const std::vector<std::uint8_t>& bytes)
{
    std::vector<UsbEndPointRecord> endPoints;
    if (bytes.size() < CONFIGURATION_SIZE || bytes[1] != CONFIGURATION)
    {
        return endPoints;
    }
    std::size_t left = std::min<std::size_t>(bytes.size(), Word(&bytes[2]));
    std::size_t missing = 0; // announced endpoints that have not come yet
    for (const std::uint8_t* record = bytes.data(); left >= MIN_RECORD_SIZE;)
    {
        const std::size_t length = record[0];
        if (length < MIN_RECORD_SIZE || length > left)
        {
            break;
        }
        if (record[1] == INTERFACE)
        {
            missing =
                length >= INTERFACE_SIZE && endPoints.empty() ? AnnouncedEndPoints(record) : 0;
        }
        else if (record[1] == END_POINT && length >= END_POINT_SIZE && missing > 0)
        {
            endPoints.push_back({record[2], record[3], MaxPacket(Word(record + 4))});
            --missing;
        }
        record += length;
        left -= length;
    }
    return endPoints;
}

std::uint32_t RoundUpToPackets(std::uint32_t bytes, std::uint32_t maxPacket)
{
    if (maxPacket == 0 || bytes % maxPacket == 0)
    {
        return bytes;
    }
    const std::uint32_t rest = maxPacket - bytes % maxPacket;
    return bytes > std::numeric_limits<std::uint32_t>::max() - rest ? bytes : bytes + rest;
}

} // namespace qlt
