// The poses of tracked objects, from the host service to the tracker's callers.
#include <qlt/Runtime/VRException.h>
#include <qlt/Sensors/Hmd.h>
#include <qlt/Sensors/SimulatorTracker.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/EventLog.h"
#include "fakes/HostServiceFixture.h"
#include "fakes/ManualClock.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cfloat>
#include <cmath>

namespace
{

using qlt::Quaternion;
using qlt::Vec3;
using Reports = std::vector<std::string>;

class ObjectPoseTest : public HostServiceFixture
{
protected:
    void StartConnected()
    {
        tracker.Start();
        ConnectAll();
    }

    ~ObjectPoseTest() override
    {
        if (tracker.IsTracking())
        {
            tracker.Stop();
        }
        EXPECT_EQ(assertions.Take(), Reports{});
    }

    void ExpectNothing(std::uint64_t index)
    {
        EXPECT_TRUE(tracker.GetObjectPosition(index).IsZero());
        const Quaternion q = tracker.GetObjectOrientation(index);
        EXPECT_TRUE(q.w() == 1 && q.x() == 0 && q.y() == 0 && q.z() == 0);
    }

    AssertionRecorder assertions;
    qlt::SimulatorTracker tracker;
};

} // namespace

TEST_F(ObjectPoseTest, ReachTheTrackerWhileTheServiceHasThem)
{
    ExpectNothing(0);
    tracker.Start();
    ExpectNothing(0);
    ConnectAll();
    EXPECT_EQ(tracker.GetObjectPosition(1).y(), 0.75f);
    EXPECT_EQ(tracker.GetObjectOrientation(1).x(), 1.0f);
    EXPECT_EQ(tracker.GetClientPosition().y(), 1.5f);
    const HostObject moved = {0, {7, 8, 9}, {0.5f, 0.5f, -0.5f, 0.5f}, 1};
    script.SetObjects(&moved, 1, 1);
    EXPECT_EQ(tracker.GetObjectPosition(0).z(), 9.0f);
    EXPECT_EQ(tracker.GetObjectOrientation(0).y(), -0.5f);
    script.Fail("VRHostDeviceScene_getCurrentDescriptor", 12); // none at the moment
    ExpectNothing(0);
    script.Fail("VRHostDeviceScene_getCurrentDescriptor", 0);
    Tell(HostSource::DEVICE, SCENE_WITHDRAWN);
    ASSERT_TRUE(HasConnections(3));
    ExpectNothing(0);
    Tell(HostSource::DEVICE, SCENE_AVAILABLE);
    EXPECT_EQ(tracker.GetClientPosition().x(), 7.0f);
    tracker.Stop();
    ExpectNothing(0);
    // And again with the next start.
    StartConnected();
    EXPECT_EQ(tracker.GetClientPosition().x(), 7.0f);
}

TEST_F(ObjectPoseTest, AnIndexPastTheCountHasNoPose)
{
    StartConnected();
    for (const std::uint64_t index : {2ull, 3ull, 0x0666666666666667ull, ~0ull})
    {
        ExpectNothing(index);
    }
    const HostObject object = {0, {7, 8, 9}, {1, 0, 0, 0}, 1};
    script.SetObjects(&object, 1, ~0ull);
    ExpectNothing(0x0666666666666667ull);
    EXPECT_EQ(tracker.GetObjectPosition(0).x(), 7.0f);
    script.SetObjects(nullptr, 0, 0);
    ExpectNothing(0);
}

TEST_F(ObjectPoseTest, APositionNeedsConfidenceAndAnOrientationDoesNot)
{
    const struct
    {
        float confidence;
        bool hasPosition;
    } rows[] = {
        {1.0f, true},  {FLT_EPSILON, true}, {std::nextafter(FLT_EPSILON, 0.0f), false},
        {0.0f, false}, {-1.0f, false},      {std::numeric_limits<float>::quiet_NaN(), true},
    };
    StartConnected();
    for (const auto& row : rows)
    {
        const HostObject object = {0, {7, 8, 9}, {0, 0, 1, 0}, row.confidence};
        script.SetObjects(&object, 1, 1);
        EXPECT_EQ(tracker.GetObjectPosition(0).x(), row.hasPosition ? 7.0f : 0.0f)
            << row.confidence;
        EXPECT_EQ(tracker.GetObjectOrientation(0).y(), 1.0f);
    }
}

TEST_F(ObjectPoseTest, FailuresOfADescriptorReachTheCaller)
{
    StartConnected();
    const auto expectFailure = [this](int status, const char* text)
    {
        try
        {
            tracker.GetObjectOrientation(0);
            FAIL() << text;
        }
        catch (const VRException& e)
        {
            EXPECT_EQ(e.status, status);
            EXPECT_STREQ(e.what(), text);
        }
        script.Reset();
    };
    script.GiveZero("VRHostDeviceScene_getCurrentDescriptor");
    expectFailure(2, "Error VR_STATUS_ERROR_NULL_PTR (2)");
    script.Fail("VRHost_getHandlePtr", 21);
    expectFailure(21, "Cannot get handle pointe");
    script.Fail("VRHostDeviceScene_returnDescriptor", 40);
    expectFailure(40, "Error VR_STATUS (40)");
    EXPECT_EQ(tracker.GetObjectOrientation(0).w(), 1.0f);
}

TEST_F(ObjectPoseTest, WithoutAManagerTheHeadIsTrackedAllTheSame)
{
    script.Fail("VRHostClientManager_create", 16);
    EXPECT_TRUE(tracker.Start());
    EXPECT_EQ(assertions.Take(), Reports{});
    ExpectNothing(0);
    EXPECT_TRUE(tracker.Stop());
    EXPECT_EQ(assertions.Take(), Reports{"mClientThread != nullptr|Sensors/Tracker|226"});
}

TEST_F(ObjectPoseTest, AManagerThatDoesNotStopReachesTheCallerOfStop)
{
    StartConnected();
    script.Fail("VRHostClientManager_stop", 16);
    EXPECT_THROW(tracker.Stop(), VRException);
    EXPECT_FALSE(tracker.IsTracking());
    script.Reset();
    StartConnected();
    EXPECT_EQ(tracker.GetClientPosition().y(), 1.5f);
}

TEST_F(ObjectPoseTest, MisuseOfStartKeepsOneConversation)
{
    {
        qlt::SimulatorTracker forgotten;
        forgotten.Start();
        forgotten.Start();
        EXPECT_EQ(assertions.Take(), (Reports{"!IsTracking()|Sensors/Tracker|185",
                                              "mThread == nullptr|Sensors/Tracker|192",
                                              "mClientThread == nullptr|Sensors/Tracker|194"}));
        EXPECT_EQ(script.Connected(), 1u);
        ConnectAll();
    }
    EXPECT_EQ(assertions.Take(), (Reports{"mThread == nullptr|Sensors/Tracker|29",
                                          "mClientThread == nullptr|Sensors/Tracker|30"}));
    EXPECT_EQ(script.Connected(), 0u);
}

TEST_F(ObjectPoseTest, TheHeadsetsPositionIsThatOfObjectZero)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    ScriptedUsbHost host;
    ManualClock clock;
    EventLog log;
    host.Plug({});
    {
        qlt::Hmd hmd(host, clock);
        clock.WaitForSleep(1);
        hmd.AddListener(log);
        hmd.Start();
        ConnectAll();
        host.QueueRead(ReportWriter(1).U32(44, 1000000));
        EXPECT_EQ(log.WaitFor(7)[5], "position 0.5 1.5 -2 @ 0");
        EXPECT_EQ(hmd.GetPosition().z(), -2.0f);
        host.WaitForIdleRead();
        host.Unplug();
        clock.KeepAwake();
        hmd.Stop();
        hmd.RemoveListener(log);
    }
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
}

// Readers see a whole pose or none, while the service comes and goes and the tracker with it.
TEST_F(ObjectPoseTest, ReadersMeetAStormOfAnnouncementsAndWithdrawals)
{
    std::atomic<bool> done{false};
    std::vector<std::thread> readers;
    for (int i = 0; i < 8; ++i)
    {
        readers.emplace_back(
            [&, i]
            {
                const auto index = static_cast<std::uint64_t>(i % 3);
                const float x = index == 0 ? 0.5f : 0.25f;
                while (!done)
                {
                    const Vec3 p = tracker.GetObjectPosition(index);
                    EXPECT_TRUE(p.IsZero() || (index < 2 && p.x() == x)) << p.x();
                    const Quaternion q = tracker.GetObjectOrientation(index);
                    EXPECT_EQ(q.w() + q.x(), 1.0f);
                    std::this_thread::yield();
                }
            });
    }
    for (int round = 0; round < 20; ++round)
    {
        tracker.Start();
        for (int storm = 0; storm < 20; ++storm)
        {
            for (const auto& [source, type] : {std::pair(HostSource::MANAGER, CLIENT_AVAILABLE),
                                               {HostSource::CLIENT, DEVICE_AVAILABLE},
                                               {HostSource::DEVICE, SCENE_AVAILABLE},
                                               {HostSource::DEVICE, CAMERA_AVAILABLE},
                                               {HostSource::DEVICE, SCENE_WITHDRAWN},
                                               {HostSource::DEVICE, SCENE_AVAILABLE},
                                               {HostSource::CLIENT, DEVICE_WITHDRAWN},
                                               {HostSource::MANAGER, CLIENT_WITHDRAWN}})
            {
                script.Notify(source, type);
                std::this_thread::yield();
            }
        }
        tracker.Stop();
        script.Reset();
    }
    done = true;
    for (std::thread& reader : readers)
    {
        reader.join();
    }
}
