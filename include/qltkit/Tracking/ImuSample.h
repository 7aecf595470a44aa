#pragma once

#include <qlt/Sensors/SensorReport.h>
#include <qltkit/Export.h>
#include <qltkit/Tracking/Rotation.h>

#include <cstdint>

namespace qltkit
{

/// A sample of gyroscope and accelerometer, as the estimator needs it. Vectors are in the tracker's
/// frame: x right, y up, -z forward. At rest the accelerometer shows +g along the upward direction.
struct ImuSample
{
    /// Bit i of `saturated` is set when axis i (x, y, z) of the gyroscope is at its limit. The true
    /// magnitude is then at least the reported one. Bit i + 3 has the same meaning for the
    /// accelerometer.
    static constexpr unsigned GYROSCOPE_BITS = 0;
    static constexpr unsigned ACCELEROMETER_BITS = 3;

    std::uint32_t sequence = 0;
    std::uint32_t timeUs = 0;  // the device's clock, which wraps after 2^32 microseconds
    Vector3 gyroscope;         // rad/s
    Vector3 accelerometer;     // m/s^2
    double temperature = 25.0; // degrees Celsius; NaN when it is unknown
    std::uint8_t saturated = 0;
};

/// Decodes and calibrates a headset's report as the tracker does. The saturation comes from the raw
/// counts. Any thread.
QLTKIT_API ImuSample ReadImuSample(const qlt::SensorReport& report);

} // namespace qltkit
