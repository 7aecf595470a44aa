// Recordings of real sensors, through a real headset tracker.
#include "fakes/PlainFusion.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>

namespace
{

using Reports = std::vector<ScriptedUsbHost::Report>;
using Exact = plain::Rotation<double>;
using Orientations = std::vector<Exact>;

constexpr double DEG_PER_RAD = 57.29577951308232;

/// Fields, read independently of the library's decoder.
double I16(const ScriptedUsbHost::Report& r, std::size_t offset)
{
    return static_cast<std::int16_t>(r[offset] + 256 * r[offset + 1]);
}

std::int64_t TimeNs(const ScriptedUsbHost::Report& r)
{
    return (r[4] + 256ll * (r[5] + 256ll * (r[6] + 256ll * r[7]))) * 1000;
}

/// After each report, by a clock that goes by their device times.
Orientations Replay(const Reports& reports)
{
    Orientations orientations;
    ScriptedHeadset headset({}, TimeNs(reports[0]) - 1000000);
    headset.clock.nowNs = TimeNs(reports[0]);
    OrientationListener listener;
    listener.call = [&](const qlt::Quaternion& q)
    {
        orientations.push_back({q.w(), q.x(), q.y(), q.z()});
        const std::size_t next = std::min(orientations.size(), reports.size() - 1);
        headset.clock.nowNs = TimeNs(reports[next]);
    };
    headset.Start(listener);
    for (const auto& report : reports)
    {
        headset.host.QueueRead(report);
    }
    headset.host.WaitForIdleRead();
    headset.End();
    return orientations;
}

/// In double precision, from what decoding and calibration mean, not how they round.
Orientations ExactOrientations(const Reports& reports)
{
    const double max[] = {0.899628, 0.891145, 0.83435};
    const double min[] = {-0.911915, -0.933461, -0.999473};
    const double scale = 1000.0 / 32768.0 / DEG_PER_RAD;
    const auto pull = [&](double count, int i)
    { return (count / 8192.0 - (max[i] + min[i]) / 2.0) * (max[i] - min[i]) / 2.0; };
    plain::Fusion<double> fusion;
    fusion.lastTimeNs = TimeNs(reports[0]) - 1000000;
    Orientations orientations;
    for (const auto& r : reports)
    {
        fusion.Step({pull(-I16(r, 24), 0), pull(I16(r, 22), 1), pull(I16(r, 26), 2)},
                    {0.001826629 - I16(r, 18) * scale, 0.005334 + I16(r, 16) * scale,
                     0.00497886 + I16(r, 20) * scale},
                    TimeNs(r));
        orientations.push_back(fusion.orientation);
    }
    return orientations;
}

Exact Inverse(const Exact& q) { return {q.w, -q.x, -q.y, -q.z}; }

/// The angle of a rotation, accurate for the small ones, too.
double AngleDeg(const Exact& q)
{
    return 2.0 * std::atan2(plain::Length<double>({q.x, q.y, q.z}), std::abs(q.w)) * DEG_PER_RAD;
}

/// The root of the mean square against the motion capture, without the first five seconds.
double InclinationRmseDeg(std::ifstream csv, const Orientations& orientations)
{
    double sum = 0.0;
    int rows = 0;
    for (std::string line; std::getline(csv, line);)
    {
        unsigned long report = 0;
        Exact q;
        if (std::sscanf(line.c_str(), "%lu,%*d,1,%*d,%lf,%lf,%lf,%lf", &report, &q.w, &q.x, &q.y,
                        &q.z) == 5 &&
            report >= 5000) // of a millisecond each
        {
            const auto up = plain::Rotated<double>(Inverse(q), {0, 1, 0});
            const auto g = plain::Rotated(orientations.at(report), up);
            const double error = std::acos(std::min(1.0, g.y / plain::Length(g)));
            sum += error * error;
            ++rows;
        }
    }
    return std::sqrt(sum / rows) * DEG_PER_RAD;
}

} // namespace

TEST(RecordingTest, OrientationsAreThoseOfExactArithmeticWithTheFiltersInclinationError)
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
        const Orientations exact = ExactOrientations(reports);
        ASSERT_EQ(orientations.size(), exact.size());
        double worst = 0.0;
        for (std::size_t i = 0; i < exact.size(); ++i)
        {
            worst = std::max(worst, AngleDeg(plain::Product(Inverse(exact[i]), orientations[i])));
        }
        EXPECT_LT(worst, 0.005);
        if (inclinationRmseDeg > 0.0)
        {
            EXPECT_NEAR(InclinationRmseDeg(std::ifstream(path + ".csv"), orientations),
                        inclinationRmseDeg, 0.01);
        }
    }
}
