#include <qlt/Sensors/Tracker.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/EventLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

namespace
{

using qlt::Quaternion;
using qlt::Vec3;
using Reports = std::vector<std::string>;

/// A tracker whose events the test raises, on its own thread.
class TestTracker : public qlt::Tracker
{
public:
    ~TestTracker() override { EndProcessing(); }

    using qlt::Tracker::NotifyAccelerometerEvent;
    using qlt::Tracker::NotifyGyroscopeEvent;
    using qlt::Tracker::NotifyMagnetometerEvent;
    using qlt::Tracker::NotifyOrientationEvent;
    using qlt::Tracker::NotifyPositionEvent;
    using qlt::Tracker::NotifyQuaternionEvent;
    using qlt::Tracker::NotifyTemperatureEvent;

    std::atomic<int> runs{0};
    std::atomic<int> running{0};

protected:
    void DoProcess() override
    {
        ++runs;
        ++running;
        while (!ShouldStop())
        {
            std::this_thread::yield();
        }
        --running;
    }
};

class TrackerTest : public testing::Test
{
protected:
    void Orient(const Quaternion& q)
    {
        tracker.Start();
        tracker.NotifyOrientationEvent(q, 0.0f);
        tracker.Stop();
    }

    AssertionRecorder assertions;
    TestTracker tracker;
};

/// Where an orientation turns forward.
Vec3 Heading(const Quaternion& q) { return Quaternion::Rotate(q, Vec3(0, 0, -1)); }

} // namespace

TEST_F(TrackerTest, StartsIdleAtTheOrigin)
{
    EXPECT_FALSE(tracker.IsTracking());
    EXPECT_TRUE(tracker.IsConnected());
    EXPECT_EQ(tracker.GetOrientation().w(), 1.0f);
    EXPECT_TRUE(tracker.GetPosition().IsZero());
    EXPECT_EQ(tracker.GetObjectOrientation(0).w(), 1.0f);
    EXPECT_TRUE(tracker.GetObjectPosition(~0ull).IsZero());
    EXPECT_TRUE(tracker.GetClientPosition().IsZero());
    EXPECT_EQ(sizeof(std::atomic<bool>), 1u);
}

TEST_F(TrackerTest, RunsItsProcessOncePerStart)
{
    for (int i = 1; i <= 3; ++i)
    {
        EXPECT_TRUE(tracker.Start());
        EXPECT_TRUE(tracker.IsTracking());
        EXPECT_TRUE(tracker.Stop());
        EXPECT_FALSE(tracker.IsTracking());
        EXPECT_EQ(tracker.runs, i);
    }
}

TEST_F(TrackerTest, MisuseIsReportedWithItsPlaceAndGoesOn)
{
    qlt::TrackerListener listener;
    EXPECT_TRUE(tracker.Stop());
    EXPECT_EQ(assertions.Take(),
              (Reports{"IsTracking()|Sensors/Tracker|215", "mThread != nullptr|Sensors/Tracker|219",
                       "mClientThread != nullptr|Sensors/Tracker|226"}));
    tracker.RemoveListener(listener);
    EXPECT_EQ(assertions.Take(),
              Reports{"mListeners->find(&listener) != mListeners->end()|Sensors/Tracker|176"});
    tracker.AddListener(listener);
    tracker.AddListener(listener);
    EXPECT_EQ(assertions.Take(),
              Reports{"mListeners->find(&listener) == mListeners->end()|Sensors/Tracker|167"});
    tracker.RemoveListener(listener);
    EXPECT_EQ(assertions.Take(), Reports{});
}

TEST_F(TrackerTest, EventsWhileIdleAreReportedAndStillDelivered)
{
    const Vec3 v(1, 2, 3);
    const Quaternion q(0, 1, 0, 0);
    tracker.NotifyAccelerometerEvent(v, 0);
    tracker.NotifyGyroscopeEvent(v, 0);
    tracker.NotifyMagnetometerEvent(v, 0);
    tracker.NotifyQuaternionEvent(q, 0);
    tracker.NotifyTemperatureEvent(1, 0);
    tracker.NotifyPositionEvent(v, 0);
    tracker.NotifyOrientationEvent(q, 0);
    Reports expected;
    for (const char* line : {"252", "262", "272", "282", "292", "302", "314"})
    {
        expected.push_back(std::string("IsTracking()|Sensors/Tracker|") + line);
    }
    EXPECT_EQ(assertions.Take(), expected);
    EXPECT_EQ(tracker.GetPosition().z(), 3.0f);
    EXPECT_EQ(tracker.GetOrientation().x(), 1.0f);
}

TEST_F(TrackerTest, ASecondStartRunsBesideTheFirstAndBothObeyTheStop)
{
    tracker.Start();
    EXPECT_TRUE(tracker.Start());
    EXPECT_EQ(assertions.Take(), (Reports{"!IsTracking()|Sensors/Tracker|185",
                                          "mThread == nullptr|Sensors/Tracker|192",
                                          "mClientThread == nullptr|Sensors/Tracker|194"}));
    EXPECT_TRUE(tracker.Stop());
    EXPECT_EQ(tracker.runs, 2);
    EXPECT_EQ(tracker.running, 0);
}

TEST_F(TrackerTest, DestructionWhileStartedOrWithListenersIsReported)
{
    qlt::TrackerListener listener;
    {
        TestTracker forgotten;
        forgotten.AddListener(listener);
        forgotten.Start();
    }
    EXPECT_EQ(assertions.Take(), (Reports{"mThread == nullptr|Sensors/Tracker|29",
                                          "mClientThread == nullptr|Sensors/Tracker|30",
                                          "mListeners->empty()|Sensors/Tracker|34"}));
}

TEST_F(TrackerTest, ListenersAreCalledInTheOrderOfTheirAddresses)
{
    struct Numbered : qlt::TrackerListener
    {
        void OnTemperatureEvent(float, float) override { order->push_back(number); }
        std::vector<int>* order = nullptr;
        int number = 0;
    };
    std::vector<int> order;
    Numbered listeners[3];
    for (const int i : {2, 0, 1})
    {
        listeners[i].order = &order;
        listeners[i].number = i;
        tracker.AddListener(listeners[i]);
    }
    tracker.Start();
    tracker.NotifyTemperatureEvent(20, 0);
    tracker.Stop();
    for (Numbered& listener : listeners)
    {
        tracker.RemoveListener(listener);
    }
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

TEST_F(TrackerTest, EveryEventReachesItsOwnCallWithItsValuesAndTime)
{
    EventLog log;
    tracker.AddListener(log);
    tracker.Start();
    tracker.NotifyAccelerometerEvent(Vec3(1, 2, 3), 0.5f);
    tracker.NotifyGyroscopeEvent(Vec3(4, 5, 6), 1.5f);
    tracker.NotifyMagnetometerEvent(Vec3(7, 8, 9), 2.5f);
    tracker.NotifyQuaternionEvent(Quaternion(1, 2, 3, 4), 3.5f);
    tracker.NotifyTemperatureEvent(31, 4.5f);
    tracker.NotifyPositionEvent(Vec3(-1, -2, -3), 5.5f);
    tracker.NotifyOrientationEvent(Quaternion(0, 0, 0, 1), 6.5f);
    tracker.Stop();
    tracker.RemoveListener(log);
    EXPECT_EQ(log.WaitFor(7), (Reports{"accelerometer 1 2 3 @ 0.5", "gyroscope 4 5 6 @ 1.5",
                                       "magnetometer 7 8 9 @ 2.5", "quaternion 1 2 3 4 @ 3.5",
                                       "temperature 31 @ 4.5", "position -1 -2 -3 @ 5.5",
                                       "orientation 0 0 0 1 @ 6.5"}));
}

TEST_F(TrackerTest, ListenersSeeTheRecentredOrientationButTheDevicesOwnQuaternion)
{
    struct Eye : qlt::TrackerListener
    {
        void OnQuaternionEvent(const Quaternion& q, float) override { device = q; }
        void OnOrientationEvent(const Quaternion& q, float) override { recentred = q; }
        Quaternion device;
        Quaternion recentred;
    };
    const Quaternion raw = Quaternion::RotationQuaternion(0.7f, Vec3(0, 1, 0));
    Orient(raw);
    tracker.ResetYawOrigin();
    Eye eye;
    tracker.AddListener(eye);
    tracker.Start();
    tracker.NotifyQuaternionEvent(raw, 0.0f);
    tracker.NotifyOrientationEvent(raw, 0.0f);
    tracker.Stop();
    tracker.RemoveListener(eye);
    EXPECT_EQ(eye.device.y(), raw.y());
    EXPECT_NEAR(eye.recentred.y(), 0.0f, 1e-6f);
}

TEST_F(TrackerTest, AListenerMayReadAndRecentreInsideACall)
{
    struct Reader : qlt::TrackerListener
    {
        explicit Reader(TestTracker& t)
            : tracker(t)
        {
        }
        void OnOrientationEvent(const Quaternion& q, float time) override
        {
            same = tracker.GetOrientation().y() == q.y() && time == 7.0f;
            tracker.ResetYawOrigin();
            recentred = Heading(tracker.GetOrientation());
        }
        TestTracker& tracker;
        bool same = false;
        Vec3 recentred;
    };
    Reader reader(tracker);
    tracker.AddListener(reader);
    tracker.Start();
    tracker.NotifyOrientationEvent(Quaternion::RotationQuaternion(0.7f, Vec3(0, 1, 0)), 7.0f);
    tracker.Stop();
    tracker.RemoveListener(reader);
    EXPECT_TRUE(reader.same);
    EXPECT_NEAR(reader.recentred.z(), -1.0f, 1e-6f);
}

TEST_F(TrackerTest, ResettingTheYawKeepsPitchAndRollAndPersists)
{
    const Quaternion pitchAndRoll = Quaternion::RotationQuaternion(0.4f, Vec3(1, 0, 0)) *
                                    Quaternion::RotationQuaternion(0.2f, Vec3(0, 0, 1));
    for (const float yaw : {0.7f, -2.5f})
    {
        const Quaternion raw = Quaternion::RotationQuaternion(yaw, Vec3(0, 1, 0)) * pitchAndRoll;
        Orient(raw);
        tracker.ResetYawOrigin();
        for (int again = 0; again < 2; ++again)
        {
            const Quaternion q = tracker.GetOrientation();
            EXPECT_NEAR(q.w(), pitchAndRoll.w(), 1e-6f);
            EXPECT_NEAR(q.x(), pitchAndRoll.x(), 1e-6f);
            EXPECT_NEAR(q.y(), pitchAndRoll.y(), 1e-6f);
            EXPECT_NEAR(q.z(), pitchAndRoll.z(), 1e-6f);
            Orient(raw);
        }
    }
    EXPECT_EQ(assertions.Take(), Reports{});
}

TEST_F(TrackerTest, TheYawOriginEntersAPredictionTwice)
{
    Orient(Quaternion::RotationQuaternion(0.5f, Vec3(0, 1, 0)));
    tracker.ResetYawOrigin();
    const Quaternion predicted = tracker.GetPredictedOrientation(1.0f);
    EXPECT_NEAR(predicted.w(), std::cos(0.25f), 1e-6f);
    EXPECT_NEAR(predicted.y(), -std::sin(0.25f), 1e-6f);
}

// What the formulas give where there is no heading, or none to turn: the same every time, reported.
TEST_F(TrackerTest, DegenerateHeadingsAreReported)
{
    const std::string zero = "!IsZero()|Math/Vector";
    const std::string length = "length > FLT_EPSILON|Math/Vector";
    const float h = std::sqrt(0.5f);
    tracker.ResetYawOrigin();
    EXPECT_EQ(assertions.TakeTexts(), Reports{length});
    EXPECT_EQ(tracker.GetOrientation().w(), 1.0f);

    Orient(Quaternion(h, h, 0, 0)); // straight up, and what is left of the heading is rounding
    tracker.ResetYawOrigin();
    const Reports up = assertions.TakeTexts();
    ASSERT_EQ(up.size(), 3u);
    EXPECT_EQ(up[0], zero);
    EXPECT_EQ(up[1], length);

    // Backward: half a turn about an axis of length zero is the zero quaternion, or nearly.
    Orient(Quaternion(0, 0, 1, 0));
    tracker.ResetYawOrigin();
    EXPECT_EQ(assertions.TakeTexts(), (Reports{length, "norm > FLT_EPSILON|Math/Quaternion"}));
}
