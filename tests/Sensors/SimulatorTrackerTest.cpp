#include <qlt/Sensors/SimulatorTracker.h>

#include "fakes/EventLog.h"
#include "fakes/ManualClock.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

using Lines = std::vector<std::string>;

/// Shows when a stop has been asked for.
class Simulator : public qlt::SimulatorTracker
{
public:
    using qlt::SimulatorTracker::ShouldStop;
    using qlt::SimulatorTracker::SimulatorTracker;
};

/// Comes to its first cycle only when a stop has been asked for.
class LateSimulator : public Simulator
{
public:
    using Simulator::Simulator;

protected:
    void DoProcess() override
    {
        while (!ShouldStop())
        {
            std::this_thread::yield();
        }
        Simulator::DoProcess();
    }
};

class SimulatorTrackerTest : public testing::Test
{
protected:
    void StopAfterSleep()
    {
        clock.KeepAwake();
        tracker.Stop();
        tracker.RemoveListener(log);
    }

    ManualClock clock;
    Simulator tracker{clock};
    EventLog log;
};

} // namespace

// cos 0 = 1 and sin 0 = 0 in the motion's formulas.
TEST_F(SimulatorTrackerTest, TheFirstCycleIsThatOfTimeZero)
{
    tracker.AddListener(log);
    tracker.Start();
    EXPECT_EQ(log.WaitFor(7),
              (Lines{"accelerometer 0 1 1 @ 0", "gyroscope 0 1 0 @ 0", "magnetometer 0 1 1 @ 0",
                     "quaternion 1 0 0 0 @ 0", "temperature 70 @ 0", "position 0 0 0 @ 0",
                     "orientation 1 0 0 0 @ 0"}));
    StopAfterSleep();
}

TEST_F(SimulatorTrackerTest, ACycleEndsWithAMillisecondOfSleep)
{
    tracker.AddListener(log);
    tracker.Start();
    clock.WaitForSleep(1);
    EXPECT_EQ(log.Count(), 7u);
    EXPECT_EQ(clock.lastSleepNs, 1000000);
    clock.Wake();
    clock.WaitForSleep(2);
    EXPECT_EQ(log.WaitFor(12).back(), "temperature 70 @ 0.001");
    StopAfterSleep();
}

TEST_F(SimulatorTrackerTest, AStopBeforeTheFirstCycleRaisesNoEvent)
{
    LateSimulator late{clock};
    late.AddListener(log);
    late.Start();
    late.Stop();
    late.RemoveListener(log);
    EXPECT_EQ(log.Count(), 0u);
    EXPECT_EQ(clock.lastSleepNs, 0);
}

TEST_F(SimulatorTrackerTest, AStopDuringTheSleepRaisesNoFurtherEvent)
{
    tracker.AddListener(log);
    tracker.Start();
    clock.WaitForSleep(1);
    std::thread stopper([this] { tracker.Stop(); });
    while (!tracker.ShouldStop())
    {
        std::this_thread::yield();
    }
    clock.Wake();
    stopper.join();
    EXPECT_EQ(log.Count(), 7u);
    tracker.RemoveListener(log);
}

TEST_F(SimulatorTrackerTest, TheMotionGoesOnWhereItStopped)
{
    tracker.AddListener(log);
    clock.KeepAwake();
    tracker.Start();
    log.WaitFor(7 * 1000);
    tracker.Stop();
    const std::size_t count = log.Count();
    EXPECT_EQ(count % 7, 0u);
    tracker.Start();
    const std::string next = log.WaitFor(count + 7)[count];
    tracker.Stop();
    tracker.RemoveListener(log);
    // The time is the float sum of as many thousandths as there were cycles.
    float t = 0.0f;
    for (std::size_t cycle = 0; cycle < count / 7; ++cycle)
    {
        t += 0.001f;
    }
    std::ostringstream time;
    time << " @ " << t;
    EXPECT_EQ(next.substr(next.find(" @ ")), time.str());
}

TEST_F(SimulatorTrackerTest, OrientationTurnsAboutXAndTheDeviceAboutY)
{
    tracker.AddListener(log);
    clock.KeepAwake();
    tracker.Start();
    const Lines lines = log.WaitFor(7 * 501);
    tracker.Stop();
    tracker.RemoveListener(log);
    // Five hundred float steps come to t = 0.499997: cos t/2, sin t/2.
    EXPECT_EQ(lines[7 * 500 + 3], "quaternion 0.968913 0 0.247403 0 @ 0.499997");
    EXPECT_EQ(lines[7 * 500 + 6], "orientation 0.968913 0.247403 0 0 @ 0.499997");
    // sin 3t, cos t/2, sin t cos t; then sin^2 t, cos 2t, cos t.
    EXPECT_EQ(lines[7 * 500 + 1], "gyroscope 0.997494 0.968913 0.420734 @ 0.499997");
    EXPECT_EQ(lines[7 * 500 + 2], "magnetometer 0.229846 0.540307 0.877584 @ 0.499997");
    // sin t, cos t, cos^2 t; then 60 + 10 cos t.
    EXPECT_EQ(lines[7 * 500], "accelerometer 0.479423 0.877584 0.770154 @ 0.499997");
    EXPECT_EQ(lines[7 * 500 + 4], "temperature 68.7758 @ 0.499997");
    EXPECT_EQ(lines[7 * 500 + 5], "position 0 0 0 @ 0.499997");
}

TEST_F(SimulatorTrackerTest, IsAlwaysConnectedAndPredictsTheLastOrientation)
{
    EXPECT_TRUE(tracker.IsConnected());
    tracker.AddListener(log);
    tracker.Start();
    log.WaitFor(7);
    EXPECT_EQ(tracker.GetPredictedOrientation(5.0f).w(), 1.0f);
    StopAfterSleep();
}
