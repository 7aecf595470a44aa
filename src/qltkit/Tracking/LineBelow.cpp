#include "Tracking/LineBelow.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qltkit
{
namespace
{

/// Fewer lowest points are near the line than an exponential distribution predicts, so each block
/// counts as less than one. The value comes from trials with several distributions.
constexpr double WEIGHT_OF_A_BLOCK = 0.3;

/// The median of an exponential distribution with mean 1. The median of the heights gives their
/// mean, even when the host was busy during some of the blocks.
constexpr double MEDIAN = 0.6931;

/// A point is unusual when its distance from the median is this many times the median distance. For
/// a normal distribution this is three standard deviations.
constexpr double UNUSUAL = 4.4;

/// At least half of the blocks are usual, and a slope with a deviation needs three points.
constexpr std::size_t LEAST_BLOCKS = 6;

constexpr int SLOPES = 32; // the number of slopes on each side
constexpr double SLOPE_STEP = 0.5;

/// True when `b` lies on or above the straight line from `a` to `c`.
bool IsAbove(const Point& a, const Point& b, const Point& c)
{
    return (b.y - a.y) * (c.x - a.x) >= (c.y - a.y) * (b.x - a.x);
}

/// The lower convex hull of points: a line below all points can touch only these corners.
struct Hull
{
    Hull(const Point* points, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            while (size >= 2 && IsAbove(corners[size - 2], corners[size - 1], points[i]))
            {
                --size;
            }
            corners[size++] = points[i];
        }
    }

    /// The highest value at `x` of a line of that slope.
    double Highest(double x, double slope) const
    {
        double y = corners[0].y + slope * (x - corners[0].x);
        for (std::size_t i = 1; i < size; ++i)
        {
            y = std::min(y, corners[i].y + slope * (x - corners[i].x));
        }
        return y;
    }

    /// The slope of the highest line at `x`, which is the slope of the hull's edge there.
    double SlopeAt(double x) const
    {
        std::size_t right = 1;
        while (right + 1 < size && corners[right].x < x)
        {
            ++right;
        }
        const Point& a = corners[right - 1];
        const Point& b = corners[right];
        return size < 2 ? 0.0 : (b.y - a.y) / (b.x - a.x);
    }

    std::array<Point, MAX_BLOCKS> corners;
    std::size_t size = 0;
};

struct Slope
{
    double value = 0.0;
    double deviation = 0.0;
};

Point MeanOf(const Point* points, std::size_t count)
{
    Point mean;
    for (std::size_t i = 0; i < count; ++i)
    {
        mean.x += points[i].x / static_cast<double>(count);
        mean.y += points[i].y / static_cast<double>(count);
    }
    return mean;
}

/// Least squares for at least three points.
Slope SlopeOf(const Point* points, std::size_t count)
{
    const Point mean = MeanOf(points, count);
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (std::size_t i = 0; i < count; ++i)
    {
        const double x = points[i].x - mean.x;
        const double y = points[i].y - mean.y;
        xx += x * x;
        xy += x * y;
        yy += y * y;
    }
    const double slope = xy / xx;
    const double rest = std::max(0.0, yy - slope * xy) / static_cast<double>(count - 2);
    return {slope, std::sqrt(rest / xx)};
}

double HeightAbove(const Line& line, const Point& point)
{
    return point.y - line.y - line.slope * (point.x - line.x);
}

using Heights = std::array<double, MAX_BLOCKS>;

double MedianOf(Heights& heights, std::size_t count)
{
    double* middle = &heights[count / 2];
    std::nth_element(heights.data(), middle, heights.data() + count);
    return *middle;
}

double MedianHeight(const Point* points, std::size_t count, const Line& line)
{
    Heights heights;
    std::transform(points, points + count, heights.begin(),
                   [&line](const Point& point) { return HeightAbove(line, point); });
    return MedianOf(heights, count);
}

/// The slope of the points without the unusually high or low ones, so that one busy second of the
/// host has no effect.
Slope UsualSlope(const Point* points, std::size_t count, const Line& line)
{
    const double median = MedianHeight(points, count, line);
    const auto distance = [&](const Point& point)
    { return std::fabs(HeightAbove(line, point) - median); };
    Heights distances;
    std::transform(points, points + count, distances.begin(), distance);
    const double limit = UNUSUAL * MedianOf(distances, count);
    std::array<Point, MAX_BLOCKS> usual;
    const auto end = std::copy_if(points, points + count, usual.begin(),
                                  [&](const Point& point) { return distance(point) <= limit; });
    return SlopeOf(usual.data(), static_cast<std::size_t>(end - usual.begin()));
}

/// The weighted mean of lines with slopes around the slope of `highest`, at distances of `step`.
/// For each slope the expected line lies `amount` below the highest line with that slope.
Line MeanLine(const Hull& hull, const Line& highest, const Slope& other, double amount, double step)
{
    double weights = 0.0;
    Line mean = {highest.x, 0.0, 0.0};
    for (int i = -SLOPES; i <= SLOPES; ++i)
    {
        const double slope = highest.slope + i * step;
        const double y = hull.Highest(highest.x, slope);
        const double off = (slope - other.value) / other.deviation;
        const double atBest = (highest.slope - other.value) / other.deviation;
        const double weight =
            std::exp((y - highest.y) / amount - 0.5 * (off * off - atBest * atBest));
        weights += weight;
        mean.y += weight * (y - amount);
        mean.slope += weight * slope;
    }
    return {highest.x, mean.y / weights, mean.slope / weights};
}

} // namespace

Line LineBelow(const Point* lowest, const Point* means, std::size_t blocks, double leastDeviation)
{
    const Hull hull(lowest, blocks);
    const Point mean = MeanOf(lowest, blocks);
    Line highest = {mean.x, 0.0, hull.SlopeAt(mean.x)};
    highest.y = hull.Highest(mean.x, highest.slope);
    if (blocks < LEAST_BLOCKS)
    {
        return highest;
    }
    const double count = static_cast<double>(blocks);
    const double amount =
        MedianHeight(lowest, blocks, highest) / MEDIAN / ((count - 2.0) * WEIGHT_OF_A_BLOCK);
    const double step = SLOPE_STEP * 4.0 * amount / (lowest[blocks - 1].x - lowest[0].x);
    if (amount < 1.0)
    {
        return highest; // the points are on a line
    }
    Slope other = UsualSlope(means, blocks, highest);
    other.deviation = std::hypot(other.deviation, leastDeviation);
    return MeanLine(hull, highest, other, amount, step);
}

} // namespace qltkit
