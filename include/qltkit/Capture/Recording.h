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
/// three lists have one entry for each report. LoadRecording gives a recording with at least one
/// report. A plain value.
struct QLTKIT_API Recording
{
    /// The reports in the order of the file.
    std::vector<qlt::SensorReport> reports;

    /// The device time of each report in microseconds. It continues when the headset's 32-bit clock
    /// starts again.
    std::vector<std::int64_t> timesUs;

    /// The time of each report since the first one, in microseconds. Implausible steps of the
    /// device clock do not count, so a player that uses these times never waits for hours.
    std::vector<std::int64_t> playedUs;

    /// The number of bytes of a last, incomplete report: 0 to 63.
    std::size_t extraBytes = 0;

    /// The time from the first report to the last in seconds, without implausible steps. The
    /// recording must have at least one report.
    double DurationS() const;
};

/// Reads a recording from a file. Throws Error with one sentence when the file cannot be read or
/// contains no whole report. CheckRecording tells whether the reports make sense. Any thread.
QLTKIT_API Recording LoadRecording(const std::string& path);

} // namespace qltkit
