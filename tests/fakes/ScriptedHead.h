// A head that moves by a formula. Its sensors give samples with known errors.
#pragma once

#include <qltkit/Tracking/ImuSample.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace tracking
{

constexpr double RADIANS = 0.017453292519943295;

struct HeadScript
{
    unsigned seed = 1;
    double intervalS = 0.001;
    qltkit::Rotation tilt; // the orientation of the sensors on the head
    qltkit::Vector3 swing; // radians about x, y, z, at about 0.6 Hz
    double swingHz = 0.6;
    double shift = 0.0;   // metres along each axis, at about 0.8 Hz
    qltkit::Vector3 bias; // rad/s
    double biasPerKelvin = 0.0;
    double kelvinPerS = 0.0;
    double turnFromS = 1e9; // from this time on the head turns about the vertical
    double turnRate = 0.0;  // rad/s
    double gyroscopeLimit = 1e9;
    double gyroscopeNoise = 0.035 * RADIANS;
    double accelerometerNoise = 0.03;
};

class ScriptedHead
{
public:
    explicit ScriptedHead(const HeadScript& script)
        : mScript(script)
        , mRandom(script.seed)
    {
        for (double& phase : mPhases)
        {
            phase = 3.14159265 * Uniform();
        }
        for (double& factor : mFactors)
        {
            factor = 2.0 * 3.14159265 * (1.0 + 0.4 * Uniform());
        }
        mLast = OrientationAt(-script.intervalS);
    }

    double TimeS() const { return mIndex * mScript.intervalS; }

    /// The truth at the time of the last Next.
    const qltkit::Rotation& Orientation() const { return mLast; }

    qltkit::Vector3 BiasNow() const
    {
        const double warm = mScript.biasPerKelvin * mScript.kelvinPerS * TimeS();
        return mScript.bias + qltkit::Vector3{warm, warm, warm};
    }

    /// The next sample. The first one is at time zero.
    qltkit::ImuSample Next()
    {
        const double t = ++mIndex * mScript.intervalS;
        const qltkit::Rotation q = OrientationAt(t);
        const qltkit::Vector3 turned = RotationVector(Normalized(mLast.Conjugate() * q));
        mLast = q;
        qltkit::ImuSample sample;
        sample.sequence = static_cast<std::uint32_t>(1000 + mIndex);
        sample.timeUs = static_cast<std::uint32_t>(std::llround(5e6 + t * 1e6));
        sample.gyroscope =
            turned * (1.0 / mScript.intervalS) + BiasNow() + Noise(mScript.gyroscopeNoise);
        sample.accelerometer =
            Rotate(q.Conjugate(), AccelerationAt(t)) + Noise(mScript.accelerometerNoise);
        sample.temperature = 30.0 + mScript.kelvinPerS * t;
        Clip(sample.gyroscope.x, 1u, sample.saturated);
        Clip(sample.gyroscope.y, 2u, sample.saturated);
        Clip(sample.gyroscope.z, 4u, sample.saturated);
        return sample;
    }

private:
    double Uniform() { return static_cast<double>(mRandom() >> 8) / 8388608.0 - 1.0; }

    /// A nearly normal random number, which is the sum of three uniform ones.
    double Normal() { return Uniform() + Uniform() + Uniform(); }

    qltkit::Vector3 Noise(double deviation)
    {
        return qltkit::Vector3{Normal(), Normal(), Normal()} * deviation;
    }

    double Wave(int i, double hz, double t) const
    {
        return std::sin(mFactors[i] * hz * t + mPhases[i]);
    }

    qltkit::Rotation OrientationAt(double t) const
    {
        const double turn = mScript.turnRate * std::max(0.0, t - mScript.turnFromS);
        const double yaw = turn + mScript.swing.y * Wave(0, mScript.swingHz, t);
        const double pitch = mScript.swing.x * Wave(1, mScript.swingHz, t);
        const double roll = mScript.swing.z * Wave(2, mScript.swingHz, t);
        return qltkit::RotationBy({0.0, yaw, 0.0}) * qltkit::RotationBy({pitch, 0.0, 0.0}) *
               qltkit::RotationBy({0.0, 0.0, roll}) * mScript.tilt;
    }

    qltkit::Vector3 AccelerationAt(double t) const
    {
        constexpr double HZ = 0.8;
        const auto along = [&](int i)
        { return -mScript.shift * mFactors[i] * mFactors[i] * HZ * HZ * Wave(i, HZ, t); };
        return {along(3), 9.80665 + along(4), along(5)};
    }

    void Clip(double& value, unsigned bit, std::uint8_t& saturated) const
    {
        if (std::fabs(value) >= mScript.gyroscopeLimit)
        {
            value = value < 0.0 ? -mScript.gyroscopeLimit : mScript.gyroscopeLimit;
            saturated = static_cast<std::uint8_t>(saturated | bit);
        }
    }

    const HeadScript mScript;
    std::mt19937 mRandom;
    double mPhases[6];
    double mFactors[6];
    qltkit::Rotation mLast;
    int mIndex = -1;
};

/// A random orientation, uniform over all directions.
inline qltkit::Rotation RandomRotation(std::mt19937& random)
{
    const auto uniform = [&random] { return static_cast<double>(random() >> 8) / 8388608.0 - 1.0; };
    for (;;)
    {
        const qltkit::Rotation q{uniform(), uniform(), uniform(), uniform()};
        const double square = q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z;
        if (square > 0.01 && square < 1.0)
        {
            return Normalized(q);
        }
    }
}

/// A head that starts in a random position and moves vigorously. The bias is at most half a degree
/// per second.
inline HeadScript RandomStart(unsigned seed)
{
    std::mt19937 random(seed);
    const auto bias = [&random]
    { return 0.5 * RADIANS * (static_cast<double>(random() >> 8) / 8388608.0 - 1.0); };
    HeadScript script;
    script.seed = seed;
    script.tilt = RandomRotation(random);
    script.swing = {35.0 * RADIANS, 60.0 * RADIANS, 20.0 * RADIANS};
    script.shift = 0.15;
    script.bias = {bias(), bias(), bias()};
    return script;
}

} // namespace tracking
