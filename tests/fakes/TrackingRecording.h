// Real sensor recordings with the measured orientation, and the error of an estimate.
#pragma once

#include <qltkit/Tracking/ImuSample.h>

#include "Tracking/Angles.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace tracking
{

using qltkit::AngleBetween;
using qltkit::HeadingBetween;
using qltkit::InclinationBetween;
using qltkit::Rotation;
using qltkit::Vector3;

constexpr double DEGREES = qltkit::DEGREES_PER_RADIAN;

/// Orientations over time. The times are in microseconds and do not wrap.
struct Series
{
    std::vector<double> timesUs;
    std::vector<Rotation> values;

    void Append(double timeUs, const Rotation& q)
    {
        timesUs.push_back(timeUs);
        values.push_back(q);
    }

    /// Interpolates the orientation. False outside the recording and in gaps of more than 50 ms.
    bool At(double timeUs, Rotation& q) const
    {
        const auto next = std::lower_bound(timesUs.begin(), timesUs.end(), timeUs - 1e-3);
        const auto i = static_cast<std::size_t>(next - timesUs.begin());
        if (next == timesUs.end() || (i == 0 && *next > timeUs + 1e-3))
        {
            return false;
        }
        q = values[i];
        if (*next > timeUs + 1e-3)
        {
            const double gap = *next - timesUs[i - 1];
            const Vector3 turn = qltkit::RotationVector(values[i - 1].Conjugate() * q);
            q = values[i - 1] * qltkit::RotationBy(turn * ((timeUs - timesUs[i - 1]) / gap));
            return gap <= 50000.0;
        }
        return true;
    }
};

struct Recording
{
    std::string name;
    double lagUs = 0.0; // the delay of the samples after the truth
    std::vector<qlt::SensorReport> reports;
    std::vector<qltkit::ImuSample> samples;
    std::vector<double> timesUs; // the times of the samples
    Series truth;
    double truthBeginUs = 0.0; // the time of the first row, measured or not
};

/// A recording, and the result of the best published filter on it, which is VQF without
/// magnetometer. The result is the RMS error of the inclination in degrees and the drift of the
/// heading in degrees per minute.
struct PublishedFigures
{
    const char* name;
    double inclinationDeg;
    double driftDegPerMin;
    bool saturated; // the sensors saturate for long, so VQF has a large error
};

constexpr PublishedFigures PUBLISHED[] = {
    {"slow_rotation_breaks", 0.372, -1.2, false},
    {"slow_rotation_from_rest", 0.331, -0.9, false},
    {"fast_rotation", 0.552, 20.1, false},
    {"fast_rotation_saturated", 11.207, 29.0, true},
    {"slow_translation", 0.275, 2.0, false},
    {"knocked_translation", 0.537, -16.7, false},
    {"fast_translation", 0.860, 25.4, false},
    {"hard_translation_saturated", 17.078, -20.9, true},
    {"combined_motion", 0.763, 11.4, false},
    {"headset_shake", 5.097, -4.7, false},
};

inline std::string RecordingsFolder()
{
    const char* folder = std::getenv("QLT_RECORDINGS");
    return folder != nullptr ? folder : ".";
}

/// The result has no reports when the file is missing.
inline Recording LoadRecording(const std::string& folder, const std::string& name)
{
    Recording r;
    r.name = name;
    // Both delays are known. The motion capture is early, and the other headset's solver is not.
    r.lagUs = name.rfind("headset_", 0) == 0 ? 0.0 : 3700.0;
    std::ifstream file(folder + "/" + name + ".bin", std::ios::binary);
    for (qlt::SensorReport report; file.read(reinterpret_cast<char*>(report.data()), 64);)
    {
        const qltkit::ImuSample sample = qltkit::ReadImuSample(report);
        const double time = r.samples.empty()
                                ? sample.timeUs
                                : r.timesUs.back() + (sample.timeUs - r.samples.back().timeUs);
        r.reports.push_back(report);
        r.samples.push_back(sample);
        r.timesUs.push_back(time);
    }
    std::ifstream rows(folder + "/" + name + ".csv");
    std::string line;
    for (std::getline(rows, line); std::getline(rows, line);)
    {
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream row(line);
        double time = 0.0;
        int valid = 0;
        Rotation q;
        std::string skipped;
        row >> skipped >> time >> valid >> skipped;
        r.truthBeginUs = r.truthBeginUs == 0.0 ? time : r.truthBeginUs;
        if (valid == 1 && row >> q.w >> q.x >> q.y >> q.z)
        {
            r.truth.Append(time, qltkit::Normalized(q));
        }
    }
    return r;
}

struct Score
{
    double inclinationDeg = 0.0; // root mean square
    double maximumDeg = 0.0;
    double driftDegPerMin = 0.0; // the slope of the straight line through the heading's error
};

/// The errors from five seconds after the first row of the truth.
inline Score ScoreEstimate(const Recording& recording, const Series& estimate)
{
    std::vector<double> minutes;
    std::vector<double> headings;
    double squares = 0.0;
    Score score;
    for (std::size_t i = 0; i < recording.truth.timesUs.size(); ++i)
    {
        const double time = recording.truth.timesUs[i];
        Rotation q;
        if (time < recording.truthBeginUs + 5e6 || !estimate.At(time + recording.lagUs, q))
        {
            continue;
        }
        const double error = InclinationBetween(q, recording.truth.values[i]) * DEGREES;
        squares += error * error;
        score.maximumDeg = std::max(score.maximumDeg, error);
        const double heading = HeadingBetween(q, recording.truth.values[i]) * DEGREES;
        const double last = headings.empty() ? heading : headings.back();
        minutes.push_back(time / 60e6);
        headings.push_back(heading - 360.0 * std::round((heading - last) / 360.0));
    }
    const auto n = static_cast<double>(minutes.size());
    double meanMinute = 0.0;
    double meanHeading = 0.0;
    for (std::size_t i = 0; i < minutes.size(); ++i)
    {
        meanMinute += minutes[i] / n;
        meanHeading += headings[i] / n;
    }
    double together = 0.0;
    double spread = 0.0;
    for (std::size_t i = 0; i < minutes.size(); ++i)
    {
        together += (minutes[i] - meanMinute) * (headings[i] - meanHeading);
        spread += (minutes[i] - meanMinute) * (minutes[i] - meanMinute);
    }
    score.inclinationDeg = std::sqrt(squares / n);
    score.driftDegPerMin = together / spread;
    return score;
}

} // namespace tracking
