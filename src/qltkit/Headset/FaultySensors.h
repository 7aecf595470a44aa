#pragma once

#include <qltkit/Headset/HeadsetScript.h>

#include "Headset/SensorBytes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <random>

namespace qltkit
{

/// Applies the faults of a script to the values of perfect sensors.
class FaultySensors
{
public:
    /// `script` must outlive this object.
    explicit FaultySensors(const HeadsetScript& script);

    /// Changes the values of perfect sensors at this moment into the values of the faulty sensors.
    /// Call it once for each report.
    void Spoil(SensorValues& values, std::int64_t ns);

    /// The axis repeats its last value from the next report until `untilNs`.
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
