// The CRC-32 of zlib, PNG and Ethernet, and the search for a single damaged byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qltkit
{

class Crc32
{
public:
    void Update(std::string_view bytes);

    std::uint32_t Value() const { return ~mState; }

private:
    std::uint32_t mState = 0xFFFFFFFF;
};

inline std::uint32_t Crc32Of(std::string_view bytes)
{
    Crc32 crc;
    crc.Update(bytes);
    return crc.Value();
}

/// Finds the single byte whose damage explains that the CRC of `size` bytes is `found` instead of
/// `expected`. A result of `size` + 0..3 is a byte of the stored CRC itself. Empty when no single
/// byte explains it.
std::optional<std::uint64_t> DamagedByte(std::uint32_t found, std::uint32_t expected,
                                         std::uint64_t size);

} // namespace qltkit
