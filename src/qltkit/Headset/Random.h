// Random numbers with the same values on every system. The standard specifies the engines, but not
// the distributions.
#pragma once

#include <random>

namespace qltkit
{

/// A uniform number in [low, high).
inline double Uniform(std::mt19937_64& random, double low, double high)
{
    return low + (high - low) * (static_cast<double>(random() >> 11) * 0x1p-53);
}

/// Approximates a normal distribution by the sum of twelve uniform numbers. This needs no
/// logarithm.
inline double Normal(std::mt19937_64& random, double deviation)
{
    double sum = -6.0;
    for (int i = 0; i < 12; ++i)
    {
        sum += Uniform(random, 0.0, 1.0);
    }
    return sum * deviation;
}

} // namespace qltkit
