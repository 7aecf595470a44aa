#pragma once

#include <qltkit/Export.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace qltkit
{

/// Learns the relation between a device's clock and the host's clock from the arrival times of
/// reports. Every report arrives with an unknown delay.
///
/// The fit is a straight line below the arrival times of the last eight seconds. Reports arrive
/// late and never early, so the earliest arrival of each short block counts most. After two seconds
/// of delays of up to 5 ms, the error is below 0.3 ms in nearly every run.
///
/// Add every report in the order of arrival, and convert device times at any moment:
///
///     qltkit::ClockFit fit;
///     fit.Add(deviceUs, clock.NowNs()); // for each report, as soon as it arrives
///     const std::int64_t madeNs = fit.HostNs(deviceUs);
///
/// One thread at a time may use an object. The operations allocate nothing, read no clock and never
/// throw.
class QLTKIT_API ClockFit
{
public:
    /// Adds a report that was made at `deviceUs` and arrived at `hostNs`. `deviceUs` is the
    /// device's clock in microseconds without its wrap, and `hostNs` is the host's clock in
    /// nanoseconds.
    ///
    /// The fit restarts when the device's clock steps back, and when either clock jumps by more
    /// than JUMP_NS. A report that is too early shows a jump at once. Late reports show a jump only
    /// when more than 100 of them arrive in a row, because a busy host also makes reports late.
    void Add(std::int64_t deviceUs, std::int64_t hostNs);

    /// Converts a time of the device's clock in microseconds into host time in nanoseconds. The
    /// time may be in the past or in the future, because the line has no end. The result is 0
    /// before the first Add.
    std::int64_t HostNs(std::int64_t deviceUs) const;

    /// The drift between the clocks in parts per million. It is positive when the host's clock is
    /// faster than the device's clock. It is 0 until eight blocks are complete (about half a
    /// second), and it stays within -1000 .. 1000, because no crystal has a larger error.
    double DriftPpm() const { return mSlope * 1e6; }

    /// The number of restarts since the construction. The first report is no restart.
    std::uint32_t Restarts() const { return mRestarts; }

    /// The smallest jump of a clock that restarts the fit, in nanoseconds.
    static constexpr std::int64_t JUMP_NS = 100000000;

private:
    /// The earliest arrival of a block of reports.
    struct Block
    {
        std::int64_t deviceUs = 0;
        std::int64_t offsetNs = 0; // host time minus device time
        double meanUs = 0.0;       // the mean of the block's reports, relative to the earliest one
        double meanNs = 0.0;
    };

    static constexpr std::int64_t BLOCK_US = 64000;
    static constexpr std::size_t BLOCKS = 128;

    void Restart(std::int64_t deviceUs, std::int64_t offsetNs);
    bool HasJumped(std::int64_t offsetNs, std::int64_t expectedNs);
    void OpenBlock(std::int64_t deviceUs, std::int64_t offsetNs);
    void CloseBlock();
    void FitLine();

    std::array<Block, BLOCKS> mBlocks{};
    std::size_t mCount = 0; // the number of blocks closed since the start
    Block mCurrent;
    std::int64_t mBeginUs = 0; // the first report of the current block
    std::int64_t mBeginNs = 0;
    double mSumUs = 0.0; // over the block's reports, relative to the first one
    double mSumNs = 0.0;
    std::uint32_t mReports = 0;
    std::int64_t mLastUs = 0;
    std::int64_t mOriginUs = 0; // the device time at which the line has the value mOffsetNs
    double mOffsetNs = 0.0;
    double mSlope = 0.0; // host nanoseconds gained per device nanosecond
    std::uint32_t mLate = 0;
    std::uint32_t mRestarts = 0;
    bool mStarted = false;
};

} // namespace qltkit
