#include <qlt/Sensors/Tracker.h>
#include <qlt/qlt_c_api.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/EventLog.h"
#include "fakes/ExpectNear.h"

#include <gtest/gtest.h>

#include <functional>

namespace
{

using qlt::Quaternion;
using qlt::Vec3;
using Reports = std::vector<std::string>;

/// A tracker whose events the test raises on the test's own thread.
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

    std::atomic<int> runs{0}; // the runs that have ended

protected:
    void DoProcess() override
    {
        Until([this] { return ShouldStop(); });
        ++runs;
    }
};

/// A listener that does the same at every event.
struct ActingListener : qlt::TrackerListener
{
    void OnAccelerometerEvent(const Vec3&, float) override { act(); }
    void OnGyroscopeEvent(const Vec3&, float) override { act(); }
    void OnMagnetometerEvent(const Vec3&, float) override { act(); }
    void OnQuaternionEvent(const Quaternion&, float) override { act(); }
    void OnTemperatureEvent(float, float) override { act(); }
    void OnOrientationEvent(const Quaternion&, float) override { act(); }
    void OnPositionEvent(const Vec3&, float) override { act(); }
    std::function<void()> act;
};

class TrackerTest : public testing::Test
{
protected:
    /// The same tracker for the flat interface. A flat handle is the address of the object.
    qlt_Tracker* Flat()
    {
        return reinterpret_cast<qlt_Tracker*>(static_cast<qlt::Tracker*>(&tracker));
    }

    /// Recentres at this orientation. Only the assertions of the recentring remain recorded.
    void Recentre(const Quaternion& q)
    {
        tracker.NotifyOrientationEvent(q, 0);
        assertions.Take();
        qlt_Tracker_ResetYawOrigin(Flat());
    }

    AssertionRecorder assertions;
    TestTracker tracker;
};

} // namespace

TEST_F(TrackerTest, MisuseIsReportedWithItsPlaceAndGoesOn)
{
    qlt::TrackerListener listener;
    EXPECT_TRUE(tracker.Stop());
    EXPECT_EQ(assertions.Take(),
              (Reports{"IsTracking()|Sensors/Tracker|215", "mThread != nullptr|Sensors/Tracker|219",
                       "mClientThread != nullptr|Sensors/Tracker|226"}));
    tracker.RemoveListener(listener);
    tracker.AddListener(listener);
    tracker.AddListener(listener);
    tracker.RemoveListener(listener);
    EXPECT_EQ(assertions.Take(),
              (Reports{"mListeners->find(&listener) != mListeners->end()|Sensors/Tracker|176",
                       "mListeners->find(&listener) == mListeners->end()|Sensors/Tracker|167"}));
    EXPECT_TRUE(tracker.Start() && tracker.Start() && tracker.IsTracking());
    EXPECT_EQ(assertions.Take(), (Reports{"!IsTracking()|Sensors/Tracker|185",
                                          "mThread == nullptr|Sensors/Tracker|192",
                                          "mClientThread == nullptr|Sensors/Tracker|194"}));
    EXPECT_TRUE(tracker.Stop() && !tracker.IsTracking());
    EXPECT_EQ(tracker.runs, 2); // both threads obey the stop
    {
        TestTracker forgotten;
        forgotten.AddListener(listener);
        forgotten.Start();
    }
    EXPECT_EQ(assertions.Take(), (Reports{"mThread == nullptr|Sensors/Tracker|29",
                                          "mClientThread == nullptr|Sensors/Tracker|30",
                                          "mListeners->empty()|Sensors/Tracker|34"}));
}

TEST_F(TrackerTest, EventsWhileIdleAreReportedAndStillDelivered)
{
    tracker.NotifyAccelerometerEvent(Vec3(), 0);
    tracker.NotifyGyroscopeEvent(Vec3(), 0);
    tracker.NotifyMagnetometerEvent(Vec3(), 0);
    tracker.NotifyQuaternionEvent(Quaternion(), 0);
    tracker.NotifyTemperatureEvent(0, 0);
    tracker.NotifyPositionEvent(Vec3(1, 2, 3), 0);
    tracker.NotifyOrientationEvent(Quaternion(0.1f, 0.2f, 0.3f, 0.4f), 0);
    Reports expected;
    for (const char* line : {"252", "262", "272", "282", "292", "302", "314"})
    {
        expected.push_back(std::string("IsTracking()|Sensors/Tracker|") + line);
    }
    EXPECT_EQ(assertions.Take(), expected);
    EXPECT_EQ(Text(tracker.GetPosition()), "1 2 3");
    EXPECT_EQ(Text(tracker.GetOrientation()), "0.1 0.2 0.3 0.4");
    Vec3 position;
    Quaternion orientation;
    qlt_Tracker_GetPosition(Flat(), reinterpret_cast<qlt_Vec3*>(&position));
    qlt_Tracker_GetOrientation(Flat(), reinterpret_cast<qlt_Quaternion*>(&orientation));
    EXPECT_EQ(Text(position), "1 2 3");
    EXPECT_EQ(Text(orientation), "0.1 0.2 0.3 0.4");
}

TEST_F(TrackerTest, AListenerMayReadAndRecentre)
{
    std::vector<Quaternion> seen;
    OrientationListener listener;
    listener.call = [&](const Quaternion& q)
    {
        seen.push_back(q);
        EXPECT_EQ(Text(q), Text(tracker.GetOrientation()));
        tracker.ResetYawOrigin();
    };
    tracker.AddListener(listener);
    tracker.NotifyOrientationEvent(AboutY(0.7f), 0);
    tracker.NotifyOrientationEvent(AboutY(0.7f), 0);
    ExpectNear(seen.at(0), AboutY(0.7f), 0);
    ExpectNear(seen.at(1), Quaternion::Identity, 1e-6f);
    tracker.RemoveListener(listener);
}

// Listeners are called in the order of their addresses. Each writes down its number. The first one
// removes itself. At its first event, the third
// one removes the listener before it and the one after it, adds the last one, and raises the event
// once more.
TEST_F(TrackerTest, ListenersMayComeAndGoInsideEveryEvent)
{
    const std::function<void()> events[] = {
        [this] { tracker.NotifyAccelerometerEvent(Vec3(), 0); },
        [this] { tracker.NotifyGyroscopeEvent(Vec3(), 0); },
        [this] { tracker.NotifyMagnetometerEvent(Vec3(), 0); },
        [this] { tracker.NotifyQuaternionEvent(Quaternion(), 0); },
        [this] { tracker.NotifyTemperatureEvent(0, 0); },
        [this] { tracker.NotifyPositionEvent(Vec3(), 0); },
        [this] { tracker.NotifyOrientationEvent(Quaternion(), 0); }};
    for (const std::function<void()>& raise : events)
    {
        std::string called;
        ActingListener listeners[6];
        for (int i = 0; i < 6; ++i)
        {
            listeners[i].act = [&, i] { called += std::to_string(i); };
        }
        listeners[0].act = [&]
        {
            called += "0";
            tracker.RemoveListener(listeners[0]);
        };
        listeners[2].act = [&]
        {
            if ((called += "2") == "012")
            {
                tracker.RemoveListener(listeners[1]);
                tracker.RemoveListener(listeners[3]);
                tracker.AddListener(listeners[5]);
                raise();
            }
        };
        for (const int i : {2, 4, 0, 3, 1})
        {
            tracker.AddListener(listeners[i]);
        }
        raise();
        EXPECT_EQ(called, "0122454"); // "245" is the event inside the event
        raise();
        EXPECT_EQ(called, "0122454245");
        for (const int i : {2, 4, 5})
        {
            tracker.RemoveListener(listeners[i]);
        }
    }
    for (const std::string& report : assertions.TakeTexts())
    {
        EXPECT_EQ(report, "IsTracking()|Sensors/Tracker"); // the tracker is idle
    }
}

TEST_F(TrackerTest, ResettingTheYawKeepsPitchAndRollAndIsAppliedTwiceToAPrediction)
{
    const Quaternion pitchAndRoll = Quaternion::RotationQuaternion(0.4f, Vec3(1, 0, 0)) *
                                    Quaternion::RotationQuaternion(0.2f, Vec3(0, 0, 1));
    for (const float yaw : {0.7f, -2.5f})
    {
        Recentre(AboutY(yaw) * pitchAndRoll);
        EXPECT_EQ(assertions.Take(), Reports{});
        ExpectNear(tracker.GetOrientation(), pitchAndRoll, 1e-6f);
        Quaternion predicted;
        qlt_Tracker_GetPredictedOrientation(Flat(), reinterpret_cast<qlt_Quaternion*>(&predicted),
                                            1);
        ExpectNear(predicted, AboutY(-yaw) * pitchAndRoll, 1e-6f);
        ExpectNear(tracker.GetPredictedOrientation(1), predicted, 0);
        tracker.NotifyOrientationEvent(AboutY(yaw + 0.3f) * pitchAndRoll, 0);
        ExpectNear(tracker.GetOrientation(), AboutY(0.3f) * pitchAndRoll, 1e-6f);
    }
}

// The formulas report the same assertions every time for these orientations. The identity has no
// heading to turn. When the head looks straight up, its heading is only a rounding error. When it
// looks backward, half a turn about an axis of length zero is nearly the zero quaternion.
TEST_F(TrackerTest, DegenerateHeadingsAreReported)
{
    const std::string length = "length > FLT_EPSILON|Math/Vector";
    const std::pair<Quaternion, Reports> rows[] = {
        {Quaternion::Identity, {length}},
        {Quaternion(0.70710678f, 0.70710678f, 0, 0),
         {"!IsZero()|Math/Vector", length}}, // these two reports cause more of them
        {Quaternion(0, 0, 1, 0), {length, "norm > FLT_EPSILON|Math/Quaternion"}}};
    for (const auto& [orientation, expected] : rows)
    {
        Recentre(orientation);
        Reports reports = assertions.TakeTexts();
        reports.resize(expected.size());
        EXPECT_EQ(reports, expected);
    }
}
