// The hash of a long result, which the test knows.
#pragma once

#include <cstddef>
#include <cstdint>

/// The FNV-1a hash of the bytes of the elements.
template <typename Container>
std::uint64_t HashOf(const Container& elements)
{
    std::uint64_t value = 0xCBF29CE484222325;
    const auto* bytes = reinterpret_cast<const unsigned char*>(elements.data());
    for (std::size_t i = 0; i < elements.size() * sizeof *elements.data(); ++i)
    {
        value = (value ^ bytes[i]) * 0x100000001B3;
    }
    return value;
}
