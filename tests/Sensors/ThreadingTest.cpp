// A running tracker among many threads; what it finds, it finds under the thread sanitizer.
#include <qlt/Sensors/Hmd.h>
#include <qlt/Sensors/SimulatorTracker.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/ManualClock.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

// By interface these references follow the tracker, without a lock. The one place where the readers
// here follow them, so that the sanitizer's suppression names it and nothing else.
__attribute__((noinline)) float ReadUnlockedReferences(const qlt::Tracker& tracker)
{
    return tracker.GetOrientation().x() + tracker.GetPosition().y();
}

namespace
{

constexpr int READERS = 16;
constexpr int READS = 2000;

struct Sum : qlt::TrackerListener
{
    void OnOrientationEvent(const qlt::Quaternion& q, float) override { sum = sum + q.w(); }
    void OnGyroscopeEvent(const qlt::Vec3& v, float) override { sum = sum + v.x(); }
    float sum = 0.0f;
};

void Read(qlt::Tracker& tracker, std::atomic<int>& sink)
{
    for (int i = 0; i < READS; ++i)
    {
        float sum = ReadUnlockedReferences(tracker);
        sum += tracker.GetPredictedOrientation(0.02f).w() + tracker.GetPredictedPosition(0.02f).x();
        sum += tracker.GetObjectOrientation(1).w() + tracker.GetClientPosition().x();
        sink += sum > 0.0f && tracker.IsTracking() && tracker.IsConnected() ? 1 : 0;
    }
}

/// Readers, a listener that comes and goes and a recentring user, while `churn` runs.
template <typename Churn>
void Surround(qlt::Tracker& tracker, const Churn& churn)
{
    std::atomic<int> sink{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < READERS; ++i)
    {
        threads.emplace_back([&] { Read(tracker, sink); });
    }
    threads.emplace_back(
        [&]
        {
            for (int i = 0; i < 200; ++i)
            {
                Sum listener;
                tracker.AddListener(listener);
                tracker.ResetYawOrigin();
                tracker.RemoveListener(listener);
            }
        });
    churn();
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

} // namespace

TEST(ThreadingTest, ReadersAndListenersBesideASimulatorThatStartsAndStops)
{
    AssertionRecorder assertions; // a yaw reset that meets the identity reports its zero axis
    ManualClock clock;
    clock.KeepAwake();
    qlt::SimulatorTracker tracker(clock);
    Sum listener;
    tracker.AddListener(listener);
    Surround(tracker,
             [&]
             {
                 for (int i = 0; i < 100; ++i)
                 {
                     tracker.Start();
                     std::this_thread::yield();
                     tracker.Stop();
                 }
             });
    tracker.RemoveListener(listener);
    EXPECT_FALSE(tracker.IsTracking());
}

TEST(ThreadingTest, ReadersAndListenersBesideAHeadsetThatComesAndGoes)
{
    AssertionRecorder assertions;
    ScriptedUsbHost host;
    ManualClock clock;
    clock.KeepAwake();
    qlt::Hmd tracker(host, clock);
    Sum listener;
    tracker.AddListener(listener);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    tracker.Start();
    std::atomic<bool> done{false};
    // A read blocks whoever asks for the connection, so the reports keep coming until the end.
    std::thread hardware(
        [&]
        {
            for (std::uint32_t i = 0; !done; ++i)
            {
                host.Plug({});
                host.QueueRead(ReportWriter(i), i % 50 == 49 ? 17 : 64);
                std::this_thread::yield();
            }
            host.Unplug();
        });
    Surround(tracker, [] {});
    done = true;
    hardware.join();
    tracker.Stop();
    tracker.RemoveListener(listener);
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_GT(host.Opened(), 0);
}
