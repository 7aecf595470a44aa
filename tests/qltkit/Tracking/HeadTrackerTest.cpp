#include <qltkit/Tracking/HeadTracker.h>

#include <qlt/Sensors/SensorReport.h>
#include <qltkit/Error.h>
#include <qltkit/Headset/ScriptedHeadset.h>
#include <qltkit/Headset/SoftwareHeadset.h>

#include "Tracking/SeqlockRing.h"
#include "fakes/ManualClock.h"
#include "fakes/ReportWriter.h"
#include "fakes/ScriptedUsbHost.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <thread>

namespace
{

using qlt::Quaternion;
using qlt::Vec3;
using qltkit::HeadTracker;
using qltkit::HeadTrackerOptions;
using qltkit::Pose;
using qltkit::PoseFilter;
using qltkit::PoseState;
using qltkit::TrackerEvent;

constexpr std::int64_t MS = 1000000;

HeadTrackerOptions CoreOptions()
{
    HeadTrackerOptions options;
    options.filter = PoseFilter::Core;
    return options;
}

/// A tracker with a scripted headset, which is plugged in, and with a clock that the test moves.
struct TrackedHead
{
    explicit TrackedHead(const HeadTrackerOptions& options = CoreOptions())
    {
        clock.nowNs = 5000 * MS;
        host.Plug({});
        tracker.emplace(host, clock, options);
        clock.WaitForSleep(1); // the tracker has looked for the headset
    }

    ~TrackedHead()
    {
        host.Unplug();
        clock.KeepAwake();
    }

    /// Makes a report arrive now. The tracker has processed it when this returns.
    void Deliver(const ReportWriter& report)
    {
        host.QueueRead(report);
        host.WaitForIdle();
    }

    /// The next report, a millisecond after the last one.
    void DeliverNext()
    {
        clock.nowNs += MS;
        ++sequence;
        Deliver(ReportWriter(sequence, sequence * 1000));
    }

    void WaitForState(PoseState state)
    {
        Until([&] { return tracker->Latest().state == state; });
    }

    std::uint32_t sequence = 0;
    ScriptedUsbHost host;
    ManualClock clock;
    std::optional<HeadTracker> tracker;
};

struct CountingSink final : qltkit::ReportSink
{
    void OnReport(const qlt::SensorReport&, std::int64_t) override { ++reports; }
    void OnLost(std::int64_t) override { ++losses; }

    std::ptrdiff_t reports = 0; // read it only while no report is in flight
    std::ptrdiff_t losses = 0;
};

std::string NameOf(const TrackerEvent& event)
{
    switch (event.kind)
    {
    case TrackerEvent::Kind::Connected:
        return "connected ";
    case TrackerEvent::Kind::Lost:
        return "lost ";
    case TrackerEvent::Kind::Back:
        return "back ";
    default:
        return "gap" + std::to_string(event.reports) + " ";
    }
}

/// The events of a tracker that follows the script to its end, and the counts of its sink. A
/// handler gets the same events as PollEvent.
std::string Follow(const qltkit::HeadsetScript& script)
{
    auto owned =
        std::make_unique<qltkit::ScriptedHeadset>(script, qltkit::ScriptedHeadset::Pace::Fastest);
    const qltkit::ScriptedHeadset& headset = *owned;
    CountingSink sink;
    HeadTrackerOptions options = CoreOptions();
    options.sink = &sink;
    std::string polled;
    std::string handled;
    HeadTracker tracker(std::move(owned), options);
    std::atomic<std::size_t> count{0};
    tracker.SetEventHandler(
        [&](const TrackerEvent& event)
        {
            handled += NameOf(event);
            count = handled.size();
        });
    Until([&] { return headset.IsOver() && tracker.Latest().state == PoseState::Lost; });
    while (const std::optional<TrackerEvent> event = tracker.PollEvent())
    {
        polled += NameOf(*event);
    }
    Until([&] { return count >= polled.size(); });
    tracker.SetEventHandler(nullptr);
    EXPECT_EQ(handled, polled);
    return polled + std::to_string(sink.reports) + " " + std::to_string(sink.losses);
}

float AngleBetween(const Quaternion& a, const Quaternion& b)
{
    const Quaternion d = a.Conjugate() * b;
    return 2.0f * std::atan2(d.v().Length(), std::fabs(d.w()));
}

/// The world's up direction in head coordinates, which shows pitch and roll without the heading.
Vec3 UpInHead(const Quaternion& q) { return Quaternion::Rotate(q.Conjugate(), Vec3(0, 1, 0)); }

} // namespace

// Every script ends with an unplugged headset. The numbers are the reports and the losses of a
// sink.
TEST(HeadTrackerTest, EveryUnplugGivesOneLostEventAndOneBackEvent)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "connected lost 50 1"},
        {R"({"at": 0.01, "event": "unplug"}, {"at": 0.02, "event": "plug"})",
         "connected lost back lost 40 2"},
        // It is unplugged again before a report has arrived.
        {R"({"at": 0.01, "event": "unplug"}, {"at": 0.02, "event": "plug"},
            {"at": 0.02, "event": "stall", "for": 9}, {"at": 0.03, "event": "unplug"},
            {"at": 0.04, "event": "plug"})",
         "connected lost back lost 20 3"},
        {R"({"at": 0, "event": "unplug"}, {"at": 0.02, "event": "plug"})", "connected lost 30 1"},
        {R"({"at": 0.01, "event": "short_read", "length": 63})", "connected lost back lost 49 2"},
        {R"({"at": 0.01, "event": "drop", "count": 3})", "connected gap3 lost 47 1"},
        {R"({"at": 0.01, "event": "repeat", "count": 2})", "connected lost 52 1"},
        {R"({"at": 0.01, "event": "sequence_jump", "by": -5})", "connected lost 50 1"},
        // Reports that an unplug loses are no gap.
        {R"({"at": 0.01, "event": "drop", "count": 10}, {"at": 0.02, "event": "unplug"},
            {"at": 0.03, "event": "plug"})",
         "connected lost back lost 30 2"},
    };
    for (const auto& [events, expected] : cases)
    {
        EXPECT_EQ(Follow(qltkit::ParseHeadsetScript(
                      R"({"motion": {"kind": "rest"}, "seconds": 0.05, "events": [)" +
                      std::string(events) + "]}")),
                  expected)
            << events;
    }
    EXPECT_EQ(Follow(qltkit::LoadHeadsetScript(QLT_SCRIPTS "/bad_cable.json")),
              "connected lost back lost back gap1000 lost back gap400 lost back lost 21601 5");
}

// The poses at the end of each shipped script, half a second before it, and 50 ms after it. They
// were computed once, and every system gives the same digits. A deliberate change of the tracking
// changes them; compare its quality with scripts/bench_tracking.sh first.
TEST(HeadTrackerTest, EachShippedScriptGivesItsPoses)
{
    const auto text = [](const char* format, auto... values)
    {
        char line[160];
        std::snprintf(line, sizeof line, format, values...);
        return std::string(line);
    };
    const auto describe = [&text](const Pose& p)
    {
        const Quaternion& q = p.orientation;
        const Vec3& v = p.angularVelocity;
        return text("%.6f %.6f %.6f %.6f, %.6f %.6f %.6f\n", q.w(), q.x(), q.y(), q.z(), v.x(),
                    v.y(), v.z()) +
               text("%lld %lld %u %u\n", static_cast<long long>(p.timeNs / 1000),
                    static_cast<long long>(p.deviceTimeUs), static_cast<unsigned>(p.reportNumber),
                    p.sequence);
    };
    const std::pair<const char*, const char*> scripts[] = {
        {"still", "0.0000969 0.0002295 0.0004507 0.0001840\n"
                  "1.000000 0.000020 -0.000047 -0.000013, -0.001685 -0.001623 -0.001007\n"
                  "29499000 30499000 29500 29500\n"
                  "1.000000 -0.000003 -0.000047 -0.000018, -0.001132 0.002642 -0.001002\n"
                  "29999000 30999000 30000 30000\n"
                  "1.000000 -0.000036 0.000030 -0.000047, -0.001132 0.002642 -0.001002\n"
                  "30049000 31049000 30000 30000\n"},
        {"conversation", "0.0001320 0.0007168 0.0031991 0.0004553\n"
                         "1.000000 -0.000004 0.000557 0.000018, -0.001712 -0.002420 -0.001066\n"
                         "29499000 30499000 29500 29500\n"
                         "1.000000 -0.000012 0.000565 0.000035, 0.000951 -0.000821 -0.000532\n"
                         "29999000 30999000 30000 30000\n"
                         "1.000000 0.000014 0.000543 0.000022, 0.000951 -0.000821 -0.000532\n"
                         "30049000 31049000 30000 30000\n"},
        {"fast_game", "0.0036503 0.0308407 0.1211956 0.0199324\n"
                      "0.711854 -0.000330 0.702327 0.000086, 0.001117 -1.472240 0.002165\n"
                      "29499800 30500979 29276 29501\n"
                      "0.846775 -0.000240 0.531951 0.000145, 0.001135 -0.273734 -0.001588\n"
                      "29999800 31001000 29777 30002\n"
                      "0.849973 -0.000098 0.526825 -0.000952, 0.001135 -0.273734 -0.001588\n"
                      "30049800 31051000 29777 30002\n"},
        {"bad_cable", "0.0010669 0.0040556 0.0131278 0.0032660\n"
                      "0.945260 0.000007 0.326319 -0.000420, 0.000172 0.962995 -0.001192\n"
                      "27499000 9499000 21101 8500\n"
                      "0.847565 0.000091 0.530691 -0.000454, 0.000705 0.696678 -0.000123\n"
                      "27999000 9999000 21601 9000\n"
                      "0.838600 0.000130 0.544748 -0.000446, 0.000705 0.696678 -0.000123\n"
                      "28049000 10049000 21601 9000\n"},
        {"hot_room", "0.0003274 0.0010431 0.0036230 0.0015383\n"
                     "-0.683713 -0.017303 -0.729409 -0.014122, 0.004832 0.526702 0.004280\n"
                     "59499800 60503939 59504 59504\n"
                     "-0.574786 -0.014844 -0.817972 -0.017951, 0.002764 0.624691 0.006686\n"
                     "59999800 61004000 60005 60005\n"
                     "-0.562087 -0.014748 -0.826746 -0.018219, 0.002764 0.624691 0.006686\n"
                     "60049800 61054000 60005 60005\n"},
    };
    for (const auto& [name, expected] : scripts)
    {
        auto owned = std::make_unique<qltkit::ScriptedHeadset>(
            qltkit::LoadHeadsetScript(QLT_SCRIPTS "/" + std::string(name) + ".json"),
            qltkit::ScriptedHeadset::Pace::Fastest);
        const qltkit::ScriptedHeadset& headset = *owned;
        const HeadTracker tracker(std::move(owned));
        Until([&] { return headset.IsOver() && tracker.Latest().state == PoseState::Lost; });
        const Pose last = tracker.Latest();
        std::string poses = text("%.7f %.7f %.7f %.7f\n", tracker.PredictionError(0.02),
                                 tracker.PredictionError(0.05), tracker.PredictionError(0.1),
                                 tracker.RecentPredictionError(0.05));
        for (const std::int64_t ms : {-500, 0, 50})
        {
            poses += describe(tracker.At(last.timeNs + ms * MS));
        }
        EXPECT_EQ(poses, expected) << name;
    }
}

TEST(HeadTrackerTest, ReadersDoNotWaitForAStalledReadNorForAHandler)
{
    TrackedHead head;
    EXPECT_EQ(head.tracker->Latest().state, PoseState::NeverSeen);
    EXPECT_TRUE(head.tracker->At(0).clamped);
    EXPECT_FALSE(head.tracker->Recentre());
    std::atomic<bool> released{false};
    std::atomic<bool> called{false};
    head.tracker->SetEventHandler(
        [&](const TrackerEvent&)
        {
            called = true;
            Until([&] { return released.load(); });
        });
    head.DeliverNext();
    Until([&] { return called.load(); });
    const Pose last = head.tracker->Latest();
    EXPECT_EQ(last.state, PoseState::Tracking);

    head.clock.nowNs += 10000 * MS;
    head.WaitForState(PoseState::Held);
    constexpr int CALLS = 2000;
    std::atomic<int> slow{0};
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 16; ++reader)
    {
        readers.emplace_back(
            [&, reader]
            {
                for (int i = 0; i < CALLS; ++i)
                {
                    const auto start = std::chrono::steady_clock::now();
                    const Pose pose = i % 2 == 0 ? head.tracker->Latest()
                                                 : head.tracker->At(last.timeNs + reader * 20 * MS);
                    slow += std::chrono::steady_clock::now() - start > std::chrono::milliseconds(1);
                    head.tracker->PollEvent();
                    if (i % 16 == 0)
                    {
                        head.tracker->Recentre();
                    }
                    if (pose.state != PoseState::Held || pose.sinceNs != last.timeNs)
                    {
                        ADD_FAILURE() << "The tracker did not hold the last pose.";
                        return;
                    }
                }
            });
    }
    for (std::thread& reader : readers)
    {
        reader.join();
    }
    // Sixteen threads share few cores, so the system sometimes interrupts a thread in a call.
    EXPECT_LT(slow, 16 * CALLS / 50);
    head.DeliverNext();
    EXPECT_EQ(head.tracker->Latest().state, PoseState::Tracking);
    released = true;
}

class HeadTrackerFilterTest : public testing::TestWithParam<PoseFilter>
{
};

INSTANTIATE_TEST_SUITE_P(, HeadTrackerFilterTest,
                         testing::Values(PoseFilter::Kit, PoseFilter::Core),
                         [](const auto& filter)
                         { return filter.param == PoseFilter::Kit ? "Kit" : "Core"; });

TEST_P(HeadTrackerFilterTest, APoseIsInterpolatedInThePastAndPredictedAheadWithinLimits)
{
    HeadTrackerOptions options;
    options.filter = GetParam();
    TrackedHead head(options);
    qltkit::SoftwareHeadset headset(5, false);
    std::vector<Pose> poses;
    std::vector<Quaternion> predicted; // each prediction is for 50 ms later
    constexpr std::uint32_t REPORTS = 12000;
    double squares = 0.0;
    for (std::uint32_t i = 0; i < REPORTS; ++i)
    {
        head.clock.nowNs += MS;
        const qltkit::SoftwareHeadset::Sample sample = headset.Next();
        head.host.QueueRead(sample.report);
        head.host.WaitForIdle();
        poses.push_back(head.tracker->Latest());
        predicted.push_back(head.tracker->At(poses.back().timeNs + 50 * MS).orientation);
        const auto [w, x, y, z] = sample.orientation;
        const Quaternion truth(static_cast<float>(w), static_cast<float>(x), static_cast<float>(y),
                               static_cast<float>(z));
        ASSERT_LT((UpInHead(poses[i].orientation) - UpInHead(truth)).Length(), 0.03f) << i;
        const float error = i < 50 ? 0.0f : AngleBetween(predicted[i - 50], poses[i].orientation);
        squares += static_cast<double>(error * error);
    }
    const double rms = std::sqrt(squares / REPORTS);
    EXPECT_NEAR(head.tracker->PredictionError(0.05), rms, 0.1 * rms);
    EXPECT_LT(rms, 0.03);
    EXPECT_GT(head.tracker->RecentPredictionError(0.1), head.tracker->PredictionError(0.02));

    float widest = 0.0f;
    for (std::size_t i = REPORTS - 1999; i < REPORTS - 1; i += 7)
    {
        const Pose& a = poses[i];
        const Pose& b = poses[i + 1];
        const Pose same = head.tracker->At(a.timeNs);
        ASSERT_EQ(same.reportNumber, i + 1);
        ASSERT_LT(AngleBetween(same.orientation, a.orientation), 2e-6f);
        const Pose middle = head.tracker->At((a.timeNs + b.timeNs) / 2);
        ASSERT_EQ(middle.timeNs, (a.timeNs + b.timeNs) / 2);
        ASSERT_EQ(middle.deviceTimeUs, a.deviceTimeUs + 500);
        ASSERT_FALSE(middle.clamped);
        const float half = AngleBetween(a.orientation, b.orientation) / 2.0f;
        ASSERT_NEAR(AngleBetween(a.orientation, middle.orientation), half, 2e-6f);
        ASSERT_NEAR(AngleBetween(middle.orientation, b.orientation), half, 2e-6f);
        widest = std::max(widest, half);
    }
    EXPECT_GT(widest, 1e-3f);

    const Pose& last = poses.back();
    EXPECT_EQ(head.tracker->At(last.timeNs + 50 * MS).deviceTimeUs, last.deviceTimeUs + 50000);
    EXPECT_FALSE(head.tracker->At(last.timeNs + 100 * MS).clamped);
    for (const std::int64_t late : {last.timeNs + 100 * MS + 1, std::int64_t{INT64_MAX}})
    {
        const Pose limit = head.tracker->At(late);
        EXPECT_TRUE(limit.clamped);
        EXPECT_EQ(limit.timeNs, last.timeNs + 100 * MS);
    }
    for (const std::int64_t early : {poses.front().timeNs, std::int64_t{INT64_MIN}})
    {
        const Pose limit = head.tracker->At(early);
        EXPECT_TRUE(limit.clamped);
        EXPECT_LE(limit.timeNs, last.timeNs - 2000 * MS);
        EXPECT_GT(limit.timeNs, last.timeNs - 2100 * MS);
    }
}

TEST(HeadTrackerTest, ThePoseOfAWideGapIsInterpolatedAlongTheArc)
{
    TrackedHead head;
    head.DeliverNext();
    ReportWriter turning(2, 2000);
    turning.I16(18, 8000);
    head.Deliver(turning);
    const Pose a = head.tracker->Latest();
    head.clock.nowNs += 400 * MS;
    head.Deliver(turning); // a repeated report changes no time
    EXPECT_EQ(head.tracker->Latest().timeNs, a.timeNs);
    turning.U32(0, 3).U32(4, 402000);
    head.Deliver(turning);
    const Pose b = head.tracker->Latest();
    const float whole = AngleBetween(a.orientation, b.orientation);
    ASSERT_GT(whole, 1.0f);
    const Pose part = head.tracker->At(a.timeNs + (b.timeNs - a.timeNs) / 4);
    EXPECT_NEAR(AngleBetween(a.orientation, part.orientation), whole / 4.0f, 1e-4f);
}

TEST(HeadTrackerTest, RecentringTurnsTheHeadingForwardAndKeepsPitchAndRoll)
{
    constexpr float DEG = 0.017453293f;
    const struct
    {
        const char* name;
        float yaw, pitch, roll; // degrees; the turns follow one another in the head's axes
    } cases[] = {
        {"already forward", 0, 0, 0},    {"to the left", 90, 0, 0},
        {"backward", 180, 0, 0},         {"up and to the right", -30, 60, 0},
        {"tilted", 120, -20, 35},        {"straight up", 50, 90, 0},
        {"straight down", -140, -90, 0}, {"upside down", 10, 0, 180},
    };
    for (const auto& [name, yaw, pitch, roll] : cases)
    {
        SCOPED_TRACE(name);
        TrackedHead head;
        head.DeliverNext();
        // Send the same rate twice. The time between the two reports is the duration of the turn.
        const auto turn = [&head](std::size_t offset, int counts, float angle)
        {
            ++head.sequence;
            ReportWriter report(head.sequence, head.sequence * 1000);
            report.I16(16, 0).I16(18, 0).I16(20, 0).I16(offset, angle < 0.0f ? -counts : counts);
            head.Deliver(report);
            const float rate = qlt::DecodeSensorReport(report).gyroscope.Length();
            head.clock.nowNs += static_cast<std::int64_t>(std::fabs(angle) * DEG / rate * 1e9f);
            report.U32(0, ++head.sequence);
            head.Deliver(report);
        };
        turn(16, 16000, yaw);
        turn(18, -16000, pitch);
        turn(20, 16000, roll);
        const Quaternion before = head.tracker->Latest().orientation;
        EXPECT_TRUE(head.tracker->Recentre());
        const Quaternion after = head.tracker->At(head.clock.nowNs - MS).orientation;
        const Quaternion latest = head.tracker->Latest().orientation;
        EXPECT_NEAR(after.Norm(), 1.0f, 1e-5f);
        EXPECT_LT((UpInHead(latest) - UpInHead(before)).Length(), 1e-5f);
        const Vec3 forward = Quaternion::Rotate(latest, Vec3(0, 0, -1));
        const Vec3 top = Quaternion::Rotate(latest, Vec3(0, 1, 0));
        const Vec3 heading = std::fabs(pitch) < 89.0f ? forward : pitch > 0.0f ? -top : top;
        EXPECT_NEAR(heading.y(), std::sin(std::fabs(pitch) < 89.0f ? pitch * DEG : 0.0f), 0.03f);
        EXPECT_NEAR(heading.x(), 0.0f, 1e-4f);
        EXPECT_LT(heading.z(), 0.0f);
    }
}

TEST(PoseTest, TheEyesTurnAboutTheNeck)
{
    Pose pose;
    // The head looks to the left.
    pose.orientation = Quaternion::RotationQuaternion(1.5707964f, Vec3(0, 1, 0));
    const qltkit::Person person = {0.06f, 0.1f, 0.08f};
    const qltkit::EyePose left = EyePoseOf(pose, qlt::Params::EYE_LEFT, person);
    const qltkit::EyePose right = EyePoseOf(pose, qlt::Params::EYE_RIGHT, person);
    EXPECT_LT((left.position - Vec3(-0.1f, 0.08f, 0.03f)).Length(), 1e-6f);
    EXPECT_LT((right.position - Vec3(-0.1f, 0.08f, -0.03f)).Length(), 1e-6f);
    const Vec3 usual = EyePoseOf(Pose(), qlt::Params::EYE_RIGHT).position;
    EXPECT_FLOAT_EQ(usual.x(), qlt::Params::USER_IPD_M / 2.0f);
}

TEST(HeadTrackerTest, DriftAndLateWakeUpsLeaveTheTimeRight)
{
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> delayNs(0.0, 5e6);
    TrackedHead head;
    double worst = 0.0;
    std::int64_t lastNs = 0;
    const std::int64_t beginNs = head.clock.nowNs;
    for (std::uint32_t i = 0; i < 6000; ++i)
    {
        const std::int64_t truth = beginNs + static_cast<std::int64_t>(i * 1e6 * (1.0 + 200e-6));
        // The first reports are 5 ms late, so the fitted line must come down later.
        const double delay = i < 300 ? 5e6 : delayNs(random);
        const std::int64_t arrival = truth + static_cast<std::int64_t>(delay);
        head.clock.nowNs = std::max(arrival, head.clock.nowNs + 100);
        // The device's clock wraps after three seconds.
        head.Deliver(ReportWriter(i, 0u - 3000000u + i * 1000u));
        const Pose pose = head.tracker->Latest();
        ASSERT_LE(pose.timeNs, head.clock.nowNs);
        ASSERT_GT(pose.timeNs, lastNs);
        ASSERT_EQ(pose.deviceTimeUs, 4294967296 - 3000000 + i * 1000);
        lastNs = pose.timeNs;
        worst = i < 2300 ? 0.0 : std::max(worst, std::fabs(static_cast<double>(lastNs - truth)));
    }
    EXPECT_LT(worst, 0.3e6);
}

TEST(HeadTrackerTest, TheSimulatorIsReadByManyAndDestroyedWhileItRuns)
{
    CountingSink sink;
    HeadTrackerOptions options;
    options.sink = &sink;
    std::optional<HeadTracker> tracker(std::in_place, "simulator", options);
    Until([&] { return tracker->Latest().state == PoseState::Tracking; });
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 4; ++reader)
    {
        readers.emplace_back(
            [&tracker, reader]
            {
                std::int64_t lastNs = 0;
                while (tracker->Latest().reportNumber < 300)
                {
                    const Pose pose = tracker->Latest();
                    const Pose past = tracker->At(pose.timeNs - 20 * MS);
                    if (pose.timeNs < lastNs ||
                        pose.deviceTimeUs != 999000 + 1000 * std::int64_t(pose.reportNumber) ||
                        std::fabs(past.orientation.Norm() - 1.0f) > 1e-4f)
                    {
                        ADD_FAILURE() << "The pose of report " << pose.reportNumber << " is torn.";
                        return;
                    }
                    lastNs = pose.timeNs;
                    tracker->SetEventHandler([](const TrackerEvent&) {});
                    tracker->PollEvent();
                    if (reader == 0)
                    {
                        tracker->Recentre();
                    }
                }
            });
    }
    for (std::thread& reader : readers)
    {
        reader.join();
    }
    const auto start = std::chrono::steady_clock::now();
    tracker.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_GE(sink.reports, 300);
    EXPECT_EQ(sink.losses, 0); // the end of the tracker is no loss
    EXPECT_THROW(HeadTracker("walk"), qltkit::Error);
}

TEST(SeqlockRingTest, ARecordIsNeverReadWhileItIsOverwritten)
{
    struct Record
    {
        std::array<std::uint64_t, 15> words;
    };
    qltkit::SeqlockRing<Record, 2> ring;
    std::atomic<bool> done{false};
    std::vector<std::thread> readers;
    std::atomic<int> whole{0};
    for (int reader = 0; reader < 2; ++reader)
    {
        readers.emplace_back(
            [&]
            {
                Record record{};
                while (!done || whole == 0)
                {
                    const std::uint64_t count = ring.Count();
                    if (count == 0 || !ring.Read(count - 1, record))
                    {
                        continue;
                    }
                    ++whole;
                    for (const std::uint64_t word : record.words)
                    {
                        if (word != count)
                        {
                            ADD_FAILURE() << "Record " << count << " has a word of record " << word;
                            return;
                        }
                    }
                }
            });
    }
    for (std::uint64_t i = 1; i <= 300000; ++i)
    {
        Record record{};
        record.words.fill(i);
        ring.Publish(record);
    }
    done = true;
    for (std::thread& reader : readers)
    {
        reader.join();
    }
}
