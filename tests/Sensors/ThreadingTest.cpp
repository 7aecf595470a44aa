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

/// Sixteen that read and one whose listener comes and goes and who recentres.
struct Users
{
    explicit Users(qlt::Tracker& tracker)
    {
        for (int i = 0; i < 16; ++i)
        {
            threads.emplace_back([&] { Read(tracker); });
        }
        threads.emplace_back([&] { Recentre(tracker); });
    }
    static void Read(qlt::Tracker& tracker)
    {
        for (int i = 0; i < 2000; ++i)
        {
            ReadUnlockedReferences(tracker);
            tracker.GetPredictedOrientation(0.02f);
            tracker.GetPredictedPosition(0.02f);
            tracker.GetObjectOrientation(1);
            tracker.GetClientPosition();
            tracker.IsTracking();
            tracker.IsConnected();
        }
    }
    static void Recentre(qlt::Tracker& tracker)
    {
        for (int i = 0; i < 200; ++i)
        {
            EventLog listener;
            tracker.AddListener(listener);
            tracker.ResetYawOrigin();
            tracker.RemoveListener(listener);
        }
    }
    void Join()
    {
        for (std::thread& thread : threads)
        {
            thread.join();
        }
    }
    AssertionRecorder assertions; // a yaw reset that meets the identity reports its zero axis
    std::vector<std::thread> threads;
};

} // namespace

TEST(ThreadingTest, ReadersAndListenersBesideASimulatorThatStartsAndStops)
{
    ManualClock clock;
    clock.KeepAwake();
    qlt::SimulatorTracker tracker(clock);
    Users users(tracker);
    for (int i = 0; i < 100; ++i)
    {
        tracker.Start();
        std::this_thread::yield();
        tracker.Stop();
    }
    users.Join();
}

TEST(ThreadingTest, ReadersAndListenersBesideAHeadsetThatComesAndGoes)
{
    ScriptedHeadset headset;
    headset.clock.KeepAwake();
    headset.Start(headset.log);
    Users users(*headset.hmd);
    // A read blocks whoever asks for the connection, so the reports keep coming until the end.
    std::atomic<bool> done{false};
    std::thread hardware(
        [&]
        {
            for (std::uint32_t i = 0; !done || headset.host.opened < 3; ++i)
            {
                headset.host.QueueRead(ReportWriter(i), i % 50 == 49 ? 17 : 64);
                std::this_thread::yield();
            }
        });
    users.Join();
    done = true;
    hardware.join();
    headset.End();
}
