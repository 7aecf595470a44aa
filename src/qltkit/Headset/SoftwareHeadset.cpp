#include <qltkit/Headset/SoftwareHeadset.h>

#include "Headset/Random.h"
#include "Headset/SensorBytes.h"

namespace qltkit
{

namespace
{

// The faults of an average sensor: the largest bias, and standard deviations of the noise.
constexpr double MAX_GYROSCOPE_BIAS = 0.005; // rad/s
constexpr double GYROSCOPE_NOISE = 0.002;    // rad/s
constexpr double ACCELEROMETER_NOISE = 0.003;
constexpr double MAGNETOMETER_NOISE = 0.002;

constexpr std::uint32_t FIRST_TIME_US = 1000000;

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
    SensorValues sensors = SensorsOn(head, mReports);
    auto& [omega, up, field] = sensors.vectors;

    Sample sample;
    sample.timeUs = FIRST_TIME_US + mReports * 1000;
    sample.moving = omega != Vector{};
    sample.orientation = OrientationOf(head);
    for (std::size_t i = 0; i < omega.size(); ++i)
    {
        omega[i] += mGyroscopeBias[i];
    }
    AddNoise(omega, GYROSCOPE_NOISE);
    AddNoise(up, ACCELEROMETER_NOISE);
    AddNoise(field, MAGNETOMETER_NOISE);

    PutU32(sample.report, SEQUENCE_OFFSET, mReports + 1);
    PutU32(sample.report, DEVICE_TIME_OFFSET, sample.timeUs);
    PutOrientation(sample.report, sample.orientation);
    PutSensors(sample.report, sensors);
    ++mReports;
    return sample;
}

} // namespace qltkit
