// Fits a straight line below points. Each point lies above the line by an unknown amount.
#pragma once

#include <cstddef>

namespace qltkit
{

struct Point
{
    double x = 0.0;
    double y = 0.0;
};

/// The straight line through (x, y) with this slope.
struct Line
{
    double x = 0.0;
    double y = 0.0;
    double slope = 0.0;
};

/// Fits a line to 1 .. MAX_BLOCKS blocks of points. `lowest` has the lowest point of each block and
/// `means` has the mean point of each block. Blocks are in ascending order of x.
///
/// The line must lie below all lowest points. The result is the mean of all such lines. The weight
/// of a line falls exponentially with its depth below the points. The slope of the means limits the
/// slopes, because the lowest points alone say little about the slope. When the standard deviation
/// of the slope of the means is less than `leastDeviation`, `leastDeviation` replaces it.
Line LineBelow(const Point* lowest, const Point* means, std::size_t blocks, double leastDeviation);

constexpr std::size_t MAX_BLOCKS = 128;

} // namespace qltkit
