#include "commands/Commands.h"

#include "commands/CommandLine.h"
#include "output/Orientation.h"
#include "output/OutputFile.h"
#include "report/ReportPage.h"
#include "source/RecordingFaults.h"
#include "source/Replay.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>

namespace
{

struct Options
{
    std::string recording;
    std::string truth; // empty: no truth
    std::string html;  // empty: no page
    double lagMs = 0.0;
};

/// Loads a recording. A file without a report is accepted, because there is a page for it, too.
qltkit::Recording LoadCapture(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path file = path;
    if (std::filesystem::is_regular_file(file, error) && std::filesystem::file_size(file) == 0)
    {
        return {};
    }
    return qltkit::LoadRecording(path);
}

std::vector<qltkit::ComparisonInput::Truth> TruthOf(const std::string& path)
{
    std::vector<qltkit::ComparisonInput::Truth> truth;
    for (const TruthRow& row : LoadTruth(path))
    {
        truth.push_back({row.report, row.valid, {row.w, row.x, row.y, row.z}});
    }
    return truth;
}

std::string Figure(double value)
{
    return std::isfinite(value) ? OutputFile::Format("%10.3f", value) : "         -";
}

void PrintRow(const char* what, double core, double kit)
{
    std::printf("%-36s%s%s\n", what, Figure(core).c_str(), Figure(kit).c_str());
}

void PrintTable(const qltkit::Comparison& c)
{
    std::printf("%-36s%10s%10s\n", "", "core", "kit");
    if (c.hasTruth)
    {
        PrintRow("inclination error, RMS, deg", c.core.inclinationRms, c.kit.inclinationRms);
        PrintRow("inclination error, largest, deg", c.core.inclinationMost, c.kit.inclinationMost);
        PrintRow("heading drift, deg/min", c.core.driftPerMinute, c.kit.driftPerMinute);
    }
    PrintRow("prediction of 20 ms, RMS error, deg", c.core.predictionRms20, c.kit.predictionRms20);
    PrintRow("prediction of 50 ms, RMS error, deg", c.core.predictionRms50, c.kit.predictionRms50);
    std::printf("inclinations apart, RMS, deg        %s\n", Figure(c.differenceRms).c_str());
    std::printf("reports lost %llu, repeated %llu, with an axis at its limit %llu\n",
                static_cast<unsigned long long>(c.counts.lost),
                static_cast<unsigned long long>(c.counts.repeated),
                static_cast<unsigned long long>(c.counts.saturated));
}

std::string FileName(const std::string& path)
{
    return std::filesystem::path(path).filename().string();
}

int Run(const Options& options)
{
    OutputFile html(options.html);
    qltkit::Recording recording = LoadCapture(options.recording);
    bool whole = true;
    qltkit::ComparisonInput input;
    if (!recording.reports.empty())
    {
        whole = ReportFaults(recording, options.recording);
        input.core = ReplayCore(recording).orientations;
    }
    if (!options.truth.empty())
    {
        input.truth = TruthOf(options.truth);
    }
    input.lagSeconds = options.lagMs / 1000.0;
    input.reports = std::move(recording.reports);
    input.timesUs = std::move(recording.playedUs);
    const qltkit::Comparison comparison = qltkit::CompareFilters(input);
    std::printf("%s: %zu reports, %.3f s\n", options.recording.c_str(), input.reports.size(),
                comparison.seconds);
    PrintTable(comparison);
    html.Write(MakeReportPage(comparison, {FileName(options.recording), FileName(options.truth)},
                              input.reports.size()));
    html.Close();
    return whole ? 0 : 1;
}

} // namespace

CommandBody AddCompare(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Compare the core's filter with the kit's estimator on a recording");
    line.File("recording", options->recording, "A capture or a recording").Required();
    line.File("--truth", options->truth, "Measured orientations to compare with");
    line.Number("--lag", options->lagMs, -100.0, 100.0,
                "The delay of the reports after the truth in milliseconds")
        .ShowDefault();
    line.File("--html", options->html, "Write a page for a browser, which works without a network");
    line.AfterParsing(
        [options] {
            RequireDistinct({options->recording, options->truth}, {options->html});
        });
    return [options] { return Run(*options); };
}
