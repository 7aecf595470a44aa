#include "commands/Commands.h"

#include <qltkit/Headset/SoftwareHeadset.h>

#include "commands/CommandLine.h"
#include "output/OutputFile.h"
#include "output/Progress.h"
#include "source/Interrupt.h"

#include <cmath>
#include <cstdio>
#include <memory>

namespace
{

struct Options
{
    std::string recording;
    std::string truth; // empty: no file
    double seconds = 30.0;
    std::uint64_t seed = 1;
    bool ideal = false; // the sensors have no bias and no noise
};

/// One truth row is written for this number of reports.
constexpr long TRUTH_STEP = 10;

void WriteTruth(OutputFile& file, long index, const qltkit::SoftwareHeadset::Sample& sample)
{
    const auto& q = sample.orientation;
    file.Print("%ld,%lu,1,%d,%.6f,%.6f,%.6f,%.6f\n", index,
               static_cast<unsigned long>(sample.timeUs), sample.moving ? 1 : 0, q[0], q[1], q[2],
               q[3]);
}

int Run(const Options& options)
{
    const long reports = std::lround(options.seconds * 1000.0);
    qltkit::SoftwareHeadset headset(options.seed, options.ideal);
    OutputFile recording(options.recording);
    OutputFile truth(options.truth);
    CatchInterrupts();
    truth.Write("report,time_us,valid,moving,qw,qx,qy,qz\n");
    long made = 0;
    Progress progress;
    for (; made < reports && !Interrupted(); ++made)
    {
        progress.Show(static_cast<double>(made) / static_cast<double>(reports));
        const qltkit::SoftwareHeadset::Sample sample = headset.Next();
        recording.Write(std::string(sample.report.begin(), sample.report.end()));
        if (made % TRUTH_STEP == 0)
        {
            WriteTruth(truth, made, sample);
        }
    }
    recording.Close();
    truth.Close();
    std::printf("%s: %ld reports, seed %llu\n", options.recording.c_str(), made,
                static_cast<unsigned long long>(options.seed));
    return 0;
}

} // namespace

CommandBody AddSynthesize(CommandLine line)
{
    auto options = std::make_shared<Options>();
    line.Describe("Write the recording of a software headset that turns, nods and rests");
    line.File("recording", options->recording, "The file to write").Required();
    line.File("--truth", options->truth, "Write the true orientations to this file");
    line.Number("--seconds", options->seconds, 0.001, 3600.0, "Length of the recording in seconds")
        .ShowDefault();
    line.Number("--seed", options->seed, 0, std::numeric_limits<std::uint64_t>::max(),
                "Another seed gives another motion")
        .ShowDefault();
    line.Flag("--ideal", options->ideal, "Make sensors without bias and noise");
    line.AfterParsing([options] { RequireDistinct({}, {options->recording, options->truth}); });
    return [options] { return Run(*options); };
}
