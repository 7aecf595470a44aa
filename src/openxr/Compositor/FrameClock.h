// The times at which the display shows its pictures. They are one period apart. Any thread may
// call.
#pragma once

#include <openxr/openxr.h>

#include <atomic>

namespace qltxr
{

class FrameClock
{
public:
    static constexpr XrDuration DEFAULT_PERIOD = 16666667; // the period of a panel with 60 Hz

    /// `phase` is one of the display times. `period` must be positive.
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
            --periods; // the division rounds towards zero
        }
        return phase + (periods + 1) * mPeriod;
    }

    /// Takes a time at which the display has shown a picture. The clock follows slowly, so
    /// neighbouring display times stay within 0.1 ms of one period.
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

/// Chooses the display time of a program's next frame, and the time at which the program should
/// begin with the frame. The caller serialises all operations.
class FramePacer
{
public:
    struct Slot
    {
        XrTime displayTime;
        XrTime wakeTime; // it is in the past for a late program
    };

    /// A frame gets one period for the program and one for the compositor. A late program skips
    /// display times and is then on time again.
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
