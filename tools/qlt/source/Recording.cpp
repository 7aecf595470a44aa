#include "source/Recording.h"

#include "output/OutputFile.h"
#include "source/InputFile.h"
#include "source/RecordingCheck.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>

namespace
{

constexpr std::size_t MAX_LISTED = 20; // faults

std::string Describe(const RecordingFault& fault)
{
    return OutputFile::Format("report %zu (%.3f s): ", fault.report,
                              static_cast<double>(fault.timeUs) / 1e6) +
           fault.text;
}

} // namespace

double Recording::DurationS() const { return static_cast<double>(playedUs.back()) / 1e6; }

Recording LoadRecording(const std::string& path)
{
    const std::string bytes = ReadInput(path);
    if (bytes.empty())
    {
        throw std::runtime_error(path + " is empty");
    }
    Recording recording;
    recording.extraBytes = bytes.size() % Recording::REPORT_SIZE;
    recording.reports.resize(bytes.size() / Recording::REPORT_SIZE);
    recording.timesUs.reserve(recording.reports.size());
    recording.playedUs.reserve(recording.reports.size());
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
    }
    recording.timesUs.push_back(DeviceTimeUs(recording.reports.front()));
    recording.playedUs.push_back(0);
    std::size_t last = 0; // that made sense
    for (std::size_t i = 1; i < recording.reports.size(); ++i)
    {
        const RecordingStep step = StepBetween(recording.reports[i - 1], recording.reports[i]);
        recording.timesUs.push_back(recording.timesUs.back() + step.timeUs);
        const RecordingStep good = StepBetween(recording.reports[last], recording.reports[i]);
        const bool goesOn = IsPlausible(good) || IsPlausible(step);
        recording.playedUs.push_back(IsPlausible(good) ? recording.playedUs[last] + good.timeUs
                                     : goesOn          ? recording.playedUs.back() + step.timeUs
                                                       : recording.playedUs.back());
        last = goesOn ? i : last;
    }
    return recording;
}

bool ReportFaults(const Recording& recording, const std::string& path)
{
    const RecordingCheck check = CheckRecording(recording);
    const std::size_t steps = recording.reports.size() - 1;
    if (steps == 0 && recording.extraBytes != 0)
    {
        throw std::runtime_error(path + " is not a recording: it ends after one report and " +
                                 std::to_string(recording.extraBytes) + " of 64 bytes");
    }
    const bool isRefused = check.implausibleSteps * 100 > steps;
    std::size_t listed = std::min(check.faults.size(), MAX_LISTED);
    if (isRefused && check.faults.size() > MAX_LISTED) // they say nothing but that
    {
        listed = 0;
    }
    for (std::size_t i = 0; i < listed; ++i)
    {
        std::cerr << "qlt: " << path << ", " << Describe(check.faults[i]) << '\n';
    }
    if (isRefused)
    {
        const auto first = std::find_if(check.faults.begin(), check.faults.end(),
                                        [](const auto& fault) { return !fault.isPlausible; });
        throw std::runtime_error(
            path + " is not a recording: " + std::to_string(check.implausibleSteps) + " of its " +
            std::to_string(steps) + " steps are implausible, the first at " + Describe(*first));
    }
    if (check.faults.size() > listed)
    {
        std::cerr << "qlt: " << path << ", and " << check.faults.size() - listed << " more\n";
    }
    if (recording.extraBytes != 0)
    {
        std::cerr << "qlt: the last report of " << path << " is cut off after "
                  << recording.extraBytes << " of 64 bytes\n";
    }
    return recording.extraBytes == 0;
}
