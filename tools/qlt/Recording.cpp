#include "Recording.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace
{

std::uint32_t DeviceTimeUs(const std::uint8_t* report)
{
    return static_cast<std::uint32_t>(report[4]) | static_cast<std::uint32_t>(report[5]) << 8 |
           static_cast<std::uint32_t>(report[6]) << 16 |
           static_cast<std::uint32_t>(report[7]) << 24;
}

std::vector<char> ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad())
    {
        throw std::runtime_error("cannot read " + path);
    }
    return bytes;
}

} // namespace

double Recording::DurationS() const
{
    return static_cast<double>(timesUs.back() - timesUs.front()) / 1e6;
}

Recording LoadRecording(const std::string& path)
{
    const std::vector<char> bytes = ReadFile(path);
    if (bytes.empty())
    {
        throw std::runtime_error(path + " is empty");
    }
    Recording recording;
    recording.extraBytes = bytes.size() % Recording::REPORT_SIZE;
    recording.reports.resize(bytes.size() / Recording::REPORT_SIZE);
    recording.timesUs.reserve(recording.reports.size());
    if (recording.reports.empty())
    {
        throw std::runtime_error(path + " holds no whole report: " + std::to_string(bytes.size()) +
                                 " bytes of 64");
    }
    auto next = bytes.begin();
    for (auto& report : recording.reports)
    {
        std::copy_n(next, report.size(), report.begin());
        next += static_cast<std::ptrdiff_t>(report.size());
        const std::uint32_t timeUs = DeviceTimeUs(report.data());
        const std::int64_t last = recording.timesUs.empty() ? timeUs : recording.timesUs.back();
        // The difference modulo 2^32, forward or a little backward.
        const auto step = static_cast<std::int32_t>(timeUs - static_cast<std::uint32_t>(last));
        recording.timesUs.push_back(last + step);
    }
    return recording;
}

bool ReportTruncation(const Recording& recording, const std::string& path)
{
    if (recording.extraBytes != 0)
    {
        std::cerr << "qlt: the last report of " << path << " is cut off after "
                  << recording.extraBytes << " of 64 bytes\n";
    }
    return recording.extraBytes == 0;
}
