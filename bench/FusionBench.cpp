// Compares one step of the orientation filter to a plain version of the same step that is compiled
// beside it. The result bits must be equal. "ratio" must be at most 1.02.
#include "Paired.h"
#include "PlainFusion.h"

#include <qlt/Sensors/SensorFusion.h>

#include "fakes/FloatBits.h"

#include <random>

namespace
{

constexpr std::size_t STEPS = 2000;

/// A clock that advances one millisecond each time it is read.
class TickingClock final : public qlt::Clock
{
public:
    std::int64_t NowNs() override { return mNowNs += 1000000; }
    void SleepNs(std::int64_t) override {}

private:
    std::int64_t mNowNs = 0;
};

struct Samples
{
    Samples()
    {
        std::mt19937 random(1);
        const auto uniform = [&random]
        { return static_cast<float>(random() >> 8) / 8388608.0f - 1.0f; };
        for (std::size_t i = 0; i < STEPS; ++i)
        {
            accelerometer.emplace_back(0.2f * uniform(), 1.0f, 0.2f * uniform());
            gyroscope.emplace_back(3.0f * uniform(), 3.0f * uniform(), 3.0f * uniform());
        }
    }

    std::vector<qlt::Vec3> accelerometer;
    std::vector<qlt::Vec3> gyroscope;
};

plain::Vector Plain(const qlt::Vec3& v) { return {v.x(), v.y(), v.z()}; }

void FusionStep(benchmark::State& state)
{
    const Samples samples;
    TickingClock clock;
    TickingClock plainClock;
    qlt::Clock& plainNow = plainClock; // a virtual call, as the library makes it
    qlt::SensorFusion fusion(clock);
    plain::Fusion plainFusion;
    plainFusion.lastTimeNs = plainNow.NowNs();
    const auto ours = [&]
    {
        for (std::size_t i = 0; i < STEPS; ++i)
        {
            fusion.Fuse(samples.accelerometer[i], samples.gyroscope[i], qlt::Vec3(), 0.0f);
        }
    };
    const auto theirs = [&]
    {
        for (std::size_t i = 0; i < STEPS; ++i)
        {
            plainFusion.Step(Plain(samples.accelerometer[i]), Plain(samples.gyroscope[i]),
                             plainNow.NowNs());
        }
    };
    RunPaired(
        state, STEPS, [&] { return Seconds(ours); }, [&] { return Seconds(theirs); });
    const plain::Rotation& q = plainFusion.orientation;
    if (Bits(fusion.GetQuaternion()) != Bits(qlt::Quaternion(q.w, q.x, q.y, q.z)))
    {
        state.SkipWithError("the results differ");
    }
}

BENCHMARK(FusionStep)->UseManualTime()->Iterations(201);

} // namespace
