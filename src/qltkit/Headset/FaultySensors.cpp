#include "Headset/FaultySensors.h"

#include <algorithm>

#include "Headset/Radians.h"
#include "Headset/Random.h"
#include "Headset/ScriptTimeline.h"

namespace qltkit
{

namespace
{

// The units of a script, expressed in the units of the sensors' values.
constexpr double UNITS[] = {RAD_PER_DEG, 1.0, 1.0};

} // namespace

FaultySensors::FaultySensors(const HeadsetScript& script)
    : mScript(script)
    , mRandom(script.seed)
{
}

void FaultySensors::Stick(HeadsetScript::Sensor sensor, std::size_t axis, std::int64_t untilNs)
{
    mStuckUntilNs.at(sensor).at(axis) = untilNs;
}

void FaultySensors::Spoil(SensorValues& values, std::int64_t ns)
{
    if (mScript.temperature)
    {
        values.temperatureC = TemperatureAt(ns);
    }
    if (!mFirstTemperatureC)
    {
        mFirstTemperatureC = values.temperatureC;
    }
    const double kelvin = values.temperatureC - *mFirstTemperatureC;
    for (std::size_t sensor = 0; sensor < values.vectors.size(); ++sensor)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            double& last = mLast[sensor][axis];
            const double spoiled = Spoiled(values.vectors[sensor][axis], sensor, axis, kelvin);
            last = ns < mStuckUntilNs[sensor][axis] ? last : spoiled;
            values.vectors[sensor][axis] = last;
        }
    }
}

double FaultySensors::Spoiled(double value, std::size_t sensor, std::size_t axis, double kelvin)
{
    const HeadsetScript::Faults& faults = mScript.faults[sensor];
    const double unit = UNITS[sensor];
    value *= faults.scale[axis];
    value += (faults.bias[axis] + faults.biasPerKelvin[axis] * kelvin) * unit;
    if (faults.noise > 0.0)
    {
        value += Normal(mRandom, faults.noise * unit);
    }
    return std::clamp(value, -faults.clip * unit, faults.clip * unit);
}

double FaultySensors::TemperatureAt(std::int64_t ns) const
{
    const HeadsetScript::TemperatureRamp& ramp = *mScript.temperature;
    const double share = (static_cast<double>(ns) / 1e9 - ramp.beginS) / (ramp.endS - ramp.beginS);
    return ramp.fromC + (ramp.toC - ramp.fromC) * std::clamp(share, 0.0, 1.0);
}

} // namespace qltkit
