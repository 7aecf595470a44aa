// Recordings of real sensors, through a real headset tracker.
#include <qlt/Sensors/Hmd.h>

#include "fakes/PlainFusion.h"
#include "fakes/RecordingHost.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace
{

constexpr double DEG_PER_RAD = 57.29577951308232;

struct Recording
{
    const char* name;
    double inclinationRmseDeg; // measured once against the motion capture; 0: not to be trusted
};

std::ostream& operator<<(std::ostream& out, const Recording& recording)
{
    return out << recording.name;
}

/// A signed 16-bit or an unsigned 32-bit field, read independently of the library's decoder.
double Count(const RecordingHost::Report& report, std::size_t offset)
{
    const int value = report[offset] + 256 * report[offset + 1];
    return value < 32768 ? value : value - 65536;
}

std::uint32_t TimeUs(const RecordingHost::Report& report)
{
    return report[4] + 256u * (report[5] + 256u * (report[6] + 256u * report[7]));
}

/// The filter in double precision, fed with what decoding and calibration mean, not how they round.
std::vector<plain::Rotation<double>>
ExactOrientations(const std::vector<RecordingHost::Report>& reports,
                  const std::vector<std::int64_t>& timesNs)
{
    const double max[] = {0.899628, 0.891145, 0.83435};
    const double min[] = {-0.911915, -0.933461, -0.999473};
    const double drift[] = {-0.001826629, -0.005334, -0.00497886};
    const double radPerCount = 1000.0 / 32768.0 / DEG_PER_RAD;
    plain::Fusion<double> fusion;
    fusion.lastTimeNs = timesNs.front() - 1000000;
    std::vector<plain::Rotation<double>> orientations;
    for (std::size_t i = 0; i < reports.size(); ++i)
    {
        const auto& r = reports[i];
        const double raw[] = {-Count(r, 18), Count(r, 16), Count(r, 20)};
        const double pull[] = {-Count(r, 24), Count(r, 22), Count(r, 26)};
        double g[3];
        double a[3];
        for (int axis = 0; axis < 3; ++axis)
        {
            g[axis] = raw[axis] * radPerCount - drift[axis];
            a[axis] = (pull[axis] / 8192.0 - (max[axis] + min[axis]) / 2.0) *
                      (max[axis] - min[axis]) / 2.0;
        }
        fusion.Step({a[0], a[1], a[2]}, {g[0], g[1], g[2]}, timesNs[i]);
        orientations.push_back(fusion.orientation);
    }
    return orientations;
}

/// The angle of the rotation between two orientations, accurate for the small ones, too.
double DifferenceDeg(const qlt::Quaternion& a, const plain::Rotation<double>& b)
{
    const plain::Rotation<double> inverse{b.w, -b.x, -b.y, -b.z};
    const plain::Rotation<double> q{a.w(), a.x(), a.y(), a.z()};
    const plain::Rotation<double> d = plain::Product(inverse, q);
    return 2.0 * std::atan2(std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z), std::abs(d.w)) *
           DEG_PER_RAD;
}

plain::Vector<double> UpInBody(const plain::Rotation<double>& q)
{
    return plain::Rotated(plain::Rotation<double>{q.w, -q.x, -q.y, -q.z}, {0.0, 1.0, 0.0});
}

class RecordingTest : public testing::TestWithParam<Recording>
{
protected:
    void SetUp() override
    {
        const char* folder = std::getenv("QLT_RECORDINGS");
        mPath = std::string(folder != nullptr ? folder : ".") + "/" + GetParam().name;
        std::ifstream file(mPath + ".bin", std::ios::binary);
        if (!file)
        {
            GTEST_SKIP() << "there is no recording " << mPath << ".bin";
        }
        RecordingHost::Report report{};
        while (file.read(reinterpret_cast<char*>(report.data()), 64))
        {
            reports.push_back(report);
            timesNs.push_back(TimeUs(report) * std::int64_t(1000));
        }
    }

    double InclinationRmseDeg(const std::vector<qlt::Quaternion>& orientations) const
    {
        std::ifstream file(mPath + ".csv");
        std::string line;
        std::getline(file, line);
        double sum = 0.0;
        int rows = 0;
        while (std::getline(file, line))
        {
            unsigned long report = 0;
            long long us = 0;
            plain::Rotation<double> truth;
            if (std::sscanf(line.c_str(), "%lu,%lld,1,%*d,%lf,%lf,%lf,%lf", &report, &us, &truth.w,
                            &truth.x, &truth.y, &truth.z) != 6 ||
                us * 1000 < timesNs.front() + 5000000000)
            {
                continue;
            }
            const qlt::Quaternion& q = orientations.at(report);
            const auto a = UpInBody({q.w(), q.x(), q.y(), q.z()});
            const auto b = UpInBody(truth);
            const double angle = std::acos(std::min(
                1.0, (a.x * b.x + a.y * b.y + a.z * b.z) / (plain::Length(a) * plain::Length(b))));
            sum += angle * angle;
            ++rows;
        }
        return std::sqrt(sum / rows) * DEG_PER_RAD;
    }

    std::vector<RecordingHost::Report> reports;
    std::vector<std::int64_t> timesNs;

private:
    std::string mPath;
};

} // namespace

TEST_P(RecordingTest, EveryHundredthOrientationIsThatOfExactArithmetic)
{
    const std::vector<qlt::Quaternion> orientations = Replay(reports, timesNs);
    const std::vector<plain::Rotation<double>> exact = ExactOrientations(reports, timesNs);
    ASSERT_EQ(orientations.size(), exact.size());
    double worst = 0.0;
    for (std::size_t i = 0; i < exact.size(); i += 100)
    {
        worst = std::max(worst, DifferenceDeg(orientations[i], exact[i]));
    }
    RecordProperty("worst_deg", std::to_string(worst));
    EXPECT_LT(worst, 0.005);
}

TEST_P(RecordingTest, InclinationErrorIsThatOfTheFilter)
{
    if (GetParam().inclinationRmseDeg > 0.0)
    {
        EXPECT_NEAR(InclinationRmseDeg(Replay(reports, timesNs)), GetParam().inclinationRmseDeg,
                    0.01);
    }
}

INSTANTIATE_TEST_SUITE_P(Real, RecordingTest,
                         testing::Values(Recording{"slow_rotation_breaks", 0.795},
                                         Recording{"slow_translation", 2.447},
                                         Recording{"fast_rotation", 2.017},
                                         Recording{"headset_shake", 0.0}),
                         [](const auto& suite) { return std::string(suite.param.name); });
