// Finds the largest values of a series. The values found are some time apart.
#pragma once

#include <cstddef>
#include <vector>

namespace qltkit
{

struct Peak
{
    double seconds = 0.0;
    double value = 0.0;
};

class Peaks
{
public:
    /// Adds a value. The times must not decrease. A NaN is ignored.
    void Add(double seconds, double value);

    /// Returns at most `count` peaks, the largest first. They are at least two seconds apart.
    std::vector<Peak> Largest(std::size_t count) const;

private:
    std::vector<Peak> mOfSeconds; // the largest value of each second
};

} // namespace qltkit
