#pragma once

#include <qlt/Sensors/SensorReport.h>
#include <qltkit/Export.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qltkit
{

/// A recording of the headset: its 64-byte sensor reports, one after another, and nothing else. The
/// three lists have one entry for each report.
struct QLTKIT_API Recording
{
    std::vector<qlt::SensorReport> reports;

    /// The device time, microseconds. It continues when the headset's 32-bit clock starts again.
    std::vector<std::int64_t> timesUs;

    /// The time since the first report, microseconds, without implausible steps. A player goes by
    /// it.
    std::vector<std::int64_t> playedUs;

    /// How many bytes of a last, incomplete report the file has: 0 to 63.
    std::size_t extraBytes = 0;

    /// The time from the first report to the last, seconds, without implausible steps.
    double DurationS() const;
};

/// Reads a recording. Error with one sentence when the file cannot be read or holds no whole
/// report. CheckRecording tells whether the reports make sense. Any thread.
QLTKIT_API Recording LoadRecording(const std::string& path);

} // namespace qltkit
