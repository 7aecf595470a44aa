#pragma once

#include <qlt/Sensors/SensorReport.h>
#include <qltkit/Export.h>
#include <qltkit/Tracking/Rotation.h>

#include <cstdint>

namespace qltkit
{

/// A sample of gyroscope and accelerometer, as the estimator needs it. Vectors are in the tracker's
/// frame: x right, y up, -z forward. At rest the accelerometer shows +g (9.80665 m/s^2) along the
/// upward direction. A plain value.
struct ImuSample
{
    /// The first bit of the gyroscope in `saturated`. Bit i is set when axis i (x, y, z) of the
    /// gyroscope is at its limit. The true magnitude is then at least the reported one.
    static constexpr unsigned GYROSCOPE_BITS = 0;

    /// The first bit of the accelerometer. Bit i + 3 has the same meaning for axis i of the
    /// accelerometer.
    static constexpr unsigned ACCELEROMETER_BITS = 3;

    /// The number that the headset gave the report. It wraps after 2^32 reports.
    std::uint32_t sequence = 0;

    /// The device's clock in microseconds, which wraps after 2^32 microseconds (about 72 minutes).
    std::uint32_t timeUs = 0;

    /// The angular velocity about the body's axes in rad/s, with the bias of the sensor.
    Vector3 gyroscope;

    /// The specific force in m/s^2: the acceleration of the body minus the acceleration of gravity.
    Vector3 accelerometer;

    /// The temperature of the sensor in degrees Celsius, or NaN when it is unknown.
    double temperature = 25.0;

    /// The axes at their limits, one bit for each axis. See GYROSCOPE_BITS and ACCELEROMETER_BITS.
    std::uint8_t saturated = 0;
};

/// Decodes and calibrates a headset's report as the tracker does, with the scales of
/// qlt::HEADSET_SCALES. The saturation comes from the raw counts: an axis is at its limit at 32767
/// and at -32767 or less. The call never fails: every 64 bytes are a report. Any thread.
QLTKIT_API ImuSample ReadImuSample(const qlt::SensorReport& report);

} // namespace qltkit
