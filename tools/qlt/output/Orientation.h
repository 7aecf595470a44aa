// Formats, writes and compares orientations.
#pragma once

#include <qlt/Math/Quaternion.h>

#include "output/OutputFile.h"

#include <cstddef>
#include <string>
#include <vector>

/// Returns for example "yaw -1.4 pitch 0.2 roll 0.2 deg": turns about y, then x, then z.
std::string FormatAngles(const qlt::Quaternion& q);

/// Returns for example "w 0.999920 x 0.002016 y -0.012380 z 0.001892  " and then the angles.
std::string FormatOrientation(const qlt::Quaternion& q);

/// A CSV file of orientations with the columns "report,time_us,qw,qx,qy,qz" and nine significant
/// digits.
class OrientationCsv
{
public:
    /// Throws std::runtime_error when the file cannot be created. With an empty path, all
    /// operations do nothing.
    explicit OrientationCsv(const std::string& path);

    void Write(std::size_t report, long long timeUs, const qlt::Quaternion& q);

    /// Completes the file. Throws std::runtime_error when a write has failed, for example on a full
    /// disk.
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

/// Reads "report,time_us,valid,moving,qw,qx,qy,qz" rows. Throws std::runtime_error with the file
/// and the line when a row is malformed.
std::vector<TruthRow> LoadTruth(const std::string& path);

/// The root mean square, in degrees, of the angle between the two world-up directions in the body
/// frame. Only valid rows later than 5 s after the start count. `orientations[i]` is the
/// orientation after report i. Throws std::runtime_error when no row counts.
double InclinationRmseDeg(const std::vector<TruthRow>& truth,
                          const std::vector<qlt::Quaternion>& orientations);
