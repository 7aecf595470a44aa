// Recordings of real sensors, through a real headset tracker.
#include "Sensors/SensorReport.h"

#include "fakes/PlainFusion.h"
#include "fakes/ScriptedHeadset.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

namespace
{

constexpr double DEG_PER_RAD = 57.29577951308232;

using Reports = std::vector<ScriptedUsbHost::Report>;

/// By the device, when the clock of the fusion was zero a millisecond before the first report.
std::int64_t TimeNs(const Reports& reports, std::size_t i)
{
    const auto us = [](const auto& r) { return r[4] + 256 * (r[5] + 256 * (r[6] + 256 * r[7])); };
    return (us(reports[i]) - us(reports[0]) + 1000) * std::int64_t(1000);
}

/// A signed field, read apart from the library's decoder.
double Count(const ScriptedUsbHost::Report& report, std::size_t offset)
{
    const int value = report[offset] + 256 * report[offset + 1];
    return value < 32768 ? value : value - 65536;
}

/// One step of the filter in double precision, with what decoding and calibration mean, not how
/// they round.
void StepExactly(plain::Fusion<double>& fusion, const ScriptedUsbHost::Report& r,
                 std::int64_t timeNs)
{
    const double max[] = {0.899628, 0.891145, 0.83435};
    const double min[] = {-0.911915, -0.933461, -0.999473};
    const double drift[] = {-0.001826629, -0.005334, -0.00497886};
    const double raw[] = {-Count(r, 18), Count(r, 16), Count(r, 20)};
    const double pull[] = {-Count(r, 24), Count(r, 22), Count(r, 26)};
    double g[3];
    double a[3];
    for (int i = 0; i < 3; ++i)
    {
        g[i] = raw[i] * 1000.0 / 32768.0 / DEG_PER_RAD - drift[i];
        a[i] = (pull[i] / 8192.0 - (max[i] + min[i]) / 2.0) * (max[i] - min[i]) / 2.0;
    }
    fusion.Step({a[0], a[1], a[2]}, {g[0], g[1], g[2]}, timeNs);
}

/// The angle between two orientations, accurate for a small one, too.
double DifferenceDeg(const qlt::Quaternion& a, const plain::Rotation<double>& b)
{
    const auto d = plain::Product(plain::Rotation<double>{b.w, -b.x, -b.y, -b.z},
                                  plain::Rotation<double>{a.w(), a.x(), a.y(), a.z()});
    return 2.0 * std::atan2(std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z), std::abs(d.w)) *
           DEG_PER_RAD;
}

/// Has each report followed by the orientation of the plain filter to the bit, and every hundredth
/// by that of exact arithmetic within 0.005 degrees.
void ExpectPlainFilter(const Reports& reports)
{
    std::size_t count = 0;
    plain::Fusion<float> plain;
    plain::Fusion<double> exact;
    std::size_t differences = 0;
    double worstDeg = 0.0;
    ScriptedHeadset headset;
    headset.clock.nowNs = TimeNs(reports, 0);
    OrientationListener listener;
    listener.call = [&](const qlt::Quaternion& q)
    {
        const std::size_t i = count++;
        const auto sample = qlt::DecodeSensorReport(reports[i], qlt::HEADSET_SCALES);
        const qlt::Vec3& a = sample.accelerometer;
        const qlt::Vec3& g = sample.gyroscope;
        plain.Step({a.x(), a.y(), a.z()}, {g.x(), g.y(), g.z()}, TimeNs(reports, i));
        StepExactly(exact, reports[i], TimeNs(reports, i));
        differences += std::memcmp(&q, &plain.orientation, 16) == 0 ? 0 : 1;
        worstDeg = std::max(worstDeg, i % 100 == 0 ? DifferenceDeg(q, exact.orientation) : 0.0);
        headset.clock.nowNs = TimeNs(reports, std::min(i + 1, reports.size() - 1));
    };
    headset.Start(listener);
    for (const auto& report : reports)
    {
        headset.host.QueueRead(report);
    }
    headset.host.WaitForIdle();
    headset.End();
    EXPECT_EQ(differences, 0u);
    EXPECT_LT(worstDeg, 0.005);
    EXPECT_EQ(count, reports.size());
}

} // namespace

// How far they are from the truth is what replaying with the command tells.
TEST(RecordingTest, EveryOrientationIsThatOfTheFilter)
{
    const char* folder = std::getenv("QLT_RECORDINGS");
    for (const std::string name :
         {"slow_rotation_breaks", "slow_translation", "fast_rotation", "headset_shake"})
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
        ExpectPlainFilter(reports);
    }
}
