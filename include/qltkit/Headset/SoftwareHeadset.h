#pragma once

#include <qltkit/Headset/HeadMotion.h>

#include <array>
#include <cstdint>
#include <random>

namespace qltkit
{

/// The sensors of a headset in software. It turns the motion of a head into the 64-byte reports
/// that the headset would send. The encoding is the exact inverse of the tracker's decoding.
///
///     qltkit::SoftwareHeadset headset(7, false);
///     const qltkit::SoftwareHeadset::Sample sample = headset.Next();
///     file.write(reinterpret_cast<const char*>(sample.report.data()), 64);
///
/// A headset that is not ideal has a constant bias of the gyroscope of up to 0.005 rad/s and noise
/// with standard deviations of 0.002 rad/s, 0.003 g and 0.002 gauss. One thread at a time may use
/// an object.
class QLTKIT_API SoftwareHeadset
{
public:
    /// Three values along x, y and z of the tracker's frame.
    using Vector = std::array<double, 3>;

    /// The bytes of a report.
    using Report = std::array<std::uint8_t, 64>;

    /// A moment of the motion: its report and the true values behind it.
    struct Sample
    {
        /// The report, as the headset would send it.
        Report report{};

        /// The device time of the report in microseconds. The first one is one second.
        std::uint32_t timeUs = 0;

        /// True when the head turns at this moment.
        bool moving = false;

        /// The true rotation from body to world as w, x, y, z.
        std::array<double, 4> orientation{};
    };

    /// The same seed gives the same reports on every system. The sensors of an `ideal` headset have
    /// no bias and no noise, only quantisation.
    SoftwareHeadset(std::uint64_t seed, bool ideal);

    /// Makes the report one millisecond after the last one.
    Sample Next();

private:
    void AddNoise(Vector& v, double deviation);

    std::mt19937_64 mRandom; // before the motion, because that draws from it
    HeadMotion mMotion;
    const bool mIdeal;
    Vector mGyroscopeBias{};
    std::uint32_t mReports = 0;
};

} // namespace qltkit
