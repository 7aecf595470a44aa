// The header that begins every frame of the camera's stream: six little-endian words, the first one
// the signature, that add up to zero.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qlt
{

constexpr std::uint32_t FRAME_SIGNATURE = 0xDEADBEEF;
constexpr std::size_t FRAME_HEADER_SIZE = 24; // bytes, before the image

/// The result of a search for a header.
struct HeaderSearch
{
    enum class Beginning
    {
        Header,
        WrongSum,    // a signature whose six words do not add up to zero
        NoSignature, // another word
    };

    Beginning beginning = Beginning::Header; // of the buffer
    std::uint32_t wrongSums = 0;             // signatures with a wrong sum before the header
    bool found = false;
    std::uint32_t offset = 0; // of the header in bytes; 0 when there is none
};

/// Searches `length` bytes for the first header. It reads up to FRAME_HEADER_SIZE bytes from every
/// word below `length`, and from the first word in any case, so the buffer must be that much
/// longer.
HeaderSearch FindHeader(const std::uint32_t* buffer, std::uint32_t length);

} // namespace qlt
