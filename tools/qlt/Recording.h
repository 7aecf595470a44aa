// A recording of the headset: its 64-byte sensor reports, one after another, nothing else.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct Recording
{
    static constexpr std::size_t REPORT_SIZE = 64;

    std::vector<std::array<std::uint8_t, REPORT_SIZE>> reports;
    std::vector<std::int64_t> timesUs; // device time of each report, unwrapped across 2^32
    std::size_t extraBytes = 0;        // of a last report that was cut off

    double DurationS() const;
};

/// Reads a recording; std::runtime_error with one clear sentence when the file cannot be read or
/// holds no whole report.
Recording LoadRecording(const std::string& path);

/// Says on standard error that the last report of `recording` was cut off; false when it was.
bool ReportTruncation(const Recording& recording, const std::string& path);
