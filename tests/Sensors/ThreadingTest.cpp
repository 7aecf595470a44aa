// A running tracker among many threads; what it finds, it finds under the thread sanitizer.
#include "fakes/AssertionRecorder.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedHeadset.h"

#include <gtest/gtest.h>

#include <future>

// By interface these references follow the tracker, without a lock. The one place where the readers
// here follow them, so that the sanitizer's suppression names it and nothing else.
__attribute__((noinline)) float ReadUnlockedReferences(const qlt::Tracker& tracker)
{
    return tracker.GetOrientation().x() + tracker.GetPosition().y();
}

// The device is lost and found while its tracker stops and starts, and its user recentres.
TEST(ThreadingTest, SixteenReadersBesideAHeadsetThatComesAndGoesAndAListenerThatDoes)
{
    AssertionRecorder assertions; // a yaw reset that meets the identity reports its zero axis
    ScriptedHeadset headset;
    qlt::Tracker& tracker = *headset.hmd;
    headset.clock.KeepAwake();
    headset.Start(headset.log);
    const auto read = [&]
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
    };
    std::atomic<bool> done{false};
    // A read blocks whoever asks for the connection, so the reports keep coming until the end.
    const auto report = [&]
    {
        for (std::uint32_t i = 0; !done || headset.host.opened < 3; ++i)
        {
            headset.host.QueueRead(ReportWriter(i), i % 50 == 49 ? 17 : 64);
            std::this_thread::yield();
        }
    };
    const auto hardware = std::async(std::launch::async, report);
    std::vector<std::future<void>> readers(16);
    for (auto& reader : readers)
    {
        reader = std::async(std::launch::async, read);
    }
    for (int i = 0; i < 100; ++i)
    {
        tracker.Stop();
        EventLog listener;
        tracker.AddListener(listener);
        tracker.Start();
        tracker.ResetYawOrigin();
        tracker.RemoveListener(listener);
    }
    readers.clear(); // waits for them
    done = true;
    hardware.wait();
    headset.End();
}
