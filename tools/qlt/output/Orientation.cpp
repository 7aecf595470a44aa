#include "output/Orientation.h"

#include <qltkit/Capture/InputFile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace
{

constexpr double DEG_PER_RAD = 57.29577951308232;
constexpr double SETTLING_US = 5e6;

struct Direction
{
    double x;
    double y;
    double z;
};

/// World up in body coordinates: the second row of the rotation matrix of a unit quaternion.
Direction Up(double w, double x, double y, double z)
{
    return {2.0 * (z * w + y * x), 1.0 - 2.0 * (z * z + x * x), 2.0 * (z * y - x * w)};
}

double Angle(const Direction& a, const Direction& b)
{
    const Direction cross = {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    const double sine = std::sqrt(cross.x * cross.x + cross.y * cross.y + cross.z * cross.z);
    return std::atan2(sine, a.x * b.x + a.y * b.y + a.z * b.z);
}

} // namespace

std::string FormatAngles(const qlt::Quaternion& q)
{
    const double w = static_cast<double>(q.w());
    const double x = static_cast<double>(q.x());
    const double y = static_cast<double>(q.y());
    const double z = static_cast<double>(q.z());
    const double yaw = std::atan2(2.0 * (x * z + y * w), 1.0 - 2.0 * (x * x + y * y));
    const double pitch = std::asin(std::clamp(2.0 * (x * w - y * z), -1.0, 1.0));
    const double roll = std::atan2(2.0 * (x * y + z * w), 1.0 - 2.0 * (x * x + z * z));
    return OutputFile::Format("yaw %.1f pitch %.1f roll %.1f deg", yaw * DEG_PER_RAD,
                              pitch * DEG_PER_RAD, roll * DEG_PER_RAD);
}

std::string FormatOrientation(const qlt::Quaternion& q)
{
    return OutputFile::Format("w %.6f x %.6f y %.6f z %.6f  ", static_cast<double>(q.w()),
                              static_cast<double>(q.x()), static_cast<double>(q.y()),
                              static_cast<double>(q.z())) +
           FormatAngles(q);
}

OrientationCsv::OrientationCsv(const std::string& path)
    : mFile(path)
{
    mFile.Write("report,time_us,qw,qx,qy,qz\n");
}

void OrientationCsv::Write(std::size_t report, long long timeUs, const qlt::Quaternion& q)
{
    mFile.Print("%zu,%lld,%.9g,%.9g,%.9g,%.9g\n", report, timeUs, static_cast<double>(q.w()),
                static_cast<double>(q.x()), static_cast<double>(q.y()), static_cast<double>(q.z()));
}

void OrientationCsv::Close() { mFile.Close(); }

std::vector<TruthRow> LoadTruth(const std::string& path)
{
    std::istringstream file(qltkit::ReadInput(path));
    std::string line;
    if (!std::getline(file, line))
    {
        throw std::runtime_error(path + " is empty");
    }
    std::vector<TruthRow> rows;
    for (std::size_t number = 2; std::getline(file, line); ++number)
    {
        TruthRow row;
        int valid = 0;
        const int fields = std::sscanf(line.c_str(), "%zu,%lf,%d,%*d,%lf,%lf,%lf,%lf", &row.report,
                                       &row.timeUs, &valid, &row.w, &row.x, &row.y, &row.z);
        row.valid = valid == 1;
        // A row without a measurement may have no orientation.
        if (fields < (row.valid ? 7 : 3) || (valid != 0 && valid != 1))
        {
            throw std::runtime_error(path + ", line " + std::to_string(number) +
                                     ": not report,time_us,valid,moving,qw,qx,qy,qz");
        }
        rows.push_back(row);
    }
    return rows;
}

double InclinationRmseDeg(const std::vector<TruthRow>& truth,
                          const std::vector<qlt::Quaternion>& orientations)
{
    double sum = 0.0;
    std::size_t count = 0;
    for (const TruthRow& row : truth)
    {
        if (!row.valid || row.report >= orientations.size() ||
            row.timeUs < truth.front().timeUs + SETTLING_US)
        {
            continue;
        }
        const qlt::Quaternion& q = orientations[row.report];
        const double angle = Angle(Up(static_cast<double>(q.w()), static_cast<double>(q.x()),
                                      static_cast<double>(q.y()), static_cast<double>(q.z())),
                                   Up(row.w, row.x, row.y, row.z));
        sum += angle * angle;
        ++count;
    }
    if (count == 0)
    {
        throw std::runtime_error("the truth has no valid row from 5 s on to compare with");
    }
    return std::sqrt(sum / static_cast<double>(count)) * DEG_PER_RAD;
}
