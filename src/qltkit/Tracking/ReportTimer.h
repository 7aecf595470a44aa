#pragma once

#include <qltkit/Tracking/ClockFit.h>

#include <cstdint>

namespace qltkit
{

/// The time at which a report was made, by both clocks.
struct ReportTime
{
    std::int64_t deviceUs = 0; // the device's clock without its wrap
    std::int64_t hostNs = 0;
};

/// Computes when each report was made.
class ReportTimer
{
public:
    /// Computes the times of a report that carries `deviceUs` and arrived at `arrivalNs`. The host
    /// time increases with every report. It is at most the arrival time, as long as the arrival
    /// times increase.
    ReportTime Take(std::uint32_t deviceUs, std::int64_t arrivalNs);

    /// Forgets the device's clock: after an unplug it may count from any value.
    void StartAnew();

private:
    ClockFit mFit;
    bool mStarted = false;
    bool mHasHost = false;
    std::int64_t mDeviceUs = 0;
    std::int64_t mHostNs = 0;
};

} // namespace qltkit
