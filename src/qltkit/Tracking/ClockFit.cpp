#include <qltkit/Tracking/ClockFit.h>

#include <algorithm>
#include <cmath>

namespace qltkit
{
namespace
{

/// A stall makes arrivals late by more than JUMP_NS. A longer row of late arrivals than this is a
/// jump of a clock.
constexpr std::uint32_t LATE_REPORTS_OF_A_JUMP = 100;

/// No crystal has a larger error, so clamp a slope that few blocks have given.
constexpr double MAX_SLOPE = 1e-3;

constexpr std::size_t BLOCKS_OF_A_SLOPE = 8;

/// A block as a point: x is device time in microseconds, y is offset in nanoseconds.
struct Point
{
    double x = 0.0;
    double y = 0.0;
};

/// True when `b` lies on or above the straight line from `a` to `c`.
bool IsAbove(const Point& a, const Point& b, const Point& c)
{
    return (b.y - a.y) * (c.x - a.x) >= (c.y - a.y) * (b.x - a.x);
}

} // namespace

void ClockFit::Add(std::int64_t deviceUs, std::int64_t hostNs)
{
    const std::int64_t offsetNs = hostNs - deviceUs * 1000;
    if (!mStarted)
    {
        Restart(deviceUs, offsetNs);
        return;
    }
    if (deviceUs < mLastUs || HasJumped(offsetNs, HostNs(deviceUs) - deviceUs * 1000))
    {
        ++mRestarts;
        Restart(deviceUs, offsetNs);
        return;
    }
    mLastUs = deviceUs;
    if (deviceUs >= mBlockEndUs)
    {
        CloseBlock();
        mCurrent = {deviceUs, offsetNs};
        mBlockEndUs = deviceUs + BLOCK_US;
    }
    else if (offsetNs < mCurrent.offsetNs)
    {
        mCurrent = {deviceUs, offsetNs};
    }
    // Until two blocks are closed, an earlier arrival lowers the offset at once.
    if (mCount < 2 && static_cast<double>(offsetNs) < mOffsetNs)
    {
        mOffsetNs = static_cast<double>(offsetNs);
        mOriginUs = deviceUs;
    }
}

std::int64_t ClockFit::HostNs(std::int64_t deviceUs) const
{
    if (!mStarted)
    {
        return 0;
    }
    const double sinceNs = static_cast<double>(deviceUs - mOriginUs) * 1000.0;
    return deviceUs * 1000 + std::llround(mOffsetNs + mSlope * sinceNs);
}

void ClockFit::Restart(std::int64_t deviceUs, std::int64_t offsetNs)
{
    mStarted = true;
    mLastUs = deviceUs;
    mCount = 0;
    mLate = 0;
    mCurrent = {deviceUs, offsetNs};
    mBlockEndUs = deviceUs + BLOCK_US;
    mOriginUs = deviceUs;
    mOffsetNs = static_cast<double>(offsetNs);
    mSlope = 0.0;
}

/// A report cannot arrive before it was made, so an early one shows a jump at once. A late report
/// may be a stall, so only a long row of late reports shows a jump.
bool ClockFit::HasJumped(std::int64_t offsetNs, std::int64_t expectedNs)
{
    mLate = offsetNs > expectedNs + JUMP_NS ? mLate + 1 : 0;
    return offsetNs < expectedNs - JUMP_NS || mLate > LATE_REPORTS_OF_A_JUMP;
}

void ClockFit::CloseBlock()
{
    mBlocks[mCount % BLOCKS] = mCurrent;
    ++mCount;
    FitLine();
}

/// Finds the line below all blocks with the smallest mean distance to them. This line is the edge
/// of the blocks' lower convex hull below their mean time (a linear programme with two unknowns).
void ClockFit::FitLine()
{
    const std::size_t blocks = std::min(mCount, BLOCKS);
    const std::size_t first = mCount - blocks;
    std::array<Point, BLOCKS> hull;
    std::size_t size = 0;
    double meanX = 0.0;
    for (std::size_t i = first; i < mCount; ++i)
    {
        const Block& block = mBlocks[i % BLOCKS];
        const Point point = {
            static_cast<double>(block.deviceUs - mBlocks[first % BLOCKS].deviceUs),
            static_cast<double>(block.offsetNs - mBlocks[first % BLOCKS].offsetNs)};
        meanX += point.x / static_cast<double>(blocks);
        while (size >= 2 && IsAbove(hull[size - 2], hull[size - 1], point))
        {
            --size;
        }
        hull[size++] = point;
    }
    std::size_t right = size - 1;
    while (right > 1 && hull[right - 1].x >= meanX)
    {
        --right;
    }
    const Point& end = hull[right];
    if (blocks >= BLOCKS_OF_A_SLOPE)
    {
        const Point& begin = hull[right - 1];
        mSlope = std::clamp((end.y - begin.y) / (end.x - begin.x) / 1000.0, -MAX_SLOPE, MAX_SLOPE);
    }
    mOriginUs = mBlocks[first % BLOCKS].deviceUs + static_cast<std::int64_t>(end.x);
    mOffsetNs = static_cast<double>(mBlocks[first % BLOCKS].offsetNs) + end.y;
}

} // namespace qltkit
