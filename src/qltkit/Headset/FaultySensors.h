// What is wrong with the sensors of a scripted headset.
#pragma once

#include <qltkit/Headset/HeadsetScript.h>

#include "Headset/SensorBytes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <random>

namespace qltkit
{

class FaultySensors
{
public:
    /// `script` must outlive this.
    explicit FaultySensors(const HeadsetScript& script);

    /// Turns what perfect sensors show at this moment into what these show. Once for each report.
    void Spoil(SensorValues& values, std::int64_t ns);

    /// From the next report until `untilNs`, an axis repeats its last value.
    void Stick(HeadsetScript::Sensor sensor, std::size_t axis, std::int64_t untilNs);

private:
    double TemperatureAt(std::int64_t ns) const;
    double Spoiled(double value, std::size_t sensor, std::size_t axis, double kelvin);

    const HeadsetScript& mScript;
    std::mt19937_64 mRandom;
    std::optional<double> mFirstTemperatureC;
    std::array<SensorVector, 3> mLast{};
    std::array<std::array<std::int64_t, 3>, 3> mStuckUntilNs{};
};

} // namespace qltkit
