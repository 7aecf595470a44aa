#include <qlt/Sensors/SimulatorTracker.h>

#include "fakes/EventLog.h"

#include <gtest/gtest.h>

// Five hundred steps in single precision give t = 0.499997. Accelerometer: sin t, cos t, cos^2 t;
// gyroscope: sin 3t, cos t/2, sin t cos t; magnetometer: sin^2 t, cos 2t, cos t; temperature: 60 +
// 10 cos t; the device turns by t about y and the orientation about x.
TEST(SimulatorTrackerTest, TheMotionGoesOnWhereItStopped)
{
    ManualClock clock;
    qlt::SimulatorTracker tracker(clock);
    EventLog log;
    tracker.AddListener(log);
    tracker.Start();
    clock.WaitForSleep(1);
    EXPECT_EQ(clock.lastSleepNs, 1000000);
    EXPECT_EQ(tracker.GetPredictedOrientation(5.0f).w(), 1.0f); // the last one
    EXPECT_EQ(log.Count(), 7u);
    clock.KeepAwake();
    log.WaitFor(7 * 501);
    tracker.Stop();
    const std::size_t count = log.Count();
    tracker.Start();
    const std::vector<std::string> lines = log.WaitFor(count + 7);
    tracker.Stop();
    tracker.RemoveListener(log);
    EXPECT_EQ(lines[0], "accelerometer 0 1 1 @ 0");
    EXPECT_EQ(std::vector<std::string>(&lines[7 * 500], &lines[7 * 501]),
              (std::vector<std::string>{
                  "accelerometer 0.479423 0.877584 0.770154 @ 0.499997",
                  "gyroscope 0.997494 0.968913 0.420734 @ 0.499997",
                  "magnetometer 0.229846 0.540307 0.877584 @ 0.499997",
                  "quaternion 0.968913 0 0.247403 0 @ 0.499997", "temperature 68.7758 @ 0.499997",
                  "position 0 0 0 @ 0.499997", "orientation 0.968913 0.247403 0 0 @ 0.499997"}));
    // The time is the sum of 0.001 for each cycle, in single precision.
    float t = 0.0f;
    for (std::size_t cycle = 0; cycle < count / 7; ++cycle)
    {
        t += 0.001f;
    }
    EXPECT_EQ(lines[count].substr(lines[count].find(" @ ")), " @ " + Text(t));
}
