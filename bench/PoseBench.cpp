// The cost of reading one pose while a tracker writes 1000 reports a second: the last pose, a past
// pose (found and interpolated) and a future pose (predicted). A measured pose, the last one or a
// past one, must take at most 25 ns.
#include <qltkit/Tracking/HeadTracker.h>

#include <benchmark/benchmark.h>

#include <thread>

namespace
{

/// A tracker on the simulator with a history of two seconds. All benchmarks of this file share it.
qltkit::HeadTracker& Tracker()
{
    static qltkit::HeadTracker tracker("simulator");
    while (tracker.Latest().reportNumber < 2100)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return tracker;
}

void LatestPose(benchmark::State& state)
{
    qltkit::HeadTracker& tracker = Tracker();
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(tracker.Latest());
    }
}

/// Reads the pose at a distance of `ms` milliseconds from the last pose. The time of the last pose
/// is read again after every LOOK poses.
void PoseAt(benchmark::State& state)
{
    constexpr int LOOK = 256;
    qltkit::HeadTracker& tracker = Tracker();
    std::int64_t timeNs = 0;
    int looks = 0;
    for (auto _ : state)
    {
        if (looks++ % LOOK == 0)
        {
            timeNs = tracker.Latest().timeNs + state.range(0) * 1000000 + 300000;
        }
        benchmark::DoNotOptimize(tracker.At(timeNs));
    }
}

BENCHMARK(LatestPose);
BENCHMARK(PoseAt)->ArgName("ms")->Arg(-1900)->Arg(-20)->Arg(20);

} // namespace
