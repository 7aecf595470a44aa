#include "Commands.h"

#include "SoftwareHeadset.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace
{

/// A truth row is written for every so many reports.
constexpr long TRUTH_STEP = 10;

std::ofstream Create(const std::string& path)
{
    std::ofstream file(path, std::ios::binary); // the same line ends on every system
    if (!file)
    {
        throw std::runtime_error("cannot write " + path);
    }
    return file;
}

void Close(std::ofstream& file, const std::string& path)
{
    file.close();
    if (!file)
    {
        throw std::runtime_error("cannot write all of " + path);
    }
}

void WriteTruth(std::ofstream& file, long index, const SoftwareHeadset::Sample& sample)
{
    const auto& q = sample.orientation;
    std::array<char, 128> row{};
    std::snprintf(row.data(), row.size(), "%ld,%lu,1,%d,%.6f,%.6f,%.6f,%.6f\n", index,
                  static_cast<unsigned long>(sample.timeUs), sample.moving ? 1 : 0, q[0], q[1],
                  q[2], q[3]);
    file << row.data();
}

} // namespace

int RunSynthesize(const SynthesizeOptions& options)
{
    const long reports = std::lround(options.seconds * 1000.0);
    SoftwareHeadset headset(options.seed, options.ideal);
    std::ofstream recording = Create(options.recording);
    std::ofstream truth;
    if (!options.truth.empty())
    {
        truth = Create(options.truth);
        truth << "report,time_us,valid,moving,qw,qx,qy,qz\n";
    }
    for (long i = 0; i < reports; ++i)
    {
        const SoftwareHeadset::Sample sample = headset.Next();
        recording.write(reinterpret_cast<const char*>(sample.report.data()),
                        static_cast<std::streamsize>(sample.report.size()));
        if (truth.is_open() && i % TRUTH_STEP == 0)
        {
            WriteTruth(truth, i, sample);
        }
    }
    Close(recording, options.recording);
    if (truth.is_open())
    {
        Close(truth, options.truth);
    }
    std::printf("%s: %ld reports, seed %llu\n", options.recording.c_str(), reports,
                static_cast<unsigned long long>(options.seed));
    return 0;
}
