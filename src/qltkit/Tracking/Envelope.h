// Reduces a long series to the smallest and the largest value of each short interval, so that it
// can be drawn.
#pragma once

#include <cstddef>
#include <vector>

namespace qltkit
{

class Envelope
{
public:
    /// An envelope without intervals. Add must not be called.
    Envelope() = default;

    /// Covers `pairs` intervals of `pairSeconds` each. The first interval begins at 0. `pairs` is
    /// at least 1.
    Envelope(std::size_t pairs, double pairSeconds)
        : mPairSeconds(pairSeconds)
        , mExtremes(pairs)
    {
    }

    /// Adds a value. The times must not decrease. A NaN is ignored.
    void Add(double seconds, double value);

    /// Returns two points for each interval, in the order in which they came. A hole of up to
    /// `holdSeconds` is filled with the last value before it. Longer holes are NaN.
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
