// What the estimator takes from a sensor report.
#pragma once

#include <qlt/Sensors/SensorReport.h>
#include <qltkit/Export.h>
#include <qltkit/Tracking/Rotation.h>

#include <cstdint>

namespace qltkit
{

/// In the tracker's frame: x right, y up, -z forward. At rest the accelerometer reads +g upwards.
struct ImuSample
{
    /// Bit i of `saturated` says that axis i (x, y, z) of the gyroscope is at its limit, so that
    /// the true value is at least the one reported; bit i + 3 says so for the accelerometer.
    static constexpr unsigned GYROSCOPE_BITS = 0;
    static constexpr unsigned ACCELEROMETER_BITS = 3;

    std::uint32_t sequence = 0;
    std::uint32_t timeUs = 0;  // the device's clock, which wraps
    Vector3 gyroscope;         // rad/s
    Vector3 accelerometer;     // m/s^2
    double temperature = 25.0; // degrees Celsius; NaN where it is not known
    std::uint8_t saturated = 0;
};

/// The sample of a headset's report, decoded and calibrated as the tracker does it. Saturation is
/// read from the raw counts. Any thread.
QLTKIT_API ImuSample ReadImuSample(const qlt::SensorReport& report);

} // namespace qltkit
