#include "Capture/Crc32.h"

#include <array>

namespace qltkit
{

namespace
{

constexpr std::size_t SLICES = 8; // bytes per step

using Table = std::array<std::uint32_t, 256>;

constexpr std::array<Table, SLICES> MakeTables()
{
    std::array<Table, SLICES> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte)
    {
        std::uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit)
        {
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
        }
        tables[0][byte] = crc;
    }
    for (std::size_t slice = 1; slice < SLICES; ++slice)
    {
        for (std::size_t byte = 0; byte < 256; ++byte)
        {
            const std::uint32_t crc = tables[slice - 1][byte];
            tables[slice][byte] = (crc >> 8) ^ tables[0][crc & 0xFF];
        }
    }
    return tables;
}

constexpr std::array<Table, SLICES> TABLES = MakeTables();

/// Maps the top byte of an entry to the entry's index. No two entries share a top byte.
constexpr std::array<std::uint8_t, 256> MakeIndexOfTop()
{
    std::array<std::uint8_t, 256> index{};
    for (std::size_t byte = 0; byte < 256; ++byte)
    {
        index[TABLES[0][byte] >> 24] = static_cast<std::uint8_t>(byte);
    }
    return index;
}

constexpr std::array<std::uint8_t, 256> INDEX_OF_TOP = MakeIndexOfTop();

std::uint32_t Word(const char* bytes)
{
    const auto byte = [bytes](int i) { return std::uint32_t{static_cast<std::uint8_t>(bytes[i])}; };
    return byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
}

} // namespace

void Crc32::Update(std::string_view bytes)
{
    std::uint32_t crc = mState;
    for (; bytes.size() >= SLICES; bytes.remove_prefix(SLICES))
    {
        const std::uint32_t low = crc ^ Word(bytes.data());
        const std::uint32_t high = Word(bytes.data() + 4);
        crc = 0;
        for (std::size_t i = 0; i < 4; ++i)
        {
            crc ^= TABLES[7 - i][(low >> (8 * i)) & 0xFF] ^ TABLES[3 - i][(high >> (8 * i)) & 0xFF];
        }
    }
    for (const char byte : bytes)
    {
        crc = (crc >> 8) ^ TABLES[0][(crc ^ static_cast<std::uint8_t>(byte)) & 0xFF];
    }
    mState = crc;
}

std::optional<std::uint64_t> DamagedByte(std::uint32_t found, std::uint32_t expected,
                                         std::uint64_t size)
{
    std::uint32_t difference = found ^ expected;
    for (std::uint64_t i = 0; i < 4; ++i)
    {
        if ((difference & ~(0xFFU << (8 * i))) == 0)
        {
            return size + i;
        }
    }
    // The CRC is linear, so the bytes after a damaged byte change the difference as if they were
    // zero. Go back byte by byte until a single byte explains the whole difference.
    for (std::uint64_t i = size; i-- > 0;)
    {
        const std::uint8_t index = INDEX_OF_TOP[difference >> 24];
        difference = (difference ^ TABLES[0][index]) << 8 | index;
        if (difference < 256)
        {
            return i;
        }
    }
    return std::nullopt;
}

} // namespace qltkit
