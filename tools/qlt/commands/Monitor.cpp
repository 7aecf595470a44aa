#include "commands/Commands.h"

#include <qlt/qlt.h>
#include <qltkit/Headset/ReportFollower.h>

#include "commands/CommandLine.h"
#include "output/Orientation.h"
#include "output/StandardOutput.h"
#include "output/Terminal.h"
#include "source/Interrupt.h"
#include "source/TrackerSource.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <thread>

namespace
{

struct Options
{
    std::string source = "simulator"; // simulator, headset or a file
    double seconds = 0.0;             // 0: until interrupted or the file ends
    std::string filter = "kit";
    std::string csv;      // empty: no file
    bool objects = false; // show the objects of the host service, too
};

using SteadyClock = std::chrono::steady_clock;

/// The last pose of the monitored tracker.
class Latest final : public qltkit::ReportFollower
{
public:
    struct Pose
    {
        std::size_t reports = 0;
        qlt::Quaternion orientation;
        float temperature = 0.0f;
    };

    Latest(OrientationCsv& csv, TrackerSource& source)
        : ReportFollower(source.Recorded(), source.Reports())
        , mCsv(csv)
        , mSource(source)
    {
    }

    void OnTemperatureEvent(float temperature, float) override
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mPose.temperature = temperature;
    }

    Pose Get() const
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mPose;
    }

private:
    void OnReport(std::size_t report, const qlt::Quaternion& core, float time) override
    {
        const qlt::Quaternion orientation = mSource.Follow(report, core);
        const std::lock_guard<std::mutex> lock(mMutex);
        mCsv.Write(report, mSource.TimeUs(report, time), orientation);
        mPose.orientation = orientation;
        mPose.reports = report + 1;
    }

    mutable std::mutex mMutex; // guards the pose
    Pose mPose;
    OrientationCsv& mCsv;
    TrackerSource& mSource;
};

/// Shows a text in one line. On a terminal a new text replaces the old one; elsewhere each text
/// gets its own line.
class Display
{
public:
    std::chrono::milliseconds Period() const
    {
        return std::chrono::milliseconds(mTerminal ? 50 : 1000);
    }

    /// Returns false when the text reaches no reader any more.
    bool Show(const std::string& text)
    {
        if (!mTerminal)
        {
            std::printf("%s\n", text.c_str());
            return FlushStandardOutput();
        }
        // Overwrite the old text with spaces, because not every console knows the escape sequence
        // for that.
        std::printf("\r%-*s", static_cast<int>(mWidth), text.c_str());
        mWidth = text.size();
        return FlushStandardOutput();
    }

    ~Display()
    {
        if (mWidth != 0)
        {
            std::printf("\n");
        }
    }

private:
    const bool mTerminal = StandardOutputIsTerminal();
    std::size_t mWidth = 0;
};

std::string Describe(const Latest::Pose& pose, std::size_t newReports, double elapsedS,
                     double intervalS)
{
    if (pose.reports == 0)
    {
        return "no report yet";
    }
    std::array<char, 96> head{};
    std::snprintf(head.data(), head.size(), "%6.1f s %5.0f reports/s %5.1f C  ", elapsedS,
                  static_cast<double>(newReports) / intervalS,
                  static_cast<double>(pose.temperature));
    return head.data() + FormatOrientation(pose.orientation);
}

/// Describes the first objects that have a pose. The tracker does not tell how many objects there
/// are.
std::string DescribeObjects(const qlt::Tracker& tracker)
{
    constexpr std::uint64_t SHOWN_OBJECTS = 8;
    std::string text;
    for (std::uint64_t i = 0; i < SHOWN_OBJECTS; ++i)
    {
        const qlt::Vec3 p = tracker.GetObjectPosition(i);
        const qlt::Quaternion q = tracker.GetObjectOrientation(i);
        if (p.IsZero() && q.w() == 1.0f)
        {
            continue;
        }
        std::array<char, 128> position{};
        std::snprintf(position.data(), position.size(), "  object %u at %.3f %.3f %.3f m ",
                      static_cast<unsigned>(i), static_cast<double>(p.x()),
                      static_cast<double>(p.y()), static_cast<double>(p.z()));
        text += position.data() + FormatAngles(q);
    }
    return text.empty() ? "  no objects" : text;
}

/// Shows `latest` until the time is over, the recording has ended or the user stops the command.
void Watch(TrackerSource& source, const Latest& latest, const Options& options)
{
    using Seconds = std::chrono::duration<double>;
    Display display;
    const SteadyClock::time_point start = SteadyClock::now();
    SteadyClock::time_point due = start + display.Period();
    SteadyClock::time_point shown = start;
    std::size_t shownReports = 0;
    bool over = false;
    while (!over)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const SteadyClock::time_point now = SteadyClock::now();
        const double elapsedS = Seconds(now - start).count();
        over = Interrupted() || latest.Ended() || source.IsOver() ||
               (options.seconds > 0.0 && elapsedS >= options.seconds);
        if (now >= due || (over && shown == start))
        {
            const Latest::Pose pose = latest.Get();
            const double intervalS = Seconds(now - shown).count();
            const bool isSeen =
                display.Show(Describe(pose, pose.reports - shownReports, elapsedS, intervalS) +
                             (options.objects ? DescribeObjects(source.Get()) : ""));
            over = over || !isSeen;
            shownReports = pose.reports;
            shown = now;
            due += display.Period();
        }
    }
}

int Run(const Options& options)
{
    OrientationCsv csv(options.csv);
    TrackerSource source(options.source, options.filter);
    CatchInterrupts();
    Latest latest(csv, source);
    qlt::Tracker& tracker = source.Get();
    tracker.AddListener(latest);
    tracker.Start();
    Watch(source, latest, options);
    tracker.Stop();
    tracker.RemoveListener(latest);
    csv.Close();
    return source.ExitCode();
}

} // namespace

CommandBody AddMonitor(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Show a tracker's orientation live");
    line.Source(options->source);
    line.Filter(options->filter);
    line.Seconds(options->seconds, "Stop after this number of seconds");
    line.File("--csv", options->csv, "Write every orientation to this file");
    line.Flag("--objects", options->objects,
              "Show the first objects that the host service tracks, too");
    line.AfterParsing([options]
                      { RequireDistinct({FileOfSource(options->source)}, {options->csv}); });
    return [options] { return Run(*options); };
}
