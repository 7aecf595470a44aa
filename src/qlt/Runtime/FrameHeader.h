// The header that begins every frame of the camera's stream: six little-endian words, the first one
// the signature, that add up to zero.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qlt
{

constexpr std::uint32_t FRAME_SIGNATURE = 0xDEADBEEF;
constexpr std::size_t FRAME_HEADER_SIZE = 24; // bytes, before the image

/// The byte offset of the first valid header in `length` bytes, 0 when there is none. Says on
/// standard error what it met. Reads up to FRAME_HEADER_SIZE bytes from any word below `length` on,
/// and as many when there is no word: the buffer must have them. deliberate: having found one past
/// the beginning, leaves standard error in hexadecimal; this is part of the interface.
std::uint32_t FindHeader(const std::uint32_t* buffer, std::uint32_t length);

} // namespace qlt
