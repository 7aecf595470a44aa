#pragma once

#include "Capture/Bytes.h"

namespace qltkit
{

/// Extends the headset's clock, which wraps after 2^32 microseconds, to 64 bits.
class DeviceTime
{
public:
    /// The time of the next report in microseconds. It is after the time of the last report, or
    /// before it by less than half of 2^32.
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
