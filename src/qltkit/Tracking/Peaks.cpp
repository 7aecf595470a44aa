#include "Tracking/Peaks.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace qltkit
{
namespace
{

constexpr double APART_SECONDS = 2.0;

} // namespace

void Peaks::Add(double seconds, double value)
{
    if (!std::isfinite(value))
    {
        return;
    }
    if (mOfSeconds.empty() || std::floor(seconds) > std::floor(mOfSeconds.back().seconds))
    {
        mOfSeconds.push_back({seconds, value});
    }
    else if (value > mOfSeconds.back().value)
    {
        mOfSeconds.back() = {seconds, value};
    }
}

std::vector<Peak> Peaks::Largest(std::size_t count) const
{
    std::vector<Peak> sorted = mOfSeconds;
    std::sort(sorted.begin(), sorted.end(),
              [](const Peak& a, const Peak& b)
              { return std::tie(b.value, a.seconds) < std::tie(a.value, b.seconds); });
    std::vector<Peak> largest;
    for (const Peak& peak : sorted)
    {
        const bool near =
            std::any_of(largest.begin(), largest.end(),
                        [&peak](const Peak& other)
                        { return std::fabs(other.seconds - peak.seconds) < APART_SECONDS; });
        if (largest.size() < count && !near)
        {
            largest.push_back(peak);
        }
    }
    return largest;
}

} // namespace qltkit
