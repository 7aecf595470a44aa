// Orientations as the command prints, writes and compares them.
#pragma once

#include <qlt/Math/Quaternion.h>

#include "output/OutputFile.h"

#include <cstddef>
#include <string>
#include <vector>

/// "yaw -1.4 pitch 0.2 roll 0.2 deg": turns about y, then x, then z.
std::string FormatAngles(const qlt::Quaternion& q);

/// "w 0.999920 x 0.002016 y -0.012380 z 0.001892  " and the angles.
std::string FormatOrientation(const qlt::Quaternion& q);

/// A CSV file of orientations, "report,time_us,qw,qx,qy,qz", nine significant digits.
class OrientationCsv
{
public:
    /// std::runtime_error when the file cannot be created. An empty path writes nothing.
    explicit OrientationCsv(const std::string& path);

    void Write(std::size_t report, long long timeUs, const qlt::Quaternion& q);

    /// std::runtime_error when something was not written, a full disk for one.
    void Close();

private:
    OutputFile mFile;
};

/// One row of a truth file: the measured orientation after a report.
struct TruthRow
{
    std::size_t report = 0;
    double timeUs = 0.0;
    bool valid = false;
    double w = 0.0;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// Reads "report,time_us,valid,moving,qw,qx,qy,qz" rows; std::runtime_error naming the file and the
/// line when it cannot.
std::vector<TruthRow> LoadTruth(const std::string& path);

/// Root mean square, in degrees, of the angle between the two world-up directions in the body
/// frame, over the valid rows from 5 s after the start. `orientations[i]` is the one after report
/// i. std::runtime_error when no row counts.
double InclinationRmseDeg(const std::vector<TruthRow>& truth,
                          const std::vector<qlt::Quaternion>& orientations);
