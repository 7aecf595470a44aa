// Tests of the poses of tracked objects, from the host service to the callers of the tracker.
#include <qlt/Sensors/SimulatorTracker.h>
#include <qlt/qlt_c_api.h>

#include "Sensors/HostService/SceneDescriptor.h"

#include "fakes/AssertionRecorder.h"
#include "fakes/HostServiceFixture.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedHeadset.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <future>

namespace
{

using Reports = std::vector<std::string>;

constexpr const char* NOTHING = "0 0 0, 1 0 0 0";

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

    /// The pose through both interfaces. The flat one takes a shorter index, and its handle is the
    /// address of the tracker.
    std::string Pose(std::uint64_t index)
    {
        const qlt::Vec3 position = tracker.GetObjectPosition(index);
        const qlt::Quaternion orientation = tracker.GetObjectOrientation(index);
        const auto shortIndex = static_cast<std::int32_t>(index);
        if (static_cast<std::uint64_t>(shortIndex) == index)
        {
            auto* const flat = reinterpret_cast<qlt_Tracker*>(static_cast<qlt::Tracker*>(&tracker));
            qlt::Vec3 p;
            qlt::Quaternion q;
            qlt_Tracker_GetObjectPosition(flat, reinterpret_cast<qlt_Vec3*>(&p), shortIndex);
            qlt_Tracker_GetObjectOrientation(flat, reinterpret_cast<qlt_Quaternion*>(&q),
                                             shortIndex);
            EXPECT_EQ(Text(p), Text(position));
            EXPECT_EQ(Text(q), Text(orientation));
        }
        return Text(position) + ", " + Text(orientation);
    }

    AssertionRecorder assertions;
    qlt::SimulatorTracker tracker;
    const HostObject moved = {0, {7, 8, 9}, {0.5f, 0.5f, -0.5f, 0.5f}, 1};
};

} // namespace

// The bytes are in memory of exactly their size, so that a sanitizer sees a read past the end.
TEST(SceneDescriptorTest, AnObjectIsReadAtItsPlaceAndNothingOutsideTheCount)
{
    EXPECT_FALSE(qlt::ReadObjectPose(nullptr, 0));
    std::vector<unsigned char> bytes(32 + 40 * 2, 0xEE);
    const std::uint64_t count = 2;
    const float last[] = {1, -2, 3, 0.1f, -0.2f, 0.3f, -0.4f, 0.5f};
    std::memcpy(&bytes[24], &count, sizeof count);
    std::memcpy(&bytes[bytes.size() - sizeof last], last, sizeof last);
    const auto pose = qlt::ReadObjectPose(bytes.data(), 1);
    ASSERT_TRUE(pose.has_value());
    EXPECT_EQ(Text(pose->position), "1 -2 3");
    EXPECT_EQ(Text(pose->orientation), "0.1 -0.2 0.3 -0.4");
    EXPECT_EQ(pose->confidence, 0.5f);
    for (const std::uint64_t index : {2ull, 3ull, ~0ull})
    {
        EXPECT_FALSE(qlt::ReadObjectPose(bytes.data(), index));
    }
}

TEST_F(ObjectPoseTest, PosesReachTheTrackerWhileTheServiceHasThem)
{
    EXPECT_EQ(Pose(0), NOTHING);
    tracker.Start();
    EXPECT_EQ(Pose(0), NOTHING);
    ConnectAll();
    EXPECT_EQ(Pose(1), "0.25 0.75 -1, 0 1 0 0");
    EXPECT_EQ(Text(tracker.GetClientPosition()), "0.5 1.5 -2");
    script.SetObjects(&moved, 1, 1);
    EXPECT_EQ(Pose(0), "7 8 9, 0.5 0.5 -0.5 0.5");
    script.Fail("VRHostDeviceScene_getCurrentDescriptor", 12); // none at the moment
    EXPECT_EQ(Pose(0), NOTHING);
    script.Fail("VRHostDeviceScene_getCurrentDescriptor", 0);
    Tell({SCENE_WITHDRAWN});
    ASSERT_TRUE(HasConnections(3));
    EXPECT_EQ(Pose(0), NOTHING);
    Tell({SCENE_AVAILABLE});
    EXPECT_EQ(Text(tracker.GetClientPosition()), "7 8 9");
    tracker.Stop();
    EXPECT_EQ(Pose(0), NOTHING);
    StartConnected();
    EXPECT_EQ(Text(tracker.GetClientPosition()), "7 8 9");
}

TEST_F(ObjectPoseTest, AnIndexPastTheCountHasNoPose)
{
    StartConnected();
    for (const std::uint64_t index : {2ull, 3ull, 0x0666666666666667ull, ~0ull})
    {
        EXPECT_EQ(Pose(index), NOTHING);
    }
    // The offsets of these indices wrap around to the first bytes of the descriptor itself.
    script.SetObjects(&moved, 1, ~0ull);
    for (const std::uint64_t index : {0x0666666666666666ull, 0x0666666666666667ull, ~0ull - 1})
    {
        EXPECT_EQ(Pose(index), NOTHING);
    }
    EXPECT_EQ(Pose(0), "7 8 9, 0.5 0.5 -0.5 0.5");
    script.SetObjects(nullptr, 0, 0);
    EXPECT_EQ(Pose(0), NOTHING);
}

TEST_F(ObjectPoseTest, APositionNeedsConfidenceAndAnOrientationDoesNot)
{
    StartConnected();
    for (const auto& [confidence, hasPosition] : {std::pair(1.0f, true),
                                                  {FLT_EPSILON, true},
                                                  {std::nextafter(FLT_EPSILON, 0.0f), false},
                                                  {0.0f, false},
                                                  {-1.0f, false},
                                                  {std::numeric_limits<float>::quiet_NaN(), true}})
    {
        HostObject object = moved;
        object.confidence = confidence;
        script.SetObjects(&object, 1, 1);
        EXPECT_EQ(Pose(0), hasPosition ? "7 8 9, 0.5 0.5 -0.5 0.5" : "0 0 0, 0.5 0.5 -0.5 0.5");
    }
}

TEST_F(ObjectPoseTest, FailuresOfADescriptorReachTheCaller)
{
    StartConnected();
    const auto read = [this] { tracker.GetObjectOrientation(0); };
    script.Fail("VRHostDeviceScene_getCurrentDescriptor", HostServiceScript::ZERO);
    EXPECT_EQ(FailureOf(read), "2 Error VR_STATUS_ERROR_NULL_PTR (2)");
    script.Fail("VRHost_getHandlePtr", 21); // null data is checked before the handle
    EXPECT_EQ(FailureOf(read), "2 Error VR_STATUS_ERROR_NULL_PTR (2)");
    EXPECT_EQ(script.Lent(), 0u);
    script.Reset();
    script.Fail("VRHost_getHandlePtr", 21);
    EXPECT_EQ(FailureOf(read), "21 Cannot get handle pointe");
    script.Reset();
    script.Fail("VRHostDeviceScene_returnDescriptor", 40);
    EXPECT_EQ(FailureOf(read), "40 Error VR_STATUS (40)");
    script.Reset();
    EXPECT_EQ(FailureOf(read), "");
}

TEST_F(ObjectPoseTest, WithoutAManagerTheHeadIsStillTracked)
{
    script.Fail("VRHostClientManager_create", 16);
    EXPECT_TRUE(tracker.Start());
    EXPECT_EQ(assertions.Take(), Reports{});
    EXPECT_EQ(Pose(0), NOTHING);
    EXPECT_TRUE(tracker.Stop());
    EXPECT_EQ(assertions.Take(), Reports{"mClientThread != nullptr|Sensors/Tracker|226"});
}

TEST_F(ObjectPoseTest, AFailureToStopTheManagerReachesTheCallerOfStop)
{
    StartConnected();
    script.Fail("VRHostClientManager_stop", 16);
    EXPECT_THROW(tracker.Stop(), VRException);
    EXPECT_FALSE(tracker.IsTracking());
    script.Reset();
    StartConnected();
    EXPECT_EQ(Pose(1), "0.25 0.75 -1, 0 1 0 0");
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
    ScriptedHeadset headset;
    headset.Start(headset.log);
    ConnectAll();
    headset.Deliver(ReportWriter(1).U32(44, 1000000));
    EXPECT_EQ(headset.log.WaitFor(7)[5], "position 0.5 1.5 -2 @ 0");
    EXPECT_EQ(Text(headset.hmd->GetPosition()), "0.5 1.5 -2");
    headset.End();
}

// Readers see a whole pose or none while the service and the tracker come and go.
TEST_F(ObjectPoseTest, ReadersSurviveAStormOfAnnouncementsAndWithdrawals)
{
    std::atomic<bool> done{false};
    std::vector<std::future<void>> readers;
    const auto read = [&](std::uint64_t index)
    {
        const float x = index == 0 ? 0.5f : 0.25f;
        while (!done)
        {
            const qlt::Vec3 p = tracker.GetObjectPosition(index);
            EXPECT_TRUE(p.IsZero() || (index < 2 && p.x() == x)) << p.x();
            const qlt::Quaternion q = tracker.GetObjectOrientation(index);
            EXPECT_EQ(q.w() + q.x(), 1.0f);
            std::this_thread::yield();
        }
    };
    for (std::uint64_t i = 0; i < 8; ++i)
    {
        readers.push_back(std::async(std::launch::async, read, i % 3));
    }
    for (int storm = 0; storm < 400; ++storm)
    {
        if (storm % 20 == 0)
        {
            tracker.Start();
        }
        for (const News& news :
             {CLIENT_AVAILABLE, DEVICE_AVAILABLE, SCENE_AVAILABLE, CAMERA_AVAILABLE,
              SCENE_WITHDRAWN, SCENE_AVAILABLE, DEVICE_WITHDRAWN, CLIENT_WITHDRAWN})
        {
            Notify(news);
            std::this_thread::yield();
        }
        if (storm % 20 == 19)
        {
            tracker.Stop();
            script.Reset();
        }
    }
    done = true;
    readers.clear(); // waits for them
}
