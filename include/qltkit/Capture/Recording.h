#pragma once

#include <qlt/Sensors/SensorReport.h>
#include <qltkit/Capture/CaptureReader.h>
#include <qltkit/Export.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qltkit
{

/// The 64-byte sensor reports of a headset, one after another. The first three lists have one entry
/// for each report. LoadRecording gives a recording with at least one report. A plain value.
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

    /// The host time of each report in nanoseconds, by the steady clock of the machine that wrote
    /// the capture. Empty for a file that contains only reports.
    std::vector<std::int64_t> hostTimesNs;

    /// The number of bytes of a last, incomplete report: 0 to 63.
    std::size_t extraBytes = 0;

    /// The faults of a capture's file, which may have cost reports: where it is cut off or damaged.
    /// The list has at most a hundred entries.
    std::vector<CaptureProblem> problems;

    /// The time from the first report to the last in seconds, without implausible steps. The
    /// recording must have at least one report.
    double DurationS() const;
};

/// True for a capture: its first bytes are those of an MCAP file, or its name ends in ".mcap".
/// False for a file that contains only reports. Any thread.
QLTKIT_API bool IsCapture(const std::string& path);

/// Reads a recording: the reports of a capture, or a file that contains only reports. Both give the
/// same bits in a replay. Throws Error with one sentence when the file cannot be read or contains
/// no whole report. CheckRecording tells whether the reports make sense. Any thread.
QLTKIT_API Recording LoadRecording(const std::string& path);

/// Makes a recording of these reports. There must be at least one. Any thread.
QLTKIT_API Recording RecordingOf(std::vector<qlt::SensorReport> reports);

} // namespace qltkit
