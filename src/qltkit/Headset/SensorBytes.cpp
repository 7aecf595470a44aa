#include "Headset/SensorBytes.h"

#include <qlt/Sensors/Params.h>

#include "Headset/Radians.h"

#include <algorithm>
#include <cmath>

namespace qltkit
{

namespace
{

using qlt::Params;

// Counts of the sensors per rad/s, g, gauss, degree and unit of a quaternion.
constexpr double GYROSCOPE_COUNTS = 1.0 / (0.030517578 * RAD_PER_DEG);
constexpr double ACCELEROMETER_COUNTS = 8192.0;
constexpr double MAGNETOMETER_COUNTS = 1.0 / 0.00014615609;
constexpr double TEMPERATURE_COUNTS = 256.0;
constexpr double QUATERNION_COUNTS = 16384.0;

constexpr std::size_t QUATERNION_OFFSET = 8;
constexpr std::size_t TEMPERATURE_OFFSET = 34;

// The environment: the earth's magnetic field towards north (-z) and down in gauss, and a room that
// warms up.
constexpr double FIELD_NORTH = 0.2;
constexpr double FIELD_DOWN = 0.45;
constexpr double TEMPERATURE_C = 31.0;
constexpr double WARMING_C_PER_MS = 2.0 / 60000.0;

/// Rounds to single precision. The variable is volatile, because GCC 12 would omit the rounding
/// when it computes two values at a time.
double Rounded(double value)
{
    const volatile auto rounded = static_cast<float>(value);
    return static_cast<double>(rounded);
}

/// Sines and cosines of the three turns. deliberate: only some values are rounded, here and in
/// FieldOf. The compiler of the first version omitted the other roundings, and the bytes of a seed
/// must not change.
struct Turns
{
    Turns(double yaw, double pitch, double roll)
        : sy(std::sin(yaw))
        , cy(Rounded(std::cos(yaw)))
        , sp(Rounded(std::sin(pitch)))
        , cp(Rounded(std::cos(pitch)))
        , sr(std::sin(roll))
        , cr(std::cos(roll))
    {
    }

    double sy, cy, sp, cp, sr, cr;
};

/// The angular velocity that a gyroscope shows, in the body's axes.
SensorVector AngularVelocityOf(const HeadAngles& rate, const Turns& t)
{
    return {rate.pitchRate * t.cr + rate.yawRate * t.cp * t.sr,
            rate.yawRate * t.cp * t.cr - rate.pitchRate * t.sr,
            rate.rollRate - rate.yawRate * t.sp};
}

/// The world's up direction in the body's axes. An accelerometer at rest shows it in g.
SensorVector UpOf(const Turns& t) { return {t.cp * t.sr, t.cp * t.cr, -t.sp}; }

/// The earth's magnetic field in the body's axes.
SensorVector FieldOf(const Turns& t)
{
    const SensorVector up = UpOf(t);
    const SensorVector north = {t.sy * Rounded(t.cr) - t.cy * t.sp * t.sr,
                                -t.sy * t.sr - t.cy * t.sp * t.cr, -t.cy * t.cp};
    SensorVector field{};
    for (std::size_t i = 0; i < field.size(); ++i)
    {
        field[i] = FIELD_NORTH * north[i] - FIELD_DOWN * up[i];
    }
    return field;
}

SensorVector InDouble(const qlt::Vec3& v)
{
    return {static_cast<double>(v.x()), static_cast<double>(v.y()), static_cast<double>(v.z())};
}

/// The calibration of a sensor: value = (counts / perUnit - position) * magnitude.
struct Calibration
{
    std::size_t offset; // the offset in the report
    double perUnit;     // counts per unit
    SensorVector position;
    SensorVector magnitude;
};

/// The calibrations in the order of SensorValues::vectors.
const std::array<Calibration, 3>& Calibrations()
{
    static const std::array<Calibration, 3> calibrations = []
    {
        // Two magnitude offsets scale the gyroscope: its own and the magnetometer's.
        SensorVector gyroscope = InDouble(Params::GYROSCOPE_MAGNITUDE_OFFSET);
        const SensorVector magnetometer = InDouble(Params::MAGNETOMETER_MAGNITUDE_OFFSET);
        for (std::size_t i = 0; i < gyroscope.size(); ++i)
        {
            gyroscope[i] *= magnetometer[i];
        }
        return std::array<Calibration, 3>{
            Calibration{16, GYROSCOPE_COUNTS, InDouble(Params::GYROSCOPE_POSITION_OFFSET),
                        gyroscope},
            Calibration{22, ACCELEROMETER_COUNTS, InDouble(Params::ACCELEROMETER_POSITION_OFFSET),
                        InDouble(Params::ACCELEROMETER_MAGNITUDE_OFFSET)},
            Calibration{28,
                        MAGNETOMETER_COUNTS,
                        InDouble(Params::MAGNETOMETER_POSITION_OFFSET),
                        {1.0, 1.0, 1.0}}};
    }();
    return calibrations;
}

/// Stores the nearest count that the sensor can express.
void PutCount(std::uint8_t* bytes, double count)
{
    const auto nearest = std::lround(std::clamp(count, -32768.0, 32767.0));
    bytes[0] = static_cast<std::uint8_t>(nearest & 0xFF);
    bytes[1] = static_cast<std::uint8_t>((nearest >> 8) & 0xFF);
}

double CountIn(const std::uint8_t* bytes)
{
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8));
}

/// Stores a vector of the tracker's frame in the sensor's axes. The sensor's x is our y, and its y
/// is our -x.
void PutVector(std::uint8_t* bytes, const SensorVector& v, const Calibration& calibration)
{
    SensorVector raw{};
    for (std::size_t i = 0; i < raw.size(); ++i)
    {
        raw[i] = v[i] / calibration.magnitude[i] + calibration.position[i];
    }
    PutCount(bytes, raw[1] * calibration.perUnit);
    PutCount(bytes + 2, -raw[0] * calibration.perUnit);
    PutCount(bytes + 4, raw[2] * calibration.perUnit);
}

SensorVector VectorIn(const std::uint8_t* bytes, const Calibration& calibration)
{
    SensorVector v = {-CountIn(bytes + 2), CountIn(bytes), CountIn(bytes + 4)};
    for (std::size_t i = 0; i < v.size(); ++i)
    {
        v[i] = (v[i] / calibration.perUnit - calibration.position[i]) * calibration.magnitude[i];
    }
    return v;
}

} // namespace

SensorValues SensorsOn(const HeadAngles& head, double milliseconds)
{
    const Turns turns(head.yaw, head.pitch, head.roll);
    return {{AngularVelocityOf(head, turns), UpOf(turns), FieldOf(turns)},
            TEMPERATURE_C + WARMING_C_PER_MS * milliseconds};
}

std::array<double, 4> OrientationOf(const HeadAngles& head)
{
    // The quaternion of Ry(yaw) * Rx(pitch) * Rz(roll), from the half angles.
    const Turns half(head.yaw / 2.0, head.pitch / 2.0, head.roll / 2.0);
    const double sy = Rounded(half.sy);
    const auto [unused0, cy, sp, cp, unused1, unused2] = half;
    const double sr = Rounded(half.sr);
    const double cr = Rounded(half.cr);
    return {cy * cp * cr + sy * sp * sr, cy * sp * cr + sy * cp * sr, sy * cp * cr - cy * sp * sr,
            cy * cp * sr - sy * sp * cr};
}

void PutSensors(qlt::SensorReport& report, const SensorValues& values)
{
    for (std::size_t i = 0; i < values.vectors.size(); ++i)
    {
        const Calibration& calibration = Calibrations()[i];
        PutVector(report.data() + calibration.offset, values.vectors[i], calibration);
    }
    PutCount(report.data() + TEMPERATURE_OFFSET, values.temperatureC * TEMPERATURE_COUNTS);
}

SensorValues SensorsIn(const qlt::SensorReport& report)
{
    SensorValues values;
    for (std::size_t i = 0; i < values.vectors.size(); ++i)
    {
        const Calibration& calibration = Calibrations()[i];
        values.vectors[i] = VectorIn(report.data() + calibration.offset, calibration);
    }
    values.temperatureC = CountIn(report.data() + TEMPERATURE_OFFSET) / TEMPERATURE_COUNTS;
    return values;
}

void PutOrientation(qlt::SensorReport& report, const std::array<double, 4>& q)
{
    // The device's axes are turned about x by a quarter, and z is reversed.
    const double scale = std::sqrt(0.5) * QUATERNION_COUNTS;
    std::uint8_t* bytes = report.data() + QUATERNION_OFFSET;
    PutCount(bytes, -(q[3] + q[2]) * scale);
    PutCount(bytes + 2, (q[0] + q[1]) * scale);
    PutCount(bytes + 4, (q[2] - q[3]) * scale);
    PutCount(bytes + 6, (q[0] - q[1]) * scale);
}

void PutU32(qlt::SensorReport& report, std::size_t offset, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i)
    {
        report[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

std::uint32_t U32In(const qlt::SensorReport& report, std::size_t offset)
{
    std::uint32_t value = 0;
    for (std::size_t i = 4; i > 0; --i)
    {
        value = value << 8 | report[offset + i - 1];
    }
    return value;
}

} // namespace qltkit
