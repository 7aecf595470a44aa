// When a report was made, by both clocks.
#pragma once

#include <qltkit/Tracking/ClockFit.h>

#include <cstdint>

namespace qltkit
{

struct ReportTime
{
    std::int64_t deviceUs = 0; // without the wrap
    std::int64_t hostNs = 0;
};

class ReportTimer
{
public:
    /// The times of a report that carries `deviceUs` and arrived at `arrivalNs`. The host time is
    /// never later than the arrival, and grows with every report.
    ReportTime Take(std::uint32_t deviceUs, std::int64_t arrivalNs);

    /// Knows nothing of the device's clock any more: after an unplug it may count from anywhere.
    void StartAnew();

private:
    ClockFit mFit;
    bool mStarted = false;
    bool mHasHost = false;
    std::int64_t mDeviceUs = 0;
    std::int64_t mHostNs = 0;
};

} // namespace qltkit
