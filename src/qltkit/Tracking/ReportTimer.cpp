#include "Tracking/ReportTimer.h"

#include <algorithm>

namespace qltkit
{

ReportTime ReportTimer::Take(std::uint32_t deviceUs, std::int64_t arrivalNs)
{
    // A step of less than half of the clock's range is a step forward. A larger one is a step back.
    const std::uint32_t step = deviceUs - static_cast<std::uint32_t>(mDeviceUs);
    mDeviceUs = mStarted ? mDeviceUs + static_cast<std::int32_t>(step) : deviceUs;
    mStarted = true;
    mFit.Add(mDeviceUs, arrivalNs);
    const std::int64_t hostNs = std::min(mFit.HostNs(mDeviceUs), arrivalNs);
    mHostNs = mHasHost ? std::max(hostNs, mHostNs + 1) : hostNs;
    mHasHost = true;
    return {mDeviceUs, mHostNs};
}

void ReportTimer::StartAnew()
{
    mFit = ClockFit();
    mStarted = false;
}

} // namespace qltkit
