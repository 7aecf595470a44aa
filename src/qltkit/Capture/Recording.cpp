#include <qltkit/Capture/Recording.h>

#include <qltkit/Error.h>

#include "Capture/InputBlocks.h"
#include "Capture/McapFormat.h"
#include "Capture/RecordingStep.h"

#include <algorithm>
#include <fstream>

namespace qltkit
{

namespace
{

namespace fs = std::filesystem;

/// The smallest number of bytes that a report takes in a capture.
constexpr std::uintmax_t MIN_MESSAGE_BYTES = MCAP_PREFIX_SIZE + 22 + qlt::SENSOR_REPORT_SIZE;

/// Reserves room for the largest number of reports that the file can hold. Growing lists would need
/// more memory.
void Reserve(Recording& recording, const std::string& path, std::uintmax_t bytesPerReport)
{
    std::error_code error;
    const std::uintmax_t size = fs::is_regular_file(path, error) ? fs::file_size(path, error) : 0;
    if (!error)
    {
        recording.reports.reserve(static_cast<std::size_t>(size / bytesPerReport));
    }
}

void ReadCapture(const std::string& path, Recording& recording)
{
    CaptureReader reader(path);
    Reserve(recording, path, MIN_MESSAGE_BYTES);
    CaptureItem item;
    while (reader.Next(item))
    {
        if (item.kind == CaptureItem::Kind::Report)
        {
            recording.reports.push_back(item.report);
            recording.hostTimesNs.push_back(item.hostTimeNs);
        }
    }
    recording.problems = reader.Problems();
    if (recording.reports.empty())
    {
        throw Error(path + " holds no report" +
                    (recording.problems.empty() ? "" : ": " + recording.problems.front().text));
    }
}

void ReadPlain(const std::string& path, Recording& recording)
{
    Reserve(recording, path, qlt::SENSOR_REPORT_SIZE);
    static_assert(INPUT_BLOCK_SIZE % qlt::SENSOR_REPORT_SIZE == 0);
    ReadBlocks(path,
               [&recording](std::string_view block)
               {
                   for (; block.size() >= qlt::SENSOR_REPORT_SIZE;
                        block.remove_prefix(qlt::SENSOR_REPORT_SIZE))
                   {
                       recording.reports.emplace_back();
                       std::copy_n(block.begin(), qlt::SENSOR_REPORT_SIZE,
                                   recording.reports.back().begin());
                   }
                   recording.extraBytes += block.size();
               });
    if (recording.reports.empty())
    {
        throw Error(recording.extraBytes == 0
                        ? path + " is empty"
                        : path + " holds no whole report: " + std::to_string(recording.extraBytes) +
                              " bytes of 64");
    }
}

void AddTimes(Recording& recording)
{
    recording.timesUs.reserve(recording.reports.size());
    recording.playedUs.reserve(recording.reports.size());
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
}

} // namespace

double Recording::DurationS() const { return static_cast<double>(playedUs.back()) / 1e6; }

bool IsCapture(const std::string& path)
{
    std::error_code ignored;
    if (fs::path(path).extension() == ".mcap")
    {
        return true;
    }
    std::string magic(MCAP_MAGIC.size(), '\0');
    return fs::is_regular_file(path, ignored) &&
           std::ifstream(path, std::ios::binary)
               .read(magic.data(), static_cast<std::streamsize>(magic.size())) &&
           magic == MCAP_MAGIC;
}

Recording LoadRecording(const std::string& path)
{
    Recording recording;
    (IsCapture(path) ? ReadCapture : ReadPlain)(path, recording);
    AddTimes(recording);
    return recording;
}

Recording RecordingOf(std::vector<qlt::SensorReport> reports)
{
    Recording recording;
    recording.reports = std::move(reports);
    AddTimes(recording);
    return recording;
}

} // namespace qltkit
