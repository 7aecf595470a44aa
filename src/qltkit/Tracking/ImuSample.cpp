#include <qltkit/Tracking/ImuSample.h>

namespace qltkit
{
namespace
{

constexpr double STANDARD_GRAVITY = 9.80665;
constexpr std::size_t TIME = 4;
constexpr std::size_t QUATERNION_W = 10;
constexpr std::size_t GYROSCOPE = 16;
constexpr std::size_t ACCELEROMETER = 22;

std::uint32_t TimeUs(const qlt::SensorReport& report)
{
    std::uint32_t time = 0;
    for (std::size_t i = 4; i-- > 0;)
    {
        time = time << 8 | report[TIME + i];
    }
    return time;
}

/// Returns one bit for each axis of the tracker's frame. Its x and y are the sensor's -y and x.
unsigned SaturatedAxes(const qlt::SensorReport& report, std::size_t offset)
{
    constexpr std::size_t SENSOR_AXIS[] = {1, 0, 2};
    unsigned bits = 0;
    for (unsigned axis = 0; axis < 3; ++axis)
    {
        const std::size_t at = offset + 2 * SENSOR_AXIS[axis];
        const auto count = static_cast<std::int16_t>(report[at] | report[at + 1] << 8);
        bits |= (count == INT16_MAX || count <= -INT16_MAX ? 1u : 0u) << axis;
    }
    return bits;
}

Vector3 Widened(const qlt::Vec3& v, double scale) { return Vector3{v.x(), v.y(), v.z()} * scale; }

} // namespace

ImuSample ReadImuSample(const qlt::SensorReport& report)
{
    // The device's own orientation is not used, and an unset one would report an assertion. So put
    // any valid orientation there.
    qlt::SensorReport bytes = report;
    bytes[QUATERNION_W] = 1;
    const qlt::SensorSample decoded = qlt::DecodeSensorReport(bytes, qlt::HEADSET_SCALES);
    ImuSample sample;
    sample.sequence = decoded.sequence;
    sample.timeUs = TimeUs(report); // exact, unlike the decoder's seconds
    sample.gyroscope = Widened(decoded.gyroscope, 1.0);
    sample.accelerometer = Widened(decoded.accelerometer, STANDARD_GRAVITY);
    sample.temperature = static_cast<double>(decoded.temperature);
    sample.saturated = static_cast<std::uint8_t>(
        SaturatedAxes(report, GYROSCOPE) << ImuSample::GYROSCOPE_BITS |
        SaturatedAxes(report, ACCELEROMETER) << ImuSample::ACCELEROMETER_BITS);
    return sample;
}

} // namespace qltkit
