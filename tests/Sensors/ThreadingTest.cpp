// A running tracker among many threads; what it finds, it finds under the thread sanitizer.
#include <qlt/Sensors/SimulatorTracker.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

// By interface these references follow the tracker, without a lock. The one place where the readers
// here follow them, so that the sanitizer's suppression names it and nothing else.
__attribute__((noinline)) float ReadUnlockedReferences(const qlt::Tracker& tracker)
{
    return tracker.GetOrientation().x() + tracker.GetPosition().y();
}

namespace
{

void Read(qlt::Tracker& tracker)
{
    for (int i = 0; i < 2000; ++i)
    {
        volatile float sum = ReadUnlockedReferences(tracker);
        sum = tracker.GetPredictedOrientation(0.02f).w() + tracker.GetPredictedPosition(0.02f).x();
        sum = tracker.GetObjectOrientation(1).w() + tracker.GetClientPosition().x();
        sum = tracker.IsTracking() && tracker.IsConnected() ? 1.0f : sum;
    }
}

/// Sixteen readers, listeners that come and go and a recentring user, while `churn` runs.
template <typename Churn>
void Surround(qlt::Tracker& tracker, const Churn& churn)
{
    AssertionRecorder assertions; // a yaw reset that meets the identity reports its zero axis
    std::vector<std::thread> threads;
    for (int i = 0; i < 16; ++i)
    {
        threads.emplace_back([&] { Read(tracker); });
    }
    threads.emplace_back(
        [&]
        {
            for (int i = 0; i < 200; ++i)
            {
                EventLog listener;
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
    ManualClock clock;
    clock.KeepAwake();
    qlt::SimulatorTracker tracker(clock);
    const auto startAndStop = [&]
    {
        for (int i = 0; i < 100; ++i)
        {
            tracker.Start();
            std::this_thread::yield();
            tracker.Stop();
        }
    };
    Surround(tracker, startAndStop);
}

TEST(ThreadingTest, ReadersAndListenersBesideAHeadsetThatComesAndGoes)
{
    ScriptedHeadset headset;
    headset.clock.KeepAwake();
    headset.Start(headset.log);
    std::atomic<bool> done{false};
    // A read blocks whoever asks for the connection, so the reports keep coming until the end.
    std::thread hardware(
        [&]
        {
            for (std::uint32_t i = 0; !done || headset.host.opened < 3; ++i)
            {
                headset.host.Plug({});
                headset.host.QueueRead(ReportWriter(i), i % 50 == 49 ? 17 : 64);
                std::this_thread::yield();
            }
        });
    Surround(*headset.hmd, [] {});
    done = true;
    hardware.join();
    headset.End();
}
