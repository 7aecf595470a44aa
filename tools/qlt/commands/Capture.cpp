#include "commands/Commands.h"

#include "commands/CommandLine.h"
#include "output/OutputFile.h"
#include "source/CaptureInput.h"
#include "source/RecordingFaults.h"

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>

namespace
{

using Kind = qltkit::CaptureItem::Kind;

struct Options
{
    std::string capture;
};

constexpr std::size_t MAX_EVENTS = 20; // the largest number of events that are listed

/// The contents of a capture.
struct Survey
{
    std::uint64_t firstNs = 0; // the log times of the first and the last item
    std::uint64_t lastNs = 0;
    std::uint64_t messages = 0;
    std::uint64_t reports = 0;
    std::uint64_t lostReports = 0;
    std::uint32_t firstSequence = 0;
    std::uint32_t lastSequence = 0;
    std::map<std::string, std::uint64_t> topics;
    std::uint64_t eventCount = 0;
    std::vector<std::string> events; // the first events
};

void AddReport(Survey& survey, std::uint32_t sequence)
{
    const std::uint32_t step = sequence - survey.lastSequence;
    if (survey.reports == 0)
    {
        survey.firstSequence = sequence;
    }
    else if (step > 1 && step < 0x80000000u) // a larger step is a step back
    {
        survey.lostReports += step - 1;
    }
    survey.lastSequence = sequence;
    ++survey.reports;
}

void AddEvent(Survey& survey, const qltkit::CaptureItem& event)
{
    if (++survey.eventCount <= MAX_EVENTS)
    {
        const double seconds = static_cast<double>(event.logTimeNs - survey.firstNs) / 1e9;
        survey.events.push_back(OutputFile::Format("%10.3f s  ", seconds) + event.name +
                                (event.text.empty() ? "" : ": " + event.text));
    }
}

Survey SurveyOf(CaptureInput& input)
{
    Survey survey;
    qltkit::CaptureItem item;
    while (input.Next(item))
    {
        survey.firstNs = survey.messages == 0 ? item.logTimeNs : survey.firstNs;
        survey.lastNs = std::max(survey.lastNs, item.logTimeNs);
        ++survey.messages;
        ++survey.topics[std::string(item.topic)];
        if (item.kind == Kind::Report)
        {
            AddReport(survey, item.sequence);
        }
        else if (item.kind == Kind::Event)
        {
            AddEvent(survey, item);
        }
    }
    return survey;
}

std::string Date(std::uint64_t unixNs)
{
    const auto seconds = static_cast<std::time_t>(unixNs / 1000000000);
    char text[64] = {};
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", std::gmtime(&seconds));
    return text;
}

void PrintLine(const std::string& name, const std::string& text)
{
    std::printf("  %-18s %s\n", name.c_str(), text.c_str());
}

void PrintMetadata(const CaptureInput::Metadata& metadata)
{
    for (const auto& [record, entries] : metadata)
    {
        const std::string prefix = record == "capture" ? "" : record + '.';
        for (const auto& [key, value] : entries)
        {
            PrintLine(prefix + key, value);
        }
    }
}

int PrintInfo(const std::string& path)
{
    CaptureInput input(path);
    const Survey survey = SurveyOf(input);
    const double seconds = static_cast<double>(survey.lastNs - survey.firstNs) / 1e9;
    std::printf("%s: %llu bytes, %llu messages, %.3f s\n", path.c_str(),
                static_cast<unsigned long long>(std::filesystem::file_size(path)),
                static_cast<unsigned long long>(survey.messages), seconds);
    if (qltkit::IsCapture(path) && survey.messages != 0)
    {
        PrintLine("began", Date(survey.firstNs));
    }
    PrintMetadata(input.GetMetadata());
    for (const auto& [topic, count] : survey.topics)
    {
        PrintLine(topic, std::to_string(count) + (count == 1 ? " message" : " messages"));
    }
    if (survey.reports != 0)
    {
        PrintLine("reports", std::to_string(survey.reports) + ", sequence " +
                                 std::to_string(survey.firstSequence) + " to " +
                                 std::to_string(survey.lastSequence) + ", " +
                                 std::to_string(survey.lostReports) + " lost on the way");
    }
    for (const std::string& event : survey.events)
    {
        PrintLine("event", event);
    }
    if (survey.eventCount > MAX_EVENTS)
    {
        PrintLine("event", "and " + std::to_string(survey.eventCount - MAX_EVENTS) + " more");
    }
    for (const qltkit::CaptureProblem& problem : input.Problems())
    {
        std::fprintf(stderr, "qlt: %s: %s\n", path.c_str(), problem.text.c_str());
    }
    return input.Problems().empty() ? 0 : 1;
}

/// Reads all of a capture, and collects its reports.
qltkit::Recording ReadAll(const std::string& path, std::uint64_t& messages)
{
    CaptureInput input(path);
    std::vector<qlt::SensorReport> reports;
    for (qltkit::CaptureItem item; input.Next(item); ++messages)
    {
        if (item.kind == Kind::Report)
        {
            reports.push_back(item.report);
        }
    }
    qltkit::Recording recording;
    if (!reports.empty())
    {
        recording = qltkit::RecordingOf(std::move(reports));
    }
    recording.problems = input.Problems();
    return recording;
}

int Check(const std::string& path)
{
    if (!qltkit::IsCapture(path))
    {
        const qltkit::Recording recording = qltkit::LoadRecording(path);
        const bool isWhole = ReportFaults(recording, path);
        std::printf("%s: %zu whole reports\n", path.c_str(), recording.reports.size());
        return isWhole ? 0 : 1;
    }
    std::uint64_t messages = 0;
    const qltkit::Recording recording = ReadAll(path, messages);
    const bool isWhole = ReportFaults(recording, path);
    std::printf("%s: %llu messages, %zu reports; %s\n", path.c_str(),
                static_cast<unsigned long long>(messages), recording.reports.size(),
                isWhole ? "every checksum is right" : "the file is damaged");
    return isWhole ? 0 : 1;
}

} // namespace

CommandBody AddCapture(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Show or check a capture or a recording");
    CommandLine info = line.Subcommand("info", "Show the contents, and who recorded them when");
    CommandLine check = line.Subcommand("check", "Check every byte and list the faults");
    for (CommandLine subcommand : {info, check})
    {
        subcommand.File("capture", options->capture, "The file").Required();
    }
    return [options, check]
    { return check.IsGiven() ? Check(options->capture) : PrintInfo(options->capture); };
}
