#pragma once

#include <qltkit/Export.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace qltkit
{

/// The relation between a device's clock and the host's, learned from reports that arrive late by
/// unknown amounts. A straight line is fitted under the arrival times of the last four seconds:
/// reports arrive late, never early, so the earliest arrival of each short block says the most.
///
/// One thread at a time. Pure arithmetic: it allocates nothing and asks no clock.
class QLTKIT_API ClockFit
{
public:
    /// Takes a report made at `deviceUs`, microseconds of the device's clock without its wrap, that
    /// arrived at `hostNs`, nanoseconds of the host's. A step back of the device's clock and a jump
    /// of either clock by more than JUMP_NS start the fit anew.
    void Add(std::int64_t deviceUs, std::int64_t hostNs);

    /// The host time, in nanoseconds, of a moment of the device's clock. 0 before the first Add.
    std::int64_t HostNs(std::int64_t deviceUs) const;

    /// How much faster the host's clock runs than the device's, in parts per million; 0 until two
    /// blocks are complete.
    double DriftPpm() const { return mSlope * 1e6; }

    /// How often a jump of a clock has started the fit anew.
    std::uint32_t Restarts() const { return mRestarts; }

    static constexpr std::int64_t JUMP_NS = 100000000;

private:
    /// The earliest arrival of a block of reports.
    struct Block
    {
        std::int64_t deviceUs = 0;
        std::int64_t offsetNs = 0; // the host's time less the device's
    };

    static constexpr std::int64_t BLOCK_US = 64000;
    static constexpr std::size_t BLOCKS = 64;

    void Restart(std::int64_t deviceUs, std::int64_t offsetNs);
    bool HasJumped(std::int64_t offsetNs, std::int64_t expectedNs);
    void CloseBlock();
    void FitLine();

    std::array<Block, BLOCKS> mBlocks{};
    std::size_t mCount = 0; // of blocks ever closed since the start
    Block mCurrent;
    std::int64_t mBlockEndUs = 0;
    std::int64_t mLastUs = 0;
    std::int64_t mOriginUs = 0; // where the line has the value mOffsetNs
    double mOffsetNs = 0.0;
    double mSlope = 0.0; // host nanoseconds gained per device nanosecond
    std::uint32_t mLate = 0;
    std::uint32_t mRestarts = 0;
    bool mStarted = false;
};

} // namespace qltkit
