#include "Runtime/FrameHeader.h"

#include <algorithm>
#include <numeric>

namespace qlt
{
namespace
{

bool SumVanishes(const std::uint32_t* header)
{
    return std::accumulate(header, header + FRAME_HEADER_SIZE / sizeof *header, 0U) == 0;
}

/// The next signature, or `last`. Scan each block without an early exit, so that the compiler can
/// vectorise it; search only inside a block that matched.
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

HeaderSearch FindHeader(const std::uint32_t* buffer, std::uint32_t length)
{
    HeaderSearch search;
    const std::uint32_t* const last = buffer + length / sizeof *buffer;
    const bool isValid = SumVanishes(buffer);
    if (buffer[0] == FRAME_SIGNATURE && isValid)
    {
        search.found = last != buffer;
        return search;
    }
    search.beginning = buffer[0] == FRAME_SIGNATURE ? HeaderSearch::Beginning::WrongSum
                                                    : HeaderSearch::Beginning::NoSignature;
    const std::uint32_t* word = FindSignature(buffer, last);
    while (word != last && !SumVanishes(word))
    {
        ++search.wrongSums;
        word = FindSignature(word + 1, last);
    }
    search.found = word != last;
    search.offset = search.found ? static_cast<std::uint32_t>((word - buffer) * 4) : 0;
    return search;
}

} // namespace qlt
