#include "Tracking/Envelope.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qltkit
{

void Envelope::Add(double seconds, double value)
{
    if (!std::isfinite(value))
    {
        return;
    }
    const auto pair = static_cast<std::size_t>(std::max(seconds, 0.0) / mPairSeconds);
    Extremes& extremes = mExtremes[std::min(pair, mExtremes.size() - 1)];
    const auto v = static_cast<float>(value);
    if (!extremes.known)
    {
        extremes = {v, v, true, false};
    }
    else if (v > extremes.most)
    {
        extremes.most = v;
        extremes.mostCameLast = true;
    }
    else if (v < extremes.least)
    {
        extremes.least = v;
        extremes.mostCameLast = false;
    }
}

std::vector<float> Envelope::Points(double holdSeconds) const
{
    const auto hold = static_cast<std::size_t>(holdSeconds / mPairSeconds);
    std::vector<float> points(2 * mExtremes.size(), std::numeric_limits<float>::quiet_NaN());
    std::size_t last = mExtremes.size(); // the last pair with a value
    for (std::size_t i = 0; i < mExtremes.size(); ++i)
    {
        const Extremes& extremes = mExtremes[i];
        if (!extremes.known)
        {
            continue;
        }
        if (last < i && i - last <= hold + 1)
        {
            const auto from = points.begin() + static_cast<std::ptrdiff_t>(2 * last + 2);
            const auto to = points.begin() + static_cast<std::ptrdiff_t>(2 * i);
            std::fill(from, to, *(from - 1));
        }
        points[2 * i] = extremes.mostCameLast ? extremes.least : extremes.most;
        points[2 * i + 1] = extremes.mostCameLast ? extremes.most : extremes.least;
        last = i;
    }
    return points;
}

} // namespace qltkit
