// Makes sensor reports field by field.
#pragma once

#include <array>
#include <cstdint>

struct ReportWriter : std::array<std::uint8_t, 64>
{
    /// A report at rest: the identity, gravity along y, and a slow turn so that no axis is zero.
    explicit ReportWriter(std::uint32_t sequence, std::uint32_t timeUs = 0)
        : array()
    {
        U32(0, sequence).U32(4, timeUs).I16(10, 16384);
        I16(16, 5).I16(18, -7).I16(20, 3);
        I16(22, 8000).I16(24, -60).I16(26, -500);
    }

    ReportWriter& I16(std::size_t offset, int value)
    {
        at(offset) = static_cast<std::uint8_t>(value & 0xFF);
        at(offset + 1) = static_cast<std::uint8_t>((value >> 8) & 0xFF);
        return *this;
    }

    ReportWriter& U32(std::size_t offset, std::uint32_t value)
    {
        I16(offset, static_cast<int>(value & 0xFFFF));
        return I16(offset + 2, static_cast<int>(value >> 16));
    }
};
