#include "Runtime/FrameHeader.h"

#include <algorithm>
#include <iostream>
#include <numeric>

namespace qlt
{
namespace
{

bool SumVanishes(const std::uint32_t* header)
{
    return std::accumulate(header, header + FRAME_HEADER_SIZE / sizeof *header, 0U) == 0;
}

/// The next signature, or `last`. Whole blocks are only counted in, which compilers turn into
/// vector code, because there is no way out in the middle; finding they do not.
const std::uint32_t* FindSignature(const std::uint32_t* first, const std::uint32_t* last)
{
    constexpr std::ptrdiff_t BLOCK = 512;
    const auto hasNone = [](const std::uint32_t* block)
    {
        return std::accumulate(block, block + BLOCK, 0U,
                               [](std::uint32_t found, std::uint32_t word)
                               { return found | (word == FRAME_SIGNATURE ? ~0U : 0U); }) == 0;
    };
    while (last - first >= BLOCK && hasNone(first))
    {
        first += BLOCK;
    }
    return std::find(first, last, FRAME_SIGNATURE);
}

} // namespace

std::uint32_t FindHeader(const std::uint32_t* buffer, std::uint32_t length)
{
    const bool hasSignature = buffer[0] == FRAME_SIGNATURE;
    const bool isValid = hasSignature && SumVanishes(buffer);
    if (!isValid)
    {
        std::cerr << (hasSignature ? "error head checksum is not valid"
                                   : "error head_sig is not valid")
                  << std::endl;
    }
    const std::uint32_t* const last = buffer + length / sizeof *buffer;
    if (isValid && last != buffer)
    {
        return 0;
    }
    const std::uint32_t* word = FindSignature(buffer, last);
    while (word != last && !SumVanishes(word))
    {
        std::cerr << "error head checksum is not valid" << std::endl;
        word = FindSignature(word + 1, last);
    }
    if (word == last)
    {
        std::cerr << "error could not find new header" << std::endl;
        return 0;
    }
    const auto offset = static_cast<std::uint32_t>((word - buffer) * 4);
    std::cerr << "found header offset (0x" << std::hex << *word << ") at 0x" << offset << std::endl;
    return offset;
}

} // namespace qlt
