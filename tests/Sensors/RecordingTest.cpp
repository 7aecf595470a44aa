// Recordings of real sensors, through a real headset tracker.
#include "Sensors/SensorReport.h"

#include "fakes/PlainFusion.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

namespace
{

using Orientations = std::vector<qlt::Quaternion>;
using Reports = std::vector<ScriptedUsbHost::Report>;

/// By the device, when the clock of the fusion was zero a millisecond before the first report.
std::int64_t TimeNs(const Reports& reports, std::size_t i)
{
    const auto us = [](const auto& r) { return r[4] + 256 * (r[5] + 256 * (r[6] + 256 * r[7])); };
    return (us(reports[i]) - us(reports[0]) + 1000) * std::int64_t(1000);
}

/// The orientation after each report, which is that of the plain filter.
Orientations Replay(const Reports& reports)
{
    Orientations orientations;
    plain::Fusion plain;
    std::size_t differences = 0;
    ScriptedHeadset headset;
    headset.clock.nowNs = TimeNs(reports, 0);
    OrientationListener listener;
    listener.call = [&](const qlt::Quaternion& q)
    {
        const std::size_t i = orientations.size();
        const auto sample = qlt::DecodeSensorReport(reports[i], qlt::HEADSET_SCALES);
        const qlt::Vec3& a = sample.accelerometer;
        const qlt::Vec3& g = sample.gyroscope;
        plain.Step({a.x(), a.y(), a.z()}, {g.x(), g.y(), g.z()}, TimeNs(reports, i));
        differences += std::memcmp(&q, &plain.orientation, 16) == 0 ? 0 : 1;
        orientations.push_back(q);
        headset.clock.nowNs = TimeNs(reports, std::min(i + 1, reports.size() - 1));
    };
    headset.Start(listener);
    for (const auto& report : reports)
    {
        headset.host.QueueRead(report);
    }
    headset.host.WaitForIdleRead();
    headset.End();
    EXPECT_EQ(differences, 0u);
    EXPECT_EQ(orientations.size(), reports.size());
    return orientations;
}

/// The root of the mean square against the motion capture, without the first five seconds.
double InclinationRmseDeg(const std::string& path, const Orientations& orientations)
{
    std::ifstream csv(path);
    double sum = 0.0;
    int rows = 0;
    for (std::string line; std::getline(csv, line);)
    {
        unsigned long report = 0;
        plain::Rotation truth;
        if (std::sscanf(line.c_str(), "%lu,%*d,1,%*d,%f,%f,%f,%f", &report, &truth.w, &truth.x,
                        &truth.y, &truth.z) == 5 &&
            report >= 5000) // of a millisecond each
        {
            const qlt::Quaternion& q = orientations.at(report);
            const plain::Vector up = plain::Rotated(plain::Inverse(truth), {0, 1, 0});
            const plain::Vector g = plain::Rotated({q.w(), q.x(), q.y(), q.z()}, up);
            const auto error = static_cast<double>(std::atan2(std::hypot(g.x, g.z), g.y));
            sum += error * error;
            ++rows;
        }
    }
    return std::sqrt(sum / rows) * 57.29577951308232;
}

} // namespace

TEST(RecordingTest, EveryOrientationIsThatOfThePlainFilterWithItsInclinationError)
{
    const std::pair<std::string, double> inclinationRmsesDeg[] = {
        // measured once
        {"slow_rotation_breaks", 0.795},
        {"slow_translation", 2.447},
        {"fast_rotation", 2.017},
        {"headset_shake", 0.0}}; // whose truth is not to be trusted
    const char* folder = std::getenv("QLT_RECORDINGS");
    for (const auto& [name, inclinationRmseDeg] : inclinationRmsesDeg)
    {
        const std::string path = std::string(folder != nullptr ? folder : ".") + "/" + name;
        SCOPED_TRACE(path);
        std::ifstream file(path + ".bin", std::ios::binary);
        Reports reports;
        for (Reports::value_type r; file.read(reinterpret_cast<char*>(r.data()), 64);)
        {
            reports.push_back(r);
        }
        if (reports.empty())
        {
            GTEST_SKIP() << "there is no recording " << path << ".bin";
        }
        const Orientations orientations = Replay(reports);
        if (inclinationRmseDeg > 0.0)
        {
            EXPECT_NEAR(InclinationRmseDeg(path + ".csv", orientations), inclinationRmseDeg, 0.01);
        }
    }
}
