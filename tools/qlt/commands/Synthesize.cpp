#include "commands/Commands.h"

#include <qltkit/Headset/SoftwareHeadset.h>

#include "output/OutputFile.h"
#include "source/Interrupt.h"

#include <cmath>
#include <cstdio>

namespace
{

/// A truth row is written for every so many reports.
constexpr long TRUTH_STEP = 10;

void WriteTruth(OutputFile& file, long index, const qltkit::SoftwareHeadset::Sample& sample)
{
    const auto& q = sample.orientation;
    file.Print("%ld,%lu,1,%d,%.6f,%.6f,%.6f,%.6f\n", index,
               static_cast<unsigned long>(sample.timeUs), sample.moving ? 1 : 0, q[0], q[1], q[2],
               q[3]);
}

} // namespace

int RunSynthesize(const SynthesizeOptions& options)
{
    const long reports = std::lround(options.seconds * 1000.0);
    qltkit::SoftwareHeadset headset(options.seed, options.ideal);
    OutputFile recording(options.recording);
    OutputFile truth(options.truth);
    CatchInterrupts();
    truth.Write("report,time_us,valid,moving,qw,qx,qy,qz\n");
    long made = 0;
    for (; made < reports && !Interrupted(); ++made)
    {
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
