// The step from one report to a later one.
#pragma once

#include <qlt/Sensors/SensorReport.h>

#include <cstdint>

namespace qltkit
{

/// The limits of a step per report. They are wide, because the clocks of devices and hosts are not
/// exact.
constexpr std::int64_t MIN_STEP_US = 250;
constexpr std::int64_t MAX_STEP_US = 4000;
constexpr std::int64_t MAX_PAUSE_US = 10000000;

/// Both differences are modulo 2^32, so a small step back is negative.
struct RecordingStep
{
    std::int32_t reports;
    std::int32_t timeUs;
};

inline std::uint32_t ReadU32(const std::uint8_t* bytes)
{
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

inline std::uint32_t DeviceTimeUs(const qlt::SensorReport& report)
{
    return ReadU32(report.data() + 4);
}

/// Returns the step between the reports that begin at these bytes.
inline RecordingStep StepFrom(const std::uint8_t* before, const std::uint8_t* after)
{
    return {static_cast<std::int32_t>(ReadU32(after) - ReadU32(before)),
            static_cast<std::int32_t>(ReadU32(after + 4) - ReadU32(before + 4))};
}

inline RecordingStep StepBetween(const qlt::SensorReport& before, const qlt::SensorReport& after)
{
    return StepFrom(before.data(), after.data());
}

/// True when sequence and time continue at the headset's rate. Lost reports and a pause of some
/// seconds are plausible.
inline bool IsPlausible(const RecordingStep& step)
{
    return step.reports > 0 && step.timeUs >= MIN_STEP_US * step.reports &&
           step.timeUs <= MAX_STEP_US * step.reports + MAX_PAUSE_US;
}

} // namespace qltkit
