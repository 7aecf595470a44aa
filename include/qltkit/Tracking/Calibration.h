#pragma once

#include <qltkit/Export.h>
#include <qltkit/Tracking/ImuSample.h>
#include <qltkit/Tracking/Rotation.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>

namespace qltkit
{

/// The errors of the sensors of one headset. An axis shows bias + true value / scale, so the true
/// value is (shown value - bias) * scale. Axes are those of the tracker: x right, y up, -z forward.
/// A Calibrator measures a calibration. The default corrects nothing.
struct Calibration
{
    /// The version of the file format.
    static constexpr std::uint32_t VERSION = 1;

    /// The serial number of the headset, or a name that its owner has chosen. See IsUnitName.
    std::string unit;

    /// The bias of the gyroscope in rad/s.
    Vector3 gyroscopeBias;

    /// The factors for the axes of the gyroscope.
    Vector3 gyroscopeScale{1.0, 1.0, 1.0};

    /// The bias of the accelerometer in m/s^2.
    Vector3 accelerometerBias;

    /// The factors for the axes of the accelerometer.
    Vector3 accelerometerScale{1.0, 1.0, 1.0};

    /// The temperature of the calibration in degrees Celsius. NaN when it is unknown.
    double celsius = std::numeric_limits<double>::quiet_NaN();
};

/// True for 1 to 64 letters, digits, dots, dashes and underscores that do not begin with a dot. So
/// the name of a unit is also the name of a file on every system.
QLTKIT_API bool IsUnitName(std::string_view name);

/// Returns the sample with corrected sensors. Any thread.
QLTKIT_API ImuSample Calibrated(const ImuSample& sample, const Calibration& calibration);

/// Returns the text of a calibration's file: JSON with the version and a checksum. Any thread.
QLTKIT_API std::string CalibrationText(const Calibration& calibration);

/// Reads the text of a calibration's file. `name` stands for the text in errors. Throws Error with
/// one sentence when the text is no calibration, when its version or its checksum is wrong, and
/// when it belongs to another headset than `unit`. Any thread.
QLTKIT_API Calibration ParseCalibration(std::string_view text, const std::string& unit,
                                        const std::string& name = "calibration");

/// Reads a file as ParseCalibration does. Throws Error also when the file cannot be read.
QLTKIT_API Calibration LoadCalibration(const std::filesystem::path& file, const std::string& unit);

} // namespace qltkit
