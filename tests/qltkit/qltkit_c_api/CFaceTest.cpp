// The C interface gives the same numbers as the C++ interface. The scripts differ in every axis,
// and every argument differs from its neighbours.
#include <qltkit/qltkit_c_api.h>

#include <qlt/Runtime/Log.h>
#include <qlt/Version.h>
#include <qltkit/qltkit.h>

#include "fakes/FloatBits.h"

#include <gtest/gtest.h>

#include <fstream>
#include <future>
#include <thread>

namespace
{

using qltkit::HeadTracker;
using qltkit::ScriptedHeadset;

/// A head that turns about all axes for 1.2 s. It is unplugged for 0.1 s, and one gap has three
/// reports.
const char* const SCRIPT = R"({"seed": 7, "seconds": 1.2, "clock": {"drift_ppm": 90},
    "motion": {"kind": "angles", "points": [{"at": 0, "yaw": 20},
        {"at": 1.2, "yaw": -35, "pitch": 25, "roll": 10}]},
    "sensors": {"gyroscope": {"noise": 0.1}, "accelerometer": {"bias": [0.1, 0.2, 0.3]}},
    "events": [{"at": 0.2, "event": "drop", "count": 3}, {"at": 0.5, "event": "unplug"},
        {"at": 0.6, "event": "plug"}, {"at": 0.7, "event": "sequence_jump", "by": 900}]})";

constexpr ScriptedHeadset::Pace FASTEST = ScriptedHeadset::Pace::Fastest;

/// Deletes the handle that a function has opened.
template <typename Handle>
struct Opened
{
    explicit Opened(void (*end)(Handle*))
        : deleter(end)
    {
    }
    ~Opened() { deleter(handle); }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    Handle* handle = nullptr;
    void (*deleter)(Handle*);
};

/// A tracker of the C interface that has come to the end of the script, and all of its samples.
struct TrackedScript
{
    explicit TrackedScript(qltkit_HeadTrackerOptions* options)
    {
        EXPECT_EQ(qltkit_ScriptedHeadset_Parse(SCRIPT, QLTKIT_PACE_FASTEST, &headset.handle), 0);
        EXPECT_EQ(qltkit_HeadTracker_OpenScripted(headset.handle, options, &tracker.handle), 0);
        qltkit_Sample sample;
        qltkit_Result result = QLTKIT_OK;
        while ((result = qltkit_HeadTracker_NextSample(tracker.handle, 10000, &sample)) == 0)
        {
            samples.push_back(sample);
        }
        EXPECT_EQ(result, QLTKIT_END);
    }

    qltkit_HeadTracker* Get() const { return tracker.handle; }

    Opened<qltkit_ScriptedHeadset> headset{qltkit_ScriptedHeadset_Delete};
    Opened<qltkit_HeadTracker> tracker{qltkit_HeadTracker_Delete};
    std::vector<qltkit_Sample> samples;
};

/// Tracks the script with the C++ interface to its end.
void Finish(ScriptedHeadset& headset, HeadTracker& tracker)
{
    while (!headset.IsOver() || tracker.Latest().state != qltkit::PoseState::Lost)
    {
        std::this_thread::yield();
    }
}

std::array<std::uint32_t, 4> BitsOf4(const float* q) { return Bits({q[0], q[1], q[2], q[3]}); }
std::array<std::uint32_t, 3> BitsOf3(const float* v) { return Bits({v[0], v[1], v[2]}); }

/// The state of the tracker may have changed between two calls.
void ExpectSameMoment(const qltkit_Pose& found, const qltkit::Pose& expected)
{
    EXPECT_EQ(BitsOf4(found.orientation), Bits(expected.orientation));
    EXPECT_EQ(BitsOf3(found.angularVelocity), Bits(expected.angularVelocity));
    EXPECT_EQ(found.timeNs, expected.timeNs);
    EXPECT_EQ(found.deviceTimeUs, expected.deviceTimeUs);
    EXPECT_EQ(found.reportNumber, expected.reportNumber);
    EXPECT_EQ(found.sequence, expected.sequence);
    EXPECT_EQ(found.clamped != 0, expected.clamped);
}

void ExpectEqual(const qltkit_Pose& found, const qltkit::Pose& expected)
{
    ExpectSameMoment(found, expected);
    EXPECT_EQ(found.state, static_cast<std::int32_t>(expected.state));
    EXPECT_EQ(found.sinceNs, expected.sinceNs);
}

struct Events
{
    static void Take(const qltkit_TrackerEvent* event, void* user)
    {
        static_cast<Events*>(user)->list.push_back(*event);
    }

    std::vector<qltkit_TrackerEvent> list;
};

class CFaceTest : public ::testing::TestWithParam<qltkit::PoseFilter>
{
protected:
    CFaceTest()
    {
        options.filter = GetParam();
        options.person = {0.07f, 0.11f, 0.05f};
        qltkit_HeadTrackerOptions_Init(&asked);
        asked.filter = static_cast<std::int32_t>(GetParam());
        asked.person = {0.07f, 0.11f, 0.05f};
        // The first jump of a process resets the core's filter, so let the first tracker meet it
        // before the test.
        const TrackedScript first(&asked);
    }

    qltkit::HeadTrackerOptions options;
    qltkit_HeadTrackerOptions asked{};
};

TEST_P(CFaceTest, AScriptGivesThePosesEyesAndErrorsOfTheCppFace)
{
    const TrackedScript c(&asked);
    ScriptedHeadset headset(qltkit::ParseHeadsetScript(SCRIPT), FASTEST);
    HeadTracker tracker(headset, headset, options);
    Finish(headset, tracker);
    qltkit_Pose pose;
    const auto compare = [&]
    {
        ASSERT_EQ(qltkit_HeadTracker_Latest(c.Get(), &pose), 0);
        ExpectEqual(pose, tracker.Latest());
        for (const std::int64_t ms : {-5, 17, 550, 700, 1100, 1230, 5000})
        {
            ASSERT_EQ(qltkit_HeadTracker_At(c.Get(), ms * 1000000, &pose), 0);
            ExpectEqual(pose, tracker.At(ms * 1000000));
        }
    };
    compare();
    ASSERT_EQ(qltkit_HeadTracker_Recentre(c.Get()), 0);
    ASSERT_TRUE(tracker.Recentre());
    compare();
    for (const auto eye : {qlt::Params::EYE_LEFT, qlt::Params::EYE_RIGHT})
    {
        qltkit_EyePose found;
        ASSERT_EQ(qltkit_HeadTracker_EyePose(c.Get(), &pose, eye, &found), 0);
        const auto expected = EyePoseOf(tracker.At(5000000000), eye, options.person);
        EXPECT_EQ(BitsOf3(found.position), Bits(expected.position));
        EXPECT_EQ(BitsOf4(found.orientation), Bits(expected.orientation));
    }
    double all = 0.0;
    double recent = 0.0;
    ASSERT_EQ(qltkit_HeadTracker_PredictionError(c.Get(), 0.05, &all, &recent), 0);
    EXPECT_EQ(all > recent, GetParam() == qltkit::PoseFilter::Core); // the kit still learns
    EXPECT_EQ(all, tracker.PredictionError(0.05));
    EXPECT_EQ(recent, tracker.RecentPredictionError(0.05));
    std::int64_t now = 0;
    ASSERT_EQ(qltkit_HeadTracker_Now(c.Get(), &now), 0);
    EXPECT_EQ(now, tracker.NowNs());
}

TEST_P(CFaceTest, SamplesHaveEveryReportWithItsSensorsAndItsPose)
{
    const TrackedScript c(&asked);
    ScriptedHeadset headset(qltkit::ParseHeadsetScript(SCRIPT), FASTEST);
    HeadTracker tracker(headset, headset, options);
    Finish(headset, tracker);
    ASSERT_GT(c.samples.size(), 1000u);
    for (const qltkit_Sample& sample : c.samples)
    {
        const auto expected = tracker.PollPose();
        ASSERT_TRUE(expected);
        ExpectSameMoment(sample.pose, *expected);
        qlt::SensorReport report;
        std::copy_n(sample.report, report.size(), report.begin());
        const qlt::SensorSample read = qlt::DecodeSensorReport(report);
        EXPECT_EQ(sample.pose.sequence, read.sequence);
        EXPECT_EQ(BitsOf3(sample.gyroscope), Bits(read.gyroscope));
        EXPECT_EQ(BitsOf3(sample.accelerometer), Bits(read.accelerometer));
        EXPECT_EQ(BitsOf3(sample.magnetometer), Bits(read.magnetometer));
        EXPECT_EQ(sample.temperature, read.temperature);
        EXPECT_GE(sample.arrivalNs, sample.pose.timeNs);
    }
    EXPECT_FALSE(tracker.PollPose());
    qltkit_Truth truth;
    ASSERT_EQ(qltkit_ScriptedHeadset_Truth(c.headset.handle, &truth), 0);
    const qltkit::ScriptedTruth known = headset.Truth();
    EXPECT_EQ((std::array<double, 4>{truth.orientation[0], truth.orientation[1],
                                     truth.orientation[2], truth.orientation[3]}),
              known.orientation);
    EXPECT_EQ(truth.sampleNs, known.sampleNs);
    EXPECT_EQ(truth.arrivalNs, known.arrivalNs);
    EXPECT_EQ(truth.sequence, known.sequence);
    EXPECT_EQ(truth.isKnown, 1);
    EXPECT_EQ(qltkit_ScriptedHeadset_State(c.headset.handle), QLTKIT_END);
}

TEST_P(CFaceTest, EventsComeByPollingAndByCallback)
{
    const TrackedScript c(&asked);
    const std::vector<std::array<std::uint64_t, 3>> expected = {
        {QLTKIT_CONNECTED, 0, 1}, {QLTKIT_GAP, 3, 2},   {QLTKIT_WAS_LOST, 0, 3},
        {QLTKIT_BACK, 0, 4},      {QLTKIT_GAP, 900, 5}, {QLTKIT_WAS_LOST, 0, 6}};
    Events polled;
    qltkit_TrackerEvent event;
    while (qltkit_HeadTracker_NextEvent(c.Get(), &event) == QLTKIT_OK)
    {
        polled.list.push_back(event);
    }
    Events called;
    ASSERT_EQ(qltkit_HeadTracker_SetEventHandler(c.Get(), Events::Take, &called), 0);
    std::size_t count = 0;
    while (count < expected.size())
    {
        // Setting the handler waits for the running one, so the list may be read then.
        ASSERT_EQ(qltkit_HeadTracker_SetEventHandler(c.Get(), nullptr, nullptr), 0);
        count = called.list.size();
        ASSERT_EQ(qltkit_HeadTracker_SetEventHandler(c.Get(), Events::Take, &called), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ASSERT_EQ(qltkit_HeadTracker_SetEventHandler(c.Get(), nullptr, nullptr), 0);
    for (const Events* events : {&polled, &called})
    {
        ASSERT_EQ(events->list.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i)
        {
            const qltkit_TrackerEvent& found = events->list[i];
            EXPECT_EQ(static_cast<std::uint64_t>(found.kind), expected[i][0]);
            EXPECT_EQ(found.reports, expected[i][1]);
            EXPECT_EQ(found.number, expected[i][2]);
        }
        EXPECT_EQ(events->list[2].timeNs, 500000000);
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, CFaceTest,
                         ::testing::Values(qltkit::PoseFilter::Kit, qltkit::PoseFilter::Core));

/// Stores the lines, and can block a call.
struct Lines
{
    static void Take(std::int32_t level, const char* line, void* user)
    {
        auto& lines = *static_cast<Lines*>(user);
        lines.list.push_back(std::to_string(level) + " " + line);
        lines.entered.set_value();
        lines.leave.get_future().wait();
    }

    std::vector<std::string> list;
    std::promise<void> entered;
    std::promise<void> leave;
};

TEST(CFaceLogTest, RemovingTheHandlerWaitsForTheCallInFlight)
{
    Lines lines;
    ASSERT_EQ(qltkit_set_log_handler(Lines::Take, &lines), 0);
    std::thread printing([] { qlt::WriteLog(qlt::LogLevel::Error, "a failure"); });
    lines.entered.get_future().wait();
    auto removed =
        std::async(std::launch::async, [] { return qltkit_set_log_handler(nullptr, nullptr); });
    EXPECT_EQ(removed.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    lines.leave.set_value();
    EXPECT_EQ(removed.get(), 0);
    printing.join();
    EXPECT_EQ(lines.list, std::vector<std::string>{"1 a failure"});
    ::testing::internal::CaptureStdout();
    qlt::WriteLog(qlt::LogLevel::Info, "progress");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "progress\n");
}

TEST(CFaceLogTest, AHandlerMayPrintAndRemoveItself)
{
    std::vector<std::string> list;
    const auto remove = [](std::int32_t level, const char* line, void* user)
    {
        auto& taken = *static_cast<std::vector<std::string>*>(user);
        taken.push_back(std::to_string(level) + " " + line);
        if (taken.size() == 1)
        {
            qlt::WriteLog(qlt::LogLevel::Error, "inner");
            EXPECT_EQ(qltkit_set_log_handler(nullptr, nullptr), 0);
        }
    };
    ASSERT_EQ(qltkit_set_log_handler(remove, &list), 0);
    qlt::WriteLog(qlt::LogLevel::Info, "outer");
    ::testing::internal::CaptureStderr();
    qlt::WriteLog(qlt::LogLevel::Error, "later");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "later\n");
    EXPECT_EQ(list, (std::vector<std::string>{"0 outer", "1 inner"}));
}

TEST(CFaceRecordingTest, AReplayHasTheBitsOfTheTrackerAndOfTheEstimator)
{
    qltkit::SoftwareHeadset headset(3, false);
    std::ofstream file("replay.bin", std::ios::binary);
    qltkit::OrientationEstimator estimator;
    std::vector<std::array<std::uint32_t, 4>> kit;
    for (int i = 0; i < 3000; ++i)
    {
        auto report = headset.Next().report;
        // The sequence jumps twice.
        report[1] = static_cast<std::uint8_t>(report[1] + (i >= 2000 ? 5 : 0));
        file.write(reinterpret_cast<const char*>(report.data()), 64);
        estimator.Add(qltkit::ReadImuSample(report));
        const auto& q = estimator.GetOrientation();
        kit.push_back(Bits({static_cast<float>(q.w), static_cast<float>(q.x),
                            static_cast<float>(q.y), static_cast<float>(q.z)}));
    }
    file.close();
    const qltkit::Recording recording = qltkit::LoadRecording("replay.bin");
    qltkit::RecordingPlayer player(recording, qltkit::RecordingPlayer::Pace::Fastest);
    qltkit::RecordingTracker tracker(player);
    struct Follower final : qltkit::ReportFollower
    {
        using ReportFollower::ReportFollower;
        void OnReport(std::size_t, const qlt::Quaternion& q, float) override
        {
            found.push_back(Bits(q));
        }
        std::vector<std::array<std::uint32_t, 4>> found;
    } follower(&tracker, 3000);
    tracker.AddListener(follower);
    tracker.Start();
    while (!follower.Ended())
    {
        std::this_thread::yield();
    }
    tracker.Stop();
    tracker.RemoveListener(follower);
    player.Close();
    Opened<qltkit_Recording> opened(qltkit_Recording_Delete);
    ASSERT_EQ(qltkit_Recording_Open("replay.bin", &opened.handle), 0);
    std::vector<float> core(12000);
    std::vector<float> estimated(12000);
    ASSERT_EQ(qltkit_Recording_Replay(opened.handle, QLTKIT_FILTER_CORE, core.data()), 0);
    ASSERT_EQ(qltkit_Recording_Replay(opened.handle, QLTKIT_FILTER_KIT, estimated.data()), 0);
    for (std::size_t i = 0; i < 3000; ++i)
    {
        ASSERT_EQ(BitsOf4(&core[4 * i]), follower.found[i]) << i;
        ASSERT_EQ(BitsOf4(&estimated[4 * i]), kit[i]) << i;
    }
}

TEST(CaptureFaceTest, ACaptureGivesTheItemsOfTheCppFace)
{
    {
        qltkit::CaptureWriter writer("c_face.mcap");
        qltkit::SoftwareHeadset software(3, false);
        writer.AddEvent("connected", "port 3", 1000);
        writer.AddReport(software.Next().report.data(), 3000);
        writer.AddReport(software.Next().report.data(), 1005000);
        writer.AddText(qltkit::CaptureLevel::Warning, "late");
        writer.AddFrame({3, 2, 4, "mono8", "12345678"});
        writer.Close();
    }
    qltkit::CaptureReader expected("c_face.mcap");
    Opened<qltkit_CaptureReader> reader(qltkit_CaptureReader_Delete);
    ASSERT_EQ(qltkit_CaptureReader_Open("c_face.mcap", &reader.handle), QLTKIT_OK);
    qltkit::CaptureItem e;
    qltkit_CaptureItem item{};
    while (expected.Next(e))
    {
        ASSERT_EQ(qltkit_CaptureReader_Next(reader.handle, &item), QLTKIT_OK);
        EXPECT_EQ(item.kind, static_cast<std::int32_t>(e.kind));
        EXPECT_EQ(item.level, static_cast<std::int32_t>(e.level));
        EXPECT_EQ(item.hostTimeNs, e.hostTimeNs);
        EXPECT_EQ(item.logTimeNs, e.logTimeNs);
        EXPECT_EQ(item.publishTimeNs, e.publishTimeNs);
        EXPECT_EQ(item.deviceTimeUs, e.deviceTimeUs);
        EXPECT_EQ(item.sequence, e.sequence);
        EXPECT_EQ(std::string(item.data, item.data + item.size), e.data);
        EXPECT_TRUE(std::equal(e.report.begin(), e.report.end(), item.report));
        EXPECT_EQ(item.topic, std::string(e.topic));
        EXPECT_EQ(item.name, std::string(e.name));
        EXPECT_EQ(item.text, std::string(e.text));
        EXPECT_EQ(item.frame.width, e.frame.width);
        EXPECT_EQ(item.frame.height, e.frame.height);
        EXPECT_EQ(item.frame.step, e.frame.step);
        EXPECT_EQ(item.frame.size, e.frame.pixels.size());
        EXPECT_EQ(item.frame.encoding, std::string(e.frame.encoding));
        EXPECT_EQ(item.frame.pixels != nullptr, e.kind == qltkit::CaptureItem::Kind::Frame);
    }
    EXPECT_EQ(qltkit_CaptureReader_Next(reader.handle, &item), QLTKIT_END);
    std::uint64_t index = 0;
    const char* texts[3] = {};
    for (const auto& [record, entries] : expected.Metadata())
    {
        for (const auto& [key, value] : entries)
        {
            ASSERT_EQ(qltkit_CaptureReader_Metadata(reader.handle, index++, &texts[0], &texts[1],
                                                    &texts[2]),
                      QLTKIT_OK);
            EXPECT_EQ(texts[0], record);
            EXPECT_EQ(texts[1], key);
            EXPECT_EQ(texts[2], value);
        }
    }
    EXPECT_EQ(qltkit_CaptureReader_Metadata(reader.handle, index, &texts[0], &texts[1], &texts[2]),
              QLTKIT_END);
}

TEST(CFaceErrorTest, NullAndImpossibleArgumentsGetASentence)
{
    EXPECT_STREQ(qltkit_version(), QLT_VERSION_STRING);
    EXPECT_STREQ(qltkit_last_error(), "");
    Opened<qltkit_ScriptedHeadset> headset(qltkit_ScriptedHeadset_Delete);
    Opened<qltkit_HeadTracker> tracker(qltkit_HeadTracker_Delete);
    ASSERT_EQ(qltkit_ScriptedHeadset_Parse(SCRIPT, QLTKIT_PACE_FASTEST, &headset.handle), 0);
    ASSERT_EQ(qltkit_HeadTracker_OpenScripted(headset.handle, nullptr, &tracker.handle), 0);
    qltkit_HeadTracker* none = nullptr;
    qltkit_HeadTrackerOptions options;
    qltkit_HeadTrackerOptions_Init(&options);
    options.filter = 2;
    qltkit_Pose pose{};
    qltkit_EyePose eye;
    const auto expect = [](qltkit_Result result, const std::string& words)
    {
        EXPECT_EQ(result, QLTKIT_ERROR_ARGUMENT) << words;
        EXPECT_EQ(qltkit_last_error(), words);
    };
    expect(qltkit_HeadTracker_Latest(nullptr, &pose), "the tracker is null");
    expect(qltkit_HeadTracker_At(tracker.handle, 1, nullptr), "the place for the pose is null");
    expect(qltkit_HeadTracker_EyePose(tracker.handle, &pose, 2, &eye),
           "the eye is neither QLTKIT_EYE_LEFT nor QLTKIT_EYE_RIGHT");
    expect(qltkit_HeadTracker_Open("simulator", &options, &none),
           "the filter is neither QLTKIT_FILTER_KIT nor QLTKIT_FILTER_CORE");
    expect(qltkit_HeadTracker_Open(nullptr, nullptr, &none), "the source is null");
    expect(qltkit_HeadTracker_Open("simulator", nullptr, nullptr),
           "the place for the tracker is null");
    expect(qltkit_ScriptedHeadset_Open("x.json", 2, &headset.handle),
           "the pace is neither QLTKIT_PACE_REAL_TIME nor QLTKIT_PACE_FASTEST");
    expect(qltkit_ScriptedHeadset_State(nullptr), "the headset is null");
    expect(qltkit_Recording_Open(nullptr, nullptr), "the place for the recording is null");
    expect(qltkit_CaptureWriter_AddText(nullptr, 9, "x", 0), "the level is not in 0 .. 5");
    expect(qltkit_CaptureWriter_Flush(nullptr), "the writer is null");
    expect(qltkit_CaptureReader_Next(nullptr, nullptr), "the reader is null");
    qltkit_HeadTracker_Delete(nullptr);
    EXPECT_EQ(qltkit_Recording_Problem(nullptr, 0), nullptr);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(qltkit_HeadTracker_Open("x/none.json", nullptr, &none), QLTKIT_ERROR);
    EXPECT_NE(std::string(qltkit_last_error()).find("none.json"), std::string::npos);
    std::thread([] { EXPECT_STREQ(qltkit_last_error(), ""); }).join();
}

} // namespace
