#include <qltkit/Headset/SoftwareHeadset.h>

#include <qlt/Sensors/Params.h>

#include "Headset/Random.h"

#include <algorithm>
#include <cmath>

namespace qltkit
{

namespace
{

using Vector = SoftwareHeadset::Vector;
using qlt::Params;

// Counts of the sensors per rad/s, g, gauss, degree and unit of a quaternion.
constexpr double GYROSCOPE_COUNTS = 1.0 / (0.030517578 * 0.017453292519943295);
constexpr double ACCELEROMETER_COUNTS = 8192.0;
constexpr double MAGNETOMETER_COUNTS = 1.0 / 0.00014615609;
constexpr double TEMPERATURE_COUNTS = 256.0;
constexpr double QUATERNION_COUNTS = 16384.0;

// The imperfections of a middling sensor: bias at most so much, noise of such deviations.
constexpr double MAX_GYROSCOPE_BIAS = 0.005; // rad/s
constexpr double GYROSCOPE_NOISE = 0.002;    // rad/s
constexpr double ACCELEROMETER_NOISE = 0.003;
constexpr double MAGNETOMETER_NOISE = 0.002;

// The place: the earth's field towards north (-z) and down, gauss, and a room that warms up.
constexpr double FIELD_NORTH = 0.2;
constexpr double FIELD_DOWN = 0.45;
constexpr double TEMPERATURE_C = 31.0;
constexpr double WARMING_C_PER_REPORT = 2.0 / 60000.0;

constexpr std::uint32_t FIRST_TIME_US = 1000000;

/// Sines and cosines of the three turns. In single precision, so that the last bit of a C library's
/// sine does not show.
struct Turns
{
    Turns(double yaw, double pitch, double roll)
        : sy(static_cast<float>(std::sin(yaw)))
        , cy(static_cast<float>(std::cos(yaw)))
        , sp(static_cast<float>(std::sin(pitch)))
        , cp(static_cast<float>(std::cos(pitch)))
        , sr(static_cast<float>(std::sin(roll)))
        , cr(static_cast<float>(std::cos(roll)))
    {
    }

    double sy, cy, sp, cp, sr, cr;
};

/// Ry(yaw) * Rx(pitch) * Rz(roll) from the half turns.
std::array<double, 4> OrientationOf(const Turns& half)
{
    const auto [sy, cy, sp, cp, sr, cr] = half;
    return {cy * cp * cr + sy * sp * sr, cy * sp * cr + sy * cp * sr, sy * cp * cr - cy * sp * sr,
            cy * cp * sr - sy * sp * cr};
}

/// What a gyroscope turns by, in the body's axes.
Vector AngularVelocityOf(const HeadAngles& rate, const Turns& t)
{
    return {rate.pitchRate * t.cr + rate.yawRate * t.cp * t.sr,
            rate.yawRate * t.cp * t.cr - rate.pitchRate * t.sr,
            rate.rollRate - rate.yawRate * t.sp};
}

/// World up in the body's axes, which is what an accelerometer at rest reads in g.
Vector UpOf(const Turns& t) { return {t.cp * t.sr, t.cp * t.cr, -t.sp}; }

/// The earth's magnetic field in the body's axes.
Vector FieldOf(const Turns& t)
{
    const Vector up = UpOf(t);
    const Vector north = {t.sy * t.cr - t.cy * t.sp * t.sr, -t.sy * t.sr - t.cy * t.sp * t.cr,
                          -t.cy * t.cp};
    Vector field{};
    for (std::size_t i = 0; i < field.size(); ++i)
    {
        field[i] = FIELD_NORTH * north[i] - FIELD_DOWN * up[i];
    }
    return field;
}

/// Undoes the calibration: (sample - position offset) * magnitude offset, by component.
Vector Uncalibrated(const Vector& v, const qlt::Vec3& position, const Vector& magnitude)
{
    return {v[0] / magnitude[0] + static_cast<double>(position.x()),
            v[1] / magnitude[1] + static_cast<double>(position.y()),
            v[2] / magnitude[2] + static_cast<double>(position.z())};
}

Vector InDouble(const qlt::Vec3& v)
{
    return {static_cast<double>(v.x()), static_cast<double>(v.y()), static_cast<double>(v.z())};
}

void PutU32(std::uint8_t* bytes, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
    {
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

/// The nearest count that the sensor can express.
void PutCount(std::uint8_t* bytes, double count)
{
    const auto nearest = std::lround(std::clamp(count, -32768.0, 32767.0));
    bytes[0] = static_cast<std::uint8_t>(nearest & 0xFF);
    bytes[1] = static_cast<std::uint8_t>((nearest >> 8) & 0xFF);
}

/// A vector of the tracker's frame in the sensor's axes: x there is our y, y there our -x.
void PutVector(std::uint8_t* bytes, const Vector& v, double counts)
{
    PutCount(bytes, v[1] * counts);
    PutCount(bytes + 2, -v[0] * counts);
    PutCount(bytes + 4, v[2] * counts);
}

/// The device's own estimate: in its axes, a quarter turned about x, z reversed.
void PutQuaternion(std::uint8_t* bytes, const std::array<double, 4>& q)
{
    const double scale = std::sqrt(0.5) * QUATERNION_COUNTS;
    PutCount(bytes, -(q[3] + q[2]) * scale);
    PutCount(bytes + 2, (q[0] + q[1]) * scale);
    PutCount(bytes + 4, (q[2] - q[3]) * scale);
    PutCount(bytes + 6, (q[0] - q[1]) * scale);
}

} // namespace

SoftwareHeadset::SoftwareHeadset(std::uint64_t seed, bool ideal)
    : mRandom(seed)
    , mMotion(mRandom)
    , mIdeal(ideal)
{
    for (double& bias : mGyroscopeBias)
    {
        bias = mIdeal ? 0.0 : Uniform(mRandom, -MAX_GYROSCOPE_BIAS, MAX_GYROSCOPE_BIAS);
    }
}

void SoftwareHeadset::AddNoise(Vector& v, double deviation)
{
    for (double& component : v)
    {
        component += mIdeal ? 0.0 : Normal(mRandom, deviation);
    }
}

SoftwareHeadset::Sample SoftwareHeadset::Next()
{
    const HeadAngles head = mMotion.At(mReports / 1000.0);
    const Turns turns(head.yaw, head.pitch, head.roll);
    Vector omega = AngularVelocityOf(head, turns);
    Vector up = UpOf(turns);
    Vector field = FieldOf(turns);

    Sample sample;
    sample.timeUs = FIRST_TIME_US + mReports * 1000;
    sample.moving = omega != Vector{};
    sample.orientation = OrientationOf(Turns(head.yaw / 2.0, head.pitch / 2.0, head.roll / 2.0));
    for (std::size_t i = 0; i < omega.size(); ++i)
    {
        omega[i] += mGyroscopeBias[i];
    }
    AddNoise(omega, GYROSCOPE_NOISE);
    AddNoise(up, ACCELEROMETER_NOISE);
    AddNoise(field, MAGNETOMETER_NOISE);

    // The gyroscope is scaled by both magnitude offsets, its own and the magnetometer's.
    Vector gyroscopeMagnitude = InDouble(Params::GYROSCOPE_MAGNITUDE_OFFSET);
    const Vector magnetometerMagnitude = InDouble(Params::MAGNETOMETER_MAGNITUDE_OFFSET);
    for (std::size_t i = 0; i < omega.size(); ++i)
    {
        gyroscopeMagnitude[i] *= magnetometerMagnitude[i];
    }
    std::uint8_t* bytes = sample.report.data();
    PutU32(bytes, mReports + 1);
    PutU32(bytes + 4, sample.timeUs);
    PutQuaternion(bytes + 8, sample.orientation);
    PutVector(bytes + 16,
              Uncalibrated(omega, Params::GYROSCOPE_POSITION_OFFSET, gyroscopeMagnitude),
              GYROSCOPE_COUNTS);
    PutVector(bytes + 22,
              Uncalibrated(up, Params::ACCELEROMETER_POSITION_OFFSET,
                           InDouble(Params::ACCELEROMETER_MAGNITUDE_OFFSET)),
              ACCELEROMETER_COUNTS);
    PutVector(bytes + 28,
              Uncalibrated(field, Params::MAGNETOMETER_POSITION_OFFSET, {1.0, 1.0, 1.0}),
              MAGNETOMETER_COUNTS);
    PutCount(bytes + 34, (TEMPERATURE_C + WARMING_C_PER_REPORT * mReports) * TEMPERATURE_COUNTS);
    ++mReports;
    return sample;
}

} // namespace qltkit
