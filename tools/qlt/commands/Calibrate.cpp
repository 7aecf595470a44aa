#include "commands/Commands.h"

#include <qlt/qlt.h>
#include <qltkit/Headset/ReportTap.h>
#include <qltkit/Headset/ScriptedHeadset.h>
#include <qltkit/Tracking/Calibrator.h>

#include "commands/CommandLine.h"
#include "output/OutputFile.h"
#include "output/StandardOutput.h"
#include "output/Terminal.h"
#include "source/HeadsetSearch.h"
#include "source/Interrupt.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace
{

using qltkit::CalibrationResult;
using qltkit::Calibrator;
using qltkit::Vector3;

struct Options
{
    std::string unit;
    std::string source = "headset"; // headset, or the file of a headset script
    std::string file;               // empty: the unit's name with .json
};

constexpr double DEG_PER_RAD = 57.29577951308232;
constexpr const char* SIDES[] = {"right", "left", "top", "bottom", "back", "front"};

/// Gives the reports to the calibrator.
class Sink final : public qltkit::ReportSink
{
public:
    void OnReport(const qlt::SensorReport& report, std::int64_t) override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mCalibrator.Add(qltkit::ReadImuSample(report));
        mHasReports = true;
    }

    void OnLost(std::int64_t) override {}

    /// Empty before the first report.
    std::optional<Calibrator::Progress> GetProgress() const
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mHasReports ? std::optional(mCalibrator.GetProgress()) : std::nullopt;
    }

    /// Call it when no report can come any more.
    CalibrationResult GetResult() const { return mCalibrator.GetResult(); }

private:
    mutable std::mutex mMutex; // guards the members below
    Calibrator mCalibrator;
    bool mHasReports = false;
};

/// Runs a tracker while the object exists.
class Running
{
public:
    explicit Running(qlt::Hmd& tracker)
        : mTracker(tracker)
    {
        mTracker.Start();
    }

    ~Running() { mTracker.Stop(); }

    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    qlt::Hmd& mTracker;
};

/// Keeps the library's lines about the connection out of the bar. Its errors are still printed.
class QuietLibrary
{
public:
    QuietLibrary()
        : mBefore(qlt::SetLogHandler(&Handle))
    {
    }

    ~QuietLibrary() { qlt::SetLogHandler(mBefore); }

    QuietLibrary(const QuietLibrary&) = delete;
    QuietLibrary& operator=(const QuietLibrary&) = delete;

private:
    static void Handle(qlt::LogLevel level, const char* line)
    {
        if (level == qlt::LogLevel::Error)
        {
            std::fprintf(stderr, "%s\n", line);
        }
    }

    const qlt::LogHandler mBefore;
};

std::string MissingSides(const Calibrator::Progress& progress)
{
    std::string text;
    for (std::size_t side = 0; side < progress.sides.size(); ++side)
    {
        if (!progress.sides[side])
        {
            text += (text.empty() ? "" : ", ") + std::string(SIDES[side]);
        }
    }
    return text;
}

/// Tells the person what to do now.
std::string Instruction(const std::optional<Calibrator::Progress>& progress)
{
    if (!progress)
    {
        return "waiting for the headset";
    }
    switch (progress->step)
    {
    case Calibrator::Step::Done:
        return "done";
    case Calibrator::Step::Rest:
        return progress->isStill ? "do not touch it" : "lay the headset on a table";
    case Calibrator::Step::Sides:
        break;
    }
    const bool isNew = progress->up && !progress->sides[static_cast<std::size_t>(*progress->up)];
    if (isNew)
    {
        return std::string("keep it still, ") + SIDES[static_cast<std::size_t>(*progress->up)] +
               " side up";
    }
    return "turn another side up: " + MissingSides(*progress);
}

/// Shows the bar and the instruction. On a terminal it is one line that changes; elsewhere each new
/// instruction gets a line.
class Bar
{
public:
    ~Bar()
    {
        if (mWidth != 0)
        {
            std::printf("\n");
        }
    }

    void Show(const std::optional<Calibrator::Progress>& progress)
    {
        const std::string instruction = Instruction(progress);
        if (!mTerminal && instruction == mInstruction)
        {
            return;
        }
        mInstruction = instruction;
        constexpr std::size_t LENGTH = 24;
        const double share = progress ? progress->share : 0.0;
        const auto full =
            static_cast<std::size_t>(std::lround(share * static_cast<double>(LENGTH)));
        const std::string line = "[" + std::string(full, '#') + std::string(LENGTH - full, '-') +
                                 OutputFile::Format("] %3.0f %%  ", 100.0 * share) + instruction;
        if (mTerminal)
        {
            std::printf("\r%-*s", static_cast<int>(mWidth), line.c_str());
            mWidth = line.size();
        }
        else
        {
            std::printf("%s\n", line.c_str());
        }
        FlushStandardOutput();
    }

private:
    const bool mTerminal = StandardOutputIsTerminal();
    std::string mInstruction;
    std::size_t mWidth = 0;
};

/// Leads the person through the calibration. `isOver` is true when the source gives no more
/// reports.
template <typename IsOver>
void Lead(const Sink& sink, const IsOver& isOver)
{
    Bar bar;
    for (;;)
    {
        // Ask before GetProgress, so that no report is missed.
        const bool over = isOver() || Interrupted();
        const std::optional<Calibrator::Progress> progress = sink.GetProgress();
        bar.Show(progress);
        if (progress && progress->step == Calibrator::Step::Done)
        {
            return;
        }
        if (over)
        {
            throw std::runtime_error(!progress || progress->step == Calibrator::Step::Rest
                                         ? "the calibration has ended before its rest was over"
                                         : "the calibration has ended without the sides " +
                                               MissingSides(*progress));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

CalibrationResult Measure(const std::string& name)
{
    std::unique_ptr<qltkit::Source> source;
    const qltkit::ScriptedHeadset* script = nullptr;
    if (name == "headset")
    {
        source = qltkit::OpenSource(name);
        SayThatHeadsetIsAwaited();
    }
    else
    {
        auto scripted = std::make_unique<qltkit::ScriptedHeadset>(
            qltkit::LoadHeadsetScript(name), qltkit::ScriptedHeadset::Pace::Fastest);
        script = scripted.get();
        source = std::move(scripted);
    }
    const QuietLibrary quiet;
    Sink sink;
    {
        qltkit::ReportTap tap(*source, *source, sink);
        qlt::Hmd hmd(tap, *source);
        const Running running(hmd);
        Lead(sink, [script] { return script != nullptr && script->IsOver(); });
    }
    return sink.GetResult();
}

void PrintVector(const char* name, const Vector3& v)
{
    std::printf("%-28s%10.4f%10.4f%10.4f\n", name, v.x, v.y, v.z);
}

std::string Verdict(double before, double after)
{
    constexpr double MOST = 100.0; // a larger number says nothing about the sensors
    if (before > MOST * after)
    {
        return OutputFile::Format("better by more than %.0f times", MOST);
    }
    return before > 1.2 * after ? OutputFile::Format("better by %.1f times", before / after)
                                : "was good already";
}

void PrintErrors(const char* name, double before, double after)
{
    std::printf("%-28s%10.4f%10.4f  %s\n", name, before, after, Verdict(before, after).c_str());
}

void Print(const CalibrationResult& result)
{
    const qltkit::Calibration& c = result.calibration;
    std::printf("%-28s%10s%10s%10s\n", "", "x", "y", "z");
    PrintVector("gyroscope bias, deg/s", c.gyroscopeBias * DEG_PER_RAD);
    PrintVector("gyroscope scale", c.gyroscopeScale);
    PrintVector("accelerometer bias, m/s^2", c.accelerometerBias);
    PrintVector("accelerometer scale", c.accelerometerScale);
    std::printf("%-28s%10s%10s\n", "remaining errors, RMS", "before", "after");
    PrintErrors("rate at rest, deg/s", result.before.rate * DEG_PER_RAD,
                result.after.rate * DEG_PER_RAD);
    PrintErrors("gravity on the sides, m/s^2", result.before.gravity, result.after.gravity);
    PrintErrors("vertical after a turn, deg", result.before.tilt * DEG_PER_RAD,
                result.after.tilt * DEG_PER_RAD);
}

int Run(const Options& options)
{
    const std::string name = options.file.empty() ? options.unit + ".json" : options.file;
    OutputFile file(name);
    CatchInterrupts();
    CalibrationResult result = Measure(options.source);
    result.calibration.unit = options.unit;
    Print(result);
    file.Write(CalibrationText(result.calibration));
    file.Close();
    std::printf("%s: the calibration of %s\n", name.c_str(), options.unit.c_str());
    return 0;
}

} // namespace

CommandBody AddCalibrate(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Measure the errors of a headset's sensors, at rest and on its six sides");
    line.Text("unit", options->unit, "The serial number of the headset, or a name for it")
        .Required()
        .Check(
            [](const std::string& name)
            {
                return qltkit::IsUnitName(name)
                           ? std::string()
                           : '"' + name +
                                 "\" is no name of a unit; take up to 64 "
                                 "letters, digits, dots, dashes and underscores";
            });
    line.File("--source", options->source, "headset, or the file of a headset script")
        .ShowDefault();
    line.File("--out", options->file, "The file to write instead of UNIT.json");
    line.AfterParsing(
        [options]
        {
            const std::string& file = options->file;
            RequireDistinct({options->source == "headset" ? "" : options->source},
                            {file.empty() ? options->unit + ".json" : file});
        });
    return [options] { return Run(*options); };
}
