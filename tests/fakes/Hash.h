// Large arrays compared by a hash that a test can state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

/// FNV-1a, over what is at each place.
template <typename... Elements>
std::uint64_t Hash(std::pair<const Elements*, std::size_t>... arrays)
{
    std::uint64_t value = 0xCBF29CE484222325;
    const auto add = [&value](const auto& array)
    {
        const auto* bytes = reinterpret_cast<const unsigned char*>(array.first);
        for (std::size_t i = 0; i < array.second * sizeof *array.first; ++i)
        {
            value = (value ^ bytes[i]) * 0x100000001B3;
        }
    };
    (add(arrays), ...);
    return value;
}
