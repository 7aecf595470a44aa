#pragma once

#include <qltkit/Headset/HeadMotion.h>

#include <array>
#include <cstdint>
#include <random>

namespace qltkit
{

/// The sensors of a headset in software. It turns the motion of a head into the 64-byte reports
/// that the headset would send. The encoding is the exact inverse of the tracker's decoding. One
/// thread at a time.
class QLTKIT_API SoftwareHeadset
{
public:
    using Vector = std::array<double, 3>;
    using Report = std::array<std::uint8_t, 64>;

    /// A moment of the motion: its report and the true values behind it.
    struct Sample
    {
        Report report{};
        std::uint32_t timeUs = 0;
        bool moving = false;
        std::array<double, 4> orientation{}; // w, x, y, z, body to world
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
