// Floats compared by their bits, and arithmetic of which every step is rounded to a float: the
// expected values of formulas whose order is part of the interface.
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

inline float FromBits(std::uint32_t bits)
{
    float x = 0.0f;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

inline std::array<std::uint32_t, 3> Bits(const qlt::Vec3& v)
{
    return {Bits(v.x()), Bits(v.y()), Bits(v.z())};
}

inline std::array<std::uint32_t, 4> Bits(const qlt::Quaternion& q)
{
    return {Bits(q.w()), Bits(q.x()), Bits(q.y()), Bits(q.z())};
}

inline std::array<float, 16> Entries(const qlt::Matrix& m)
{
    std::array<float, 16> entries{};
    std::memcpy(entries.data(), &m.array(), sizeof entries);
    return entries;
}

// The compiler can neither reorder nor fuse what passes through a volatile.
inline float Plus(float a, float b)
{
    volatile float result = a + b;
    return result;
}

inline float Minus(float a, float b)
{
    volatile float result = a - b;
    return result;
}

inline float Times(float a, float b)
{
    volatile float result = a * b;
    return result;
}

inline float Over(float a, float b)
{
    volatile float result = a / b;
    return result;
}
