// The sensors of a headset in software: from a head's motion to the 64-byte reports that the
// headset would send, in the exact inverse of what the tracker makes of them.
#pragma once

#include <qltkit/Headset/HeadMotion.h>

#include <array>
#include <cstdint>
#include <random>

namespace qltkit
{

class QLTKIT_API SoftwareHeadset
{
public:
    using Vector = std::array<double, 3>;
    using Report = std::array<std::uint8_t, 64>;

    /// A moment of the motion: its report and the truth about it.
    struct Sample
    {
        Report report{};
        std::uint32_t timeUs = 0;
        bool moving = false;
        std::array<double, 4> orientation{}; // w, x, y, z, body to world
    };

    /// The same seed gives the same reports on every system. An `ideal` headset's sensors have
    /// neither bias nor noise, only their quantisation.
    SoftwareHeadset(std::uint64_t seed, bool ideal);

    /// One millisecond after the last.
    Sample Next();

private:
    void AddNoise(Vector& v, double deviation);

    std::mt19937_64 mRandom; // before the motion, which draws from it
    HeadMotion mMotion;
    const bool mIdeal;
    Vector mGyroscopeBias{};
    std::uint32_t mReports = 0;
};

} // namespace qltkit
