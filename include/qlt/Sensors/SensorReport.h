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

/// The value of one count of each sensor.
struct SensorScales
{
    float gyroscope = 1.0f;
    float accelerometer = 1.0f;
    float magnetometer = 1.0f;
    float temperature = 1.0f;
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
    std::uint32_t sequence = 0;
    double deviceTimeS = 0.0;
    Quaternion quaternion; // the device's own estimate
    Vec3 gyroscope;
    Vec3 accelerometer;
    Vec3 magnetometer;
    float temperature = 0.0f;
    std::uint32_t reservedA = 0;
    std::uint32_t reservedB = 0;
    Vec3 position;
    std::uint32_t reservedC = 0;
    std::uint32_t reservedD = 0;
};

/// Decodes and calibrates a report. Four quaternion counts of zero report the assertion of
/// Quaternion::Normalize and give the zero quaternion. Any thread.
QLT_API SensorSample DecodeSensorReport(const SensorReport& report,
                                        const SensorScales& scales = HEADSET_SCALES);

} // namespace qlt
