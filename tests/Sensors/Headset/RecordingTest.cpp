// Recordings of real sensors, through a real headset tracker.
#include <qlt/Sensors/SensorReport.h>

#include "fakes/PlainFusion.h"
#include "fakes/ScriptedHeadset.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

namespace
{

using Reports = std::vector<ScriptedUsbHost::Report>;

/// By the device, when the clock of the fusion was zero a millisecond before the first report.
std::int64_t TimeNs(const Reports& reports, std::size_t i)
{
    const auto us = [](const auto& r) { return r[4] + 256 * (r[5] + 256 * (r[6] + 256 * r[7])); };
    return (us(reports[i]) - us(reports[0]) + 1000) * std::int64_t(1000);
}

/// Has each report followed by the orientation of the plain filter, to the bit.
void ExpectPlainFilter(const Reports& reports)
{
    std::size_t count = 0;
    plain::Fusion plain;
    std::size_t differences = 0;
    ScriptedHeadset headset;
    headset.clock.nowNs = TimeNs(reports, 0);
    OrientationListener listener;
    listener.call = [&](const qlt::Quaternion& q)
    {
        const std::size_t i = count++;
        const auto sample = qlt::DecodeSensorReport(reports[i]);
        const qlt::Vec3& a = sample.accelerometer;
        const qlt::Vec3& g = sample.gyroscope;
        plain.Step({a.x(), a.y(), a.z()}, {g.x(), g.y(), g.z()}, TimeNs(reports, i));
        differences += std::memcmp(&q, &plain.orientation, 16) == 0 ? 0 : 1;
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
