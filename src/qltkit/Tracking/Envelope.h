// The smallest and the largest value of each short time, for drawing what is too long to be drawn.
#pragma once

#include <cstddef>
#include <vector>

namespace qltkit
{

class Envelope
{
public:
    /// Takes nothing.
    Envelope() = default;

    /// `pairs` times of `pairSeconds` each, the first from 0 on. At least one.
    Envelope(std::size_t pairs, double pairSeconds)
        : mPairSeconds(pairSeconds)
        , mExtremes(pairs)
    {
    }

    /// A value at a time, which never falls. A NaN is left out.
    void Add(double seconds, double value);

    /// Two points for each pair, in the order in which they came. Holes of up to `holdSeconds` are
    /// filled with the last value before; the others are NaN.
    std::vector<float> Points(double holdSeconds) const;

private:
    struct Extremes
    {
        float least = 0.0f;
        float most = 0.0f;
        bool known = false;
        bool mostCameLast = false;
    };

    double mPairSeconds = 1.0;
    std::vector<Extremes> mExtremes;
};

} // namespace qltkit
