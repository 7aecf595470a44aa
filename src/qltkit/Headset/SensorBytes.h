// Encodes the values of the sensors into the bytes of a sensor report, and decodes them.
#pragma once

#include <qltkit/Headset/HeadMotion.h>

#include <qlt/Sensors/SensorReport.h>

#include <array>
#include <cstdint>

namespace qltkit
{

using SensorVector = std::array<double, 3>;

/// The values of the sensors in the tracker's frame (x right, y up, -z forward), as the tracker has
/// them after its calibration.
struct SensorValues
{
    /// The gyroscope in rad/s, the accelerometer in g and the magnetometer in gauss.
    std::array<SensorVector, 3> vectors{};
    double temperatureC = 0.0;
};

/// The values of perfect sensors on a head that moves like this, in a room that slowly warms up.
SensorValues SensorsOn(const HeadAngles& head, double milliseconds);

/// The orientation of the head, body to world: w, x, y, z.
std::array<double, 4> OrientationOf(const HeadAngles& head);

/// Stores the values in a report. They are rounded to the sensors' counts and limited to their
/// range.
void PutSensors(qlt::SensorReport& report, const SensorValues& values);

/// The exact inverse of PutSensors: storing the values again gives the same bytes.
SensorValues SensorsIn(const qlt::SensorReport& report);

/// Stores the device's own estimate of its orientation.
void PutOrientation(qlt::SensorReport& report, const std::array<double, 4>& orientation);

constexpr std::size_t SEQUENCE_OFFSET = 0;
constexpr std::size_t DEVICE_TIME_OFFSET = 4;

void PutU32(qlt::SensorReport& report, std::size_t offset, std::uint32_t value);
std::uint32_t U32In(const qlt::SensorReport& report, std::size_t offset);

} // namespace qltkit
