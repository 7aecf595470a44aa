#pragma once

#include <qlt/Export.h>
#include <qlt/Math/MathUtil.h>
#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>

#include <array>
#include <cstdint>

namespace qlt
{

/// The length of a sensor report in bytes.
constexpr std::uint32_t SENSOR_REPORT_SIZE = 64;

/// A sensor report as the headset sends it, little-endian:
///
///     offset  0 u32 sequence          4 u32 device time, us
///             8 4 x i16 quaternion z, w, x, y
///            16 3 x i16 gyroscope    22 3 x i16 accelerometer
///            28 3 x i16 magnetometer 34 i16 temperature
///            36 u32 reserved A       40 u32 reserved B
///            44 3 x i32 position
///            56 u32 reserved C       60 u32 reserved D
using SensorReport = std::array<std::uint8_t, SENSOR_REPORT_SIZE>;

/// The value of one count of each sensor. The defaults leave the counts as they are.
struct SensorScales
{
    /// The value of a count of the gyroscope, in rad/s for the headset.
    float gyroscope = 1.0f;

    /// The value of a count of the accelerometer, in g for the headset.
    float accelerometer = 1.0f;

    /// The value of a count of the magnetometer, in gauss for the headset.
    float magnetometer = 1.0f;

    /// The value of a count of the temperature, in degrees Celsius for the headset.
    float temperature = 1.0f;

    /// The value of a count of the position, in metres for the headset.
    float position = 1.0f;
};

/// The scales of the headset in rad/s, g, gauss, degrees Celsius and metres.
constexpr SensorScales HEADSET_SCALES = {
    MathUtil::Deg2Rad(0.030517578f), // 1000 / 32768 degrees a second
    0.0001220703125f,                // 1 / 8192
    0.00014615609f,                  // 0x3919417A
    0.00390625f,                     // 1 / 256
    0.0001f,
};

/// A decoded and calibrated report in the tracker's frame: x right, y up, -z forward. Gyroscope in
/// rad/s, accelerometer in g, magnetometer in gauss, temperature in degrees Celsius, position in
/// metres.
struct SensorSample
{
    /// The number of the report. It grows by one for each report and wraps after 2^32 reports.
    std::uint32_t sequence = 0;

    /// The device time in seconds. deliberate: it is rounded to single precision, because the
    /// filter takes single precision. After an hour its steps are about 0.25 ms.
    double deviceTimeS = 0.0;

    /// The device's own estimate of the orientation, normalised.
    Quaternion quaternion;

    /// The calibrated angular velocity.
    Vec3 gyroscope;

    /// The calibrated acceleration.
    Vec3 accelerometer;

    /// The magnetic field.
    Vec3 magnetometer;

    /// The temperature of the sensor.
    float temperature = 0.0f;

    /// The first field without a meaning yet, as the headset sends it.
    std::uint32_t reservedA = 0;

    /// The second field without a meaning.
    std::uint32_t reservedB = 0;

    /// The position that the device reports.
    Vec3 position;

    /// The third field without a meaning.
    std::uint32_t reservedC = 0;

    /// The fourth field without a meaning.
    std::uint32_t reservedD = 0;
};

/// Decodes and calibrates a report. Four quaternion counts of zero report the assertion of
/// Quaternion::Normalize and give the zero quaternion. Any thread.
QLT_API SensorSample DecodeSensorReport(const SensorReport& report,
                                        const SensorScales& scales = HEADSET_SCALES);

} // namespace qlt
