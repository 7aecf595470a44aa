#include "commands/Commands.h"

#include "commands/CommandLine.h"
#include "output/Orientation.h"
#include "output/Terminal.h"
#include "source/RecordingInput.h"
#include "source/Replay.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>

namespace
{

struct Options
{
    std::string recording;
    std::string truth; // empty: no comparison
    std::string csv;   // empty: no file
    std::string filter = "core";
    bool json = false;
};

struct Result
{
    Replayed replayed;
    std::optional<double> inclinationRmseDeg;
};

void WriteCsv(OrientationCsv& csv, const qltkit::Recording& recording, const Result& result)
{
    for (std::size_t i = 0; i < result.replayed.orientations.size(); ++i)
    {
        csv.Write(i, recording.timesUs[i], result.replayed.orientations[i]);
    }
    csv.Close();
}

void PrintJson(const Result& result)
{
    const auto reports = result.replayed.orientations.size();
    nlohmann::ordered_json json;
    json["reports"] = reports;
    json["seconds"] = result.replayed.seconds;
    json["reports_per_second"] = static_cast<double>(reports) / result.replayed.seconds;
    json["inclination_rmse_deg"] = nullptr;
    if (result.inclinationRmseDeg)
    {
        json["inclination_rmse_deg"] = *result.inclinationRmseDeg;
    }
    std::cout << json.dump() << '\n';
}

void PrintText(const std::string& path, const qltkit::Recording& recording, const Result& result)
{
    const auto reports = static_cast<double>(result.replayed.orientations.size());
    const double recorded = recording.DurationS();
    std::printf("%s: %zu reports, %.3f s\n", path.c_str(), result.replayed.orientations.size(),
                recorded);
    std::printf("orientation %s\n", FormatOrientation(result.replayed.orientations.back()).c_str());
    std::printf("%.0f reports per second, %.0f times real time\n",
                reports / result.replayed.seconds, recorded / result.replayed.seconds);
    if (result.inclinationRmseDeg)
    {
        std::printf("inclination RMSE %.3f deg\n", *result.inclinationRmseDeg);
    }
}

int Run(const Options& options)
{
    OrientationCsv csv(options.csv);
    bool whole = true;
    const qltkit::Recording recording = LoadInput(options.recording, whole);
    std::vector<TruthRow> truth;
    if (!options.truth.empty())
    {
        truth = LoadTruth(options.truth);
    }
    Result result;
    {
        std::optional<StandardOutputToError> quiet;
        if (options.json)
        {
            quiet.emplace();
        }
        result.replayed = options.filter == "kit" ? ReplayKit(recording) : ReplayCore(recording);
    }
    if (!options.truth.empty())
    {
        result.inclinationRmseDeg = InclinationRmseDeg(truth, result.replayed.orientations);
    }
    WriteCsv(csv, recording, result);
    if (options.json)
    {
        PrintJson(result);
    }
    else
    {
        PrintText(options.recording, recording, result);
    }
    return whole ? 0 : 1;
}

} // namespace

CommandBody AddReplay(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Run a recording through a filter, as fast as possible");
    line.File("recording", options->recording,
              "A capture, a recording, or a headset script (.json)")
        .Required();
    line.File("--truth", options->truth, "Measured orientations to compare with");
    line.File("--csv", options->csv, "Write the orientation after every report to this file");
    line.Filter(options->filter);
    line.Flag("--json", options->json, "Print one JSON object and nothing else");
    line.AfterParsing(
        [options] {
            RequireDistinct({options->recording, options->truth}, {options->csv});
        });
    return [options] { return Run(*options); };
}
