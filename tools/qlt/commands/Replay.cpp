#include "commands/Commands.h"

#include <qltkit/Headset/ReportFollower.h>

#include "commands/OptionChecks.h"
#include "output/Orientation.h"
#include "output/Terminal.h"
#include "source/RecordingFaults.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <future>
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
    bool json = false;
};

using SteadyClock = std::chrono::steady_clock;

/// Keeps every orientation of a replay and notices its end.
class Collector final : public qltkit::ReportFollower
{
public:
    Collector(const qltkit::RecordingTracker& tracker, std::size_t reports)
        : ReportFollower(&tracker, reports)
        , mReports(reports)
    {
        orientations.reserve(reports);
    }

    /// Waits for the last report and returns the moment when it was done.
    SteadyClock::time_point WaitForEnd() { return mEnd.get_future().get(); }

    std::vector<qlt::Quaternion> orientations;

private:
    void OnReport(std::size_t report, const qlt::Quaternion& orientation, float) override
    {
        orientations.push_back(orientation);
        if (report + 1 == mReports)
        {
            mEnd.set_value(SteadyClock::now());
        }
    }

    const std::size_t mReports;
    std::promise<SteadyClock::time_point> mEnd;
};

struct Result
{
    std::vector<qlt::Quaternion> orientations;
    double seconds = 0.0; // from the start of tracking to the last event
    std::optional<double> inclinationRmseDeg;
};

Result Replay(const qltkit::Recording& recording)
{
    qltkit::RecordingPlayer player(recording, qltkit::RecordingPlayer::Pace::Fastest);
    qltkit::RecordingTracker tracker(player);
    Collector collector(tracker, recording.reports.size());
    tracker.AddListener(collector);
    const SteadyClock::time_point start = SteadyClock::now();
    tracker.Start();
    const std::chrono::duration<double> elapsed = collector.WaitForEnd() - start;
    tracker.Stop();
    tracker.RemoveListener(collector);
    player.Close();
    return {std::move(collector.orientations), elapsed.count(), {}};
}

void WriteCsv(OrientationCsv& csv, const qltkit::Recording& recording, const Result& result)
{
    for (std::size_t i = 0; i < result.orientations.size(); ++i)
    {
        csv.Write(i, recording.timesUs[i], result.orientations[i]);
    }
    csv.Close();
}

void PrintJson(const Result& result)
{
    const auto reports = result.orientations.size();
    nlohmann::ordered_json json;
    json["reports"] = reports;
    json["seconds"] = result.seconds;
    json["reports_per_second"] = static_cast<double>(reports) / result.seconds;
    json["inclination_rmse_deg"] = nullptr;
    if (result.inclinationRmseDeg)
    {
        json["inclination_rmse_deg"] = *result.inclinationRmseDeg;
    }
    std::cout << json.dump() << '\n';
}

void PrintText(const std::string& path, const qltkit::Recording& recording, const Result& result)
{
    const auto reports = static_cast<double>(result.orientations.size());
    const double recorded = recording.DurationS();
    std::printf("%s: %zu reports, %.3f s\n", path.c_str(), result.orientations.size(), recorded);
    std::printf("orientation %s\n", FormatOrientation(result.orientations.back()).c_str());
    std::printf("%.0f reports per second, %.0f times real time\n", reports / result.seconds,
                recorded / result.seconds);
    if (result.inclinationRmseDeg)
    {
        std::printf("inclination RMSE %.3f deg\n", *result.inclinationRmseDeg);
    }
}

int Run(const Options& options)
{
    OrientationCsv csv(options.csv);
    const qltkit::Recording recording = qltkit::LoadRecording(options.recording);
    const bool whole = ReportFaults(recording, options.recording);
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
        result = Replay(recording);
    }
    if (!options.truth.empty())
    {
        result.inclinationRmseDeg = InclinationRmseDeg(truth, result.orientations);
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

CommandBody AddReplay(CLI::App& command)
{
    auto options = std::make_shared<Options>();
    command.description("Run a recording through the headset tracker, as fast as it goes");
    RequireName(command.add_option("recording", options->recording,
                                   "64-byte sensor reports, one after another"))
        ->required();
    RequireName(
        command.add_option("--truth", options->truth, "Measured orientations to compare with"));
    RequireName(command.add_option("--csv", options->csv,
                                   "Write the orientation after every report to this file"));
    command.add_flag("--json", options->json, "Print one JSON object and nothing else");
    command.callback(
        [options] {
            RequireDistinct({options->recording, options->truth}, {options->csv});
        });
    return [options] { return Run(*options); };
}
