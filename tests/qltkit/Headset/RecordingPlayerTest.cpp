#include <qltkit/Headset/RecordingPlayer.h>
#include <qltkit/Headset/ReportFollower.h>
#include <qltkit/Headset/SoftwareHeadset.h>
#include <qltkit/Tracking/HeadTracker.h>

#include <gtest/gtest.h>

#include <cmath>
#include <future>
#include <thread>
#include <vector>

namespace
{

using qltkit::RecordingPlayer;

constexpr std::size_t REPORTS = 3000;

/// A recording of a software headset. The device time of its first report is 1 s.
qltkit::Recording Recorded(std::size_t reports)
{
    std::vector<qlt::SensorReport> made;
    qltkit::SoftwareHeadset headset(1, true);
    for (std::size_t i = 0; i < reports; ++i)
    {
        made.push_back(headset.Next().report);
    }
    return qltkit::RecordingOf(std::move(made));
}

/// Follows a whole recording. While it holds the tracker, it makes the heading forward.
class Follower final : public qltkit::ReportFollower
{
public:
    explicit Follower(qltkit::RecordingTracker& tracker)
        : ReportFollower(&tracker, REPORTS)
        , mTracker(tracker)
    {
    }

    qlt::Quaternion last;
    std::promise<qlt::Quaternion> forward;

private:
    void OnReport(std::size_t report, const qlt::Quaternion& orientation, float) override
    {
        EXPECT_EQ(report, mNext++);
        last = orientation;
    }

    void WhileHeld() override
    {
        if (mNext == REPORTS)
        {
            ++mNext;
            mTracker.ResetYawOrigin();
            forward.set_value(mTracker.GetOrientation());
        }
    }

    qltkit::RecordingTracker& mTracker;
    std::size_t mNext = 0;
};

float Yaw(const qlt::Quaternion& q)
{
    return std::atan2(2.0f * (q.x() * q.z() + q.y() * q.w()),
                      1.0f - 2.0f * (q.x() * q.x() + q.y() * q.y()));
}

} // namespace

TEST(RecordingPlayerTest, AFollowerHoldsTheTrackerInTheLastEventAndMayTurnIt)
{
    const qltkit::Recording recording = Recorded(REPORTS);
    RecordingPlayer player(recording, RecordingPlayer::Pace::Fastest);
    qltkit::RecordingTracker tracker(player);
    Follower follower(tracker);
    tracker.AddListener(follower);
    tracker.Start();
    const qlt::Quaternion forward = follower.forward.get_future().get();
    EXPECT_TRUE(follower.Ended());
    EXPECT_TRUE(tracker.IsConnected()); // it has not met the recording's end
    EXPECT_EQ(player.NowNs(), recording.timesUs.back() * 1000);
    tracker.Stop();
    player.Close(); // ends the tracker's wait for another headset
    tracker.RemoveListener(follower);
    EXPECT_GT(std::abs(Yaw(follower.last)), 0.01f);
    EXPECT_NEAR(Yaw(forward), 0.0f, 1e-5f);
}

TEST(RecordingPlayerTest, ThePosesOfARecordingHaveTheTimesOfItsReports)
{
    constexpr std::size_t COUNT = 1500;
    qltkit::HeadTracker tracker(
        std::make_unique<RecordingPlayer>(Recorded(COUNT), RecordingPlayer::Pace::Fastest));
    while (tracker.Latest().reportNumber < COUNT)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const qltkit::Pose pose = tracker.At(1700500000); // the first report is at 1 s
    EXPECT_FALSE(pose.clamped);
    EXPECT_EQ(pose.timeNs, 1700500000);
    EXPECT_EQ(pose.reportNumber, 701u);
    EXPECT_NEAR(static_cast<double>(pose.deviceTimeUs), 1700500.0, 1.0);
    EXPECT_TRUE(tracker.At(999000000).clamped);
}

TEST(RecordingPlayerTest, AtTheEndTheHeadsetIsGone)
{
    RecordingPlayer player(Recorded(2), RecordingPlayer::Pace::Fastest);
    const auto device = player.OpenFirst();
    qlt::SensorReport report{};
    for (const bool isThere : {true, true, false})
    {
        std::uint32_t length = 64;
        EXPECT_EQ(player.IsOver(), !isThere);
        EXPECT_EQ(device->EndPoint(1).TransferData(report.data(), length), isThere);
        EXPECT_EQ(length, isThere ? 64u : 0u);
    }
    EXPECT_EQ(player.OpenFirst(), nullptr);
}

TEST(RecordingPlayerTest, CloseEndsAReadThatWaitsForItsTime)
{
    qltkit::Recording recording = Recorded(2);
    recording.playedUs[1] = 3600 * std::int64_t{1000000};
    RecordingPlayer player(recording, RecordingPlayer::Pace::Recorded);
    EXPECT_EQ(player.NowNs(), 999000000);
    const auto device = player.OpenFirst();
    qlt::SensorReport report{};
    std::uint32_t length = 64;
    ASSERT_TRUE(device->EndPoint(1).TransferData(report.data(), length));
    EXPECT_EQ(report, recording.reports[0]);
    EXPECT_EQ(player.NowNs(), 1000000000);
    auto read = std::async(std::launch::async,
                           [&] { return device->EndPoint(1).TransferData(report.data(), length); });
    player.Close();
    EXPECT_FALSE(read.get());
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(player.OpenFirst(), nullptr);
}
