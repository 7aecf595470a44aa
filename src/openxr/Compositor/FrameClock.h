// When the display shows its pictures: moments that are one period apart. Any thread may call.
#pragma once

#include <openxr/openxr.h>

#include <atomic>

namespace qltxr
{

class FrameClock
{
public:
    static constexpr XrDuration DEFAULT_PERIOD = 16666667; // of a panel with 60 Hz

    /// One of the display times is `phase`; the period is positive.
    FrameClock(XrDuration period, XrTime phase)
        : mPeriod(period)
        , mPhase(phase)
    {
    }

    XrDuration Period() const { return mPeriod; }

    /// The first display time after `time`.
    XrTime NextAfter(XrTime time) const
    {
        const XrTime phase = mPhase.load(std::memory_order_relaxed);
        XrTime periods = (time - phase) / mPeriod;
        if ((time - phase) % mPeriod < 0)
        {
            --periods; // as division rounds towards zero
        }
        return phase + (periods + 1) * mPeriod;
    }

    /// The display has shown a picture at `time`. The clock follows so gently that neighbouring
    /// display times stay within 0.1 ms of one period.
    void Observe(XrTime time)
    {
        constexpr XrDuration MAX_STEP = 50000;
        constexpr XrDuration SHARE = 16;
        const XrTime nearest = NextAfter(time - mPeriod / 2);
        XrDuration step = (time - nearest) / SHARE;
        step = step > MAX_STEP ? MAX_STEP : step < -MAX_STEP ? -MAX_STEP : step;
        mPhase.store(mPhase.load(std::memory_order_relaxed) + step, std::memory_order_relaxed);
    }

private:
    const XrDuration mPeriod;
    std::atomic<XrTime> mPhase;
};

/// Which display time a program's next frame is for, and when the program is to begin with it. The
/// caller serialises all operations.
class FramePacer
{
public:
    struct Slot
    {
        XrTime displayTime;
        XrTime wakeTime; // in the past for a late program
    };

    /// A frame has one period for the program and one for the compositor. A late program skips
    /// display times, and is then on time again.
    Slot Next(const FrameClock& clock, XrTime now)
    {
        const XrDuration period = clock.Period();
        const XrTime earliest = now + period;
        const XrTime following = mLast + period / 2;
        mLast = clock.NextAfter(earliest > following ? earliest : following);
        return {mLast, mLast - 2 * period};
    }

private:
    XrTime mLast = 0;
};

} // namespace qltxr
