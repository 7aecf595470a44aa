// The largest values of a series, a little apart from each other.
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
    /// A value at a time, which never falls. A NaN is left out.
    void Add(double seconds, double value);

    /// At most so many, largest first, two seconds apart at least.
    std::vector<Peak> Largest(std::size_t count) const;

private:
    std::vector<Peak> mOfSeconds; // one of each second that has a value
};

} // namespace qltkit
