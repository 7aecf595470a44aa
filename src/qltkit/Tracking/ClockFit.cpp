#include <qltkit/Tracking/ClockFit.h>

#include "Tracking/LineBelow.h"

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

/// The least standard deviation of the slope of the blocks' means. The load of a host may grow
/// during the measurement and tilt this slope.
constexpr double LEAST_SLOPE_DEVIATION = 50e-6;

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
    if (deviceUs >= mBeginUs + BLOCK_US)
    {
        CloseBlock();
        OpenBlock(deviceUs, offsetNs);
    }
    else if (offsetNs < mCurrent.offsetNs)
    {
        mCurrent = {deviceUs, offsetNs};
    }
    mSumUs += static_cast<double>(deviceUs - mBeginUs);
    mSumNs += static_cast<double>(offsetNs - mBeginNs);
    ++mReports;
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
    OpenBlock(deviceUs, offsetNs);
    mReports = 1;
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

void ClockFit::OpenBlock(std::int64_t deviceUs, std::int64_t offsetNs)
{
    mCurrent = {deviceUs, offsetNs};
    mBeginUs = deviceUs;
    mBeginNs = offsetNs;
    mSumUs = mSumNs = 0.0;
    mReports = 0;
}

void ClockFit::CloseBlock()
{
    mCurrent.meanUs = mSumUs / mReports - static_cast<double>(mCurrent.deviceUs - mBeginUs);
    mCurrent.meanNs = mSumNs / mReports - static_cast<double>(mCurrent.offsetNs - mBeginNs);
    mBlocks[mCount % BLOCKS] = mCurrent;
    ++mCount;
    FitLine();
}

/// Fits the line. x is device time in microseconds and y is the offset in nanoseconds, both
/// relative to the first block.
void ClockFit::FitLine()
{
    const std::size_t blocks = std::min(mCount, BLOCKS);
    const Block& first = mBlocks[(mCount - blocks) % BLOCKS];
    std::array<Point, BLOCKS> lowest;
    std::array<Point, BLOCKS> means;
    for (std::size_t i = 0; i < blocks; ++i)
    {
        const Block& block = mBlocks[(mCount - blocks + i) % BLOCKS];
        lowest[i] = {static_cast<double>(block.deviceUs - first.deviceUs),
                     static_cast<double>(block.offsetNs - first.offsetNs)};
        means[i] = {lowest[i].x + block.meanUs, lowest[i].y + block.meanNs};
    }
    mOriginUs = first.deviceUs;
    mOffsetNs = static_cast<double>(first.offsetNs);
    if (blocks < BLOCKS_OF_A_SLOPE)
    {
        const auto byOffset = [](const Point& a, const Point& b) { return a.y < b.y; };
        mOffsetNs += std::min_element(&lowest[0], &lowest[blocks], byOffset)->y;
        return;
    }
    const Line line =
        LineBelow(lowest.data(), means.data(), blocks, LEAST_SLOPE_DEVIATION * 1000.0);
    mSlope = std::clamp(line.slope / 1000.0, -MAX_SLOPE, MAX_SLOPE);
    mOriginUs += static_cast<std::int64_t>(line.x);
    mOffsetNs += line.y;
}

} // namespace qltkit
