#include <qltkit/Capture/Recording.h>

#include <qltkit/Capture/InputFile.h>
#include <qltkit/Error.h>

#include "Capture/RecordingStep.h"

#include <algorithm>

namespace qltkit
{

double Recording::DurationS() const { return static_cast<double>(playedUs.back()) / 1e6; }

Recording LoadRecording(const std::string& path)
{
    const std::string bytes = ReadInput(path);
    if (bytes.empty())
    {
        throw Error(path + " is empty");
    }
    Recording recording;
    recording.extraBytes = bytes.size() % qlt::SENSOR_REPORT_SIZE;
    recording.reports.resize(bytes.size() / qlt::SENSOR_REPORT_SIZE);
    recording.timesUs.reserve(recording.reports.size());
    recording.playedUs.reserve(recording.reports.size());
    if (recording.reports.empty())
    {
        throw Error(path + " holds no whole report: " + std::to_string(bytes.size()) +
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
    std::size_t last = 0; // the last report that made sense
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

} // namespace qltkit
