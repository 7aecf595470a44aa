// Compares floats by their bits, because the order of a formula is part of the interface, and by
// their values.
#pragma once

#include <qlt/Math/Matrix.h>

#include <array>
#include <cstdint>
#include <cstring>

inline std::uint32_t Bits(float x)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

inline std::array<std::uint32_t, 3> Bits(const qlt::Vec3& v)
{
    return {Bits(v.x()), Bits(v.y()), Bits(v.z())};
}

inline std::array<std::uint32_t, 4> Bits(const qlt::Quaternion& q)
{
    return {Bits(q.w()), Bits(q.x()), Bits(q.y()), Bits(q.z())};
}

inline std::array<float, 3> Values(const qlt::Vec3& v) { return {v.x(), v.y(), v.z()}; }

inline std::array<float, 4> Values(const qlt::Quaternion& q)
{
    return {q.w(), q.x(), q.y(), q.z()};
}

inline std::array<float, 16> Entries(const qlt::Matrix& m)
{
    std::array<float, 16> entries{};
    std::memcpy(entries.data(), &m.array(), sizeof entries);
    return entries;
}
