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

    using Report = std::array<std::uint8_t, REPORT_SIZE>;

    std::vector<Report> reports;
    std::vector<std::int64_t> timesUs;  // device time of each report, unwrapped across 2^32
    std::vector<std::int64_t> playedUs; // since the first report, without implausible steps
    std::size_t extraBytes = 0;         // of a last report that was cut off

    double DurationS() const;
};

/// Reads a recording; std::runtime_error with one clear sentence when the file cannot be read or
/// holds no whole report.
Recording LoadRecording(const std::string& path);

/// Says on standard error what is odd about `recording`; false when its last report was cut off.
/// std::runtime_error when more than a hundredth of its steps are implausible.
bool ReportFaults(const Recording& recording, const std::string& path);
