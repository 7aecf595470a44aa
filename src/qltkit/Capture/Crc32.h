// The CRC-32 of zlib, PNG and Ethernet, and what it tells about a damaged byte.
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

/// The index of the byte that, were it the only damaged one of `size` bytes, would make the CRC
/// `found` instead of `expected`; `size` + 0..3 for a byte of the stored CRC itself. Nothing when
/// no single byte explains it.
std::optional<std::uint64_t> DamagedByte(std::uint32_t found, std::uint32_t expected,
                                         std::uint64_t size);

} // namespace qltkit
