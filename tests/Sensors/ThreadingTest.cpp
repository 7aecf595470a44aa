// Many threads use a running tracker. The test is mainly for the thread sanitizer.
#include <qlt/qlt_c_api.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedHeadset.h"

#include <gtest/gtest.h>

#include <future>

// These references follow the tracker without a lock, as the interface says. The readers use them
// only here, because the suppression of the sanitizer names this function.
__attribute__((noinline)) float ReadUnlockedReferences(const qlt::Tracker& tracker)
{
    return tracker.GetOrientation().x() + tracker.GetPosition().y();
}

// The device is lost and found while its tracker stops and starts and its user recentres.
TEST(ThreadingTest, SixteenThreadsReadWhileTheHeadsetAndAListenerComeAndGo)
{
    AssertionRecorder assertions; // a yaw reset at the identity reports a zero axis
    ScriptedHeadset headset;
    qlt::Tracker& tracker = *headset.hmd;
    // A flat handle is the address of the object.
    auto* const flat = reinterpret_cast<qlt_Tracker*>(&tracker);
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
            qlt::Quaternion q;
            qlt_Tracker_GetOrientation(flat, reinterpret_cast<qlt_Quaternion*>(&q));
            EXPECT_NEAR(q.w() * q.w() + q.x() * q.x() + q.y() * q.y() + q.z() * q.z(), 1.0f, 1e-4f);
        }
    };
    std::atomic<bool> done{false};
    // The reports keep coming until the end, because IsConnected waits for a read.
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
