// The headset's clock, which starts again after 2^32 microseconds, as a time that goes on.
#pragma once

#include "Capture/Bytes.h"

namespace qltkit
{

class DeviceTime
{
public:
    /// The time of the next report, microseconds: forward of the last one, or back by less than
    /// half of 2^32.
    std::int64_t Of(const std::uint8_t* report)
    {
        const std::uint32_t timeUs = static_cast<std::uint32_t>(report[4]) |
                                     static_cast<std::uint32_t>(report[5]) << 8 |
                                     static_cast<std::uint32_t>(report[6]) << 16 |
                                     static_cast<std::uint32_t>(report[7]) << 24;
        if (!mStarted)
        {
            mTimeUs = timeUs;
            mStarted = true;
        }
        mTimeUs += static_cast<std::int32_t>(timeUs - static_cast<std::uint32_t>(mTimeUs));
        return mTimeUs;
    }

private:
    bool mStarted = false;
    std::int64_t mTimeUs = 0;
};

} // namespace qltkit
