// Constants and helpers of the MCAP format for its writer and its reader.
#pragma once

#include "Capture/Bytes.h"

#include <map>

namespace qltkit
{

inline constexpr std::string_view MCAP_MAGIC("\x89MCAP0\r\n", 8);

namespace McapOpcode
{
inline constexpr std::uint8_t HEADER = 0x01;
inline constexpr std::uint8_t FOOTER = 0x02;
inline constexpr std::uint8_t SCHEMA = 0x03;
inline constexpr std::uint8_t CHANNEL = 0x04;
inline constexpr std::uint8_t MESSAGE = 0x05;
inline constexpr std::uint8_t CHUNK = 0x06;
inline constexpr std::uint8_t MESSAGE_INDEX = 0x07;
inline constexpr std::uint8_t CHUNK_INDEX = 0x08;
inline constexpr std::uint8_t ATTACHMENT = 0x09;
inline constexpr std::uint8_t STATISTICS = 0x0B;
inline constexpr std::uint8_t METADATA = 0x0C;
inline constexpr std::uint8_t METADATA_INDEX = 0x0D;
inline constexpr std::uint8_t SUMMARY_OFFSET = 0x0E;
inline constexpr std::uint8_t DATA_END = 0x0F;
} // namespace McapOpcode

// The size of a record's prefix: an opcode and the length of the content.
inline constexpr std::uint64_t MCAP_PREFIX_SIZE = 9;

// The size of an uncompressed chunk's content before its records. The fields and their offsets are:
// 0 start time, 8 end time, 16 size of the records, 24 their CRC, 28 length of the compression's
// name (0), 32 size of the records again.
inline constexpr std::uint64_t MCAP_CHUNK_HEADER_SIZE = 40;

// The size of the last bytes of a file: the footer's record and the magic.
inline constexpr std::uint64_t MCAP_TAIL_SIZE = 37;
inline constexpr std::uint64_t MCAP_FOOTER_CONTENT_SIZE = 20;

inline void AppendRecord(std::string& bytes, std::uint8_t opcode, std::string_view content)
{
    AppendNumber(bytes, opcode);
    AppendNumber(bytes, std::uint64_t{content.size()});
    bytes += content;
}

inline void AppendMap(std::string& bytes, const std::map<std::string, std::string>& map)
{
    std::string entries;
    for (const auto& [key, value] : map)
    {
        AppendString(entries, key);
        AppendString(entries, value);
    }
    AppendString(bytes, entries);
}

} // namespace qltkit
