#include <qlt/Sensors/SensorReport.h>

#include <qlt/Sensors/Params.h>

namespace qlt
{
namespace
{

std::uint32_t U32(const std::uint8_t* bytes)
{
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

float I32(const std::uint8_t* bytes)
{
    return static_cast<float>(static_cast<std::int32_t>(U32(bytes)));
}

float I16(const std::uint8_t* bytes)
{
    const auto bits = static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
    return static_cast<float>(static_cast<std::int16_t>(bits));
}

Vec3 Counts(const std::uint8_t* bytes, float scale)
{
    return Vec3(I16(bytes) * scale, I16(bytes + 2) * scale, I16(bytes + 4) * scale);
}

/// Converts a vector from the sensor's axes to the tracker's frame.
Vec3 Remap(const Vec3& v) { return Vec3(-v.y(), v.x(), v.z()); }

Vec3 ByComponent(const Vec3& a, const Vec3& b)
{
    return Vec3(a.x() * b.x(), a.y() * b.y(), a.z() * b.z());
}

Quaternion DecodeQuaternion(const std::uint8_t* bytes)
{
    static const Quaternion upright =
        Quaternion::RotationQuaternion(MathUtil::Deg2Rad(90.0f), Vec3::X_AXIS);
    Quaternion device(I16(bytes + 2), I16(bytes + 4), I16(bytes + 6), I16(bytes));
    device.Normalize(); // the scale of the counts must not matter
    Quaternion result = upright * Quaternion(device.w(), Remap(device.v()));
    result.z() = -result.z();
    return result;
}

void Calibrate(SensorSample& sample)
{
    sample.gyroscope = ByComponent(Remap(sample.gyroscope) - Params::GYROSCOPE_POSITION_OFFSET,
                                   Params::GYROSCOPE_MAGNITUDE_OFFSET);
    sample.accelerometer =
        ByComponent(Remap(sample.accelerometer) - Params::ACCELEROMETER_POSITION_OFFSET,
                    Params::ACCELEROMETER_MAGNITUDE_OFFSET);
    sample.magnetometer = Remap(sample.magnetometer) - Params::MAGNETOMETER_POSITION_OFFSET;
    // deliberate: both magnitude factors scale the gyroscope, and none scales the magnetometer.
    // This is part of the interface.
    sample.gyroscope = ByComponent(sample.gyroscope, Params::MAGNETOMETER_MAGNITUDE_OFFSET);
}

} // namespace

SensorSample DecodeSensorReport(const SensorReport& report, const SensorScales& scales)
{
    const std::uint8_t* bytes = report.data();
    SensorSample sample;
    sample.sequence = U32(bytes);
    // deliberate: the time is rounded to single precision, because the filter takes single
    // precision.
    sample.deviceTimeS = static_cast<double>(static_cast<float>(U32(bytes + 4)) / 1000000.0f);
    sample.quaternion = DecodeQuaternion(bytes + 8);
    sample.gyroscope = Counts(bytes + 16, scales.gyroscope);
    sample.accelerometer = Counts(bytes + 22, scales.accelerometer);
    sample.magnetometer = Counts(bytes + 28, scales.magnetometer);
    sample.temperature = I16(bytes + 34) * scales.temperature;
    sample.reservedA = U32(bytes + 36);
    sample.reservedB = U32(bytes + 40);
    sample.position = Vec3(I32(bytes + 44) * scales.position, I32(bytes + 48) * scales.position,
                           I32(bytes + 52) * scales.position);
    sample.reservedC = U32(bytes + 56);
    sample.reservedD = U32(bytes + 60);
    Calibrate(sample);
    return sample;
}

} // namespace qlt
