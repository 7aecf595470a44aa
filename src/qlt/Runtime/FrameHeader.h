// The header at the beginning of every frame of the camera's stream. It consists of six
// little-endian words, which add up to zero. The first word is the signature.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qlt
{

constexpr std::uint32_t FRAME_SIGNATURE = 0xDEADBEEF;
constexpr std::size_t FRAME_HEADER_SIZE = 24; // bytes; the image follows

/// The result of a search for a header.
struct HeaderSearch
{
    enum class Beginning
    {
        Header,
        WrongSum, // a signature, but the six words do not add up to zero
        NoSignature,
    };

    Beginning beginning = Beginning::Header; // the kind of the buffer's beginning
    std::uint32_t wrongSums = 0;             // signatures with a wrong sum before the header
    bool found = false;
    std::uint32_t offset = 0; // the offset of the header in bytes; 0 when there is none
};

/// Searches the words in the first `length` bytes for a header. The buffer must be
/// FRAME_HEADER_SIZE bytes longer, because a header may extend past `length`. The first
/// FRAME_HEADER_SIZE bytes are read even when `length` is 0.
HeaderSearch FindHeader(const std::uint32_t* buffer, std::uint32_t length);

} // namespace qlt
