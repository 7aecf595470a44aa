#include <qltkit/Tracking/Replay.h>

#include <qlt/Sensors/SensorFusion.h>
#include <qlt/Sensors/SensorReport.h>
#include <qltkit/Tracking/ImuSample.h>
#include <qltkit/Tracking/OrientationEstimator.h>

namespace qltkit
{
namespace
{

/// The time of the last report by the headset's clock.
class DeviceClock final : public qlt::Clock
{
public:
    explicit DeviceClock(std::int64_t timeUs) { Set(timeUs); }

    void Set(std::int64_t timeUs) { mNowNs = timeUs * 1000; }

    std::int64_t NowNs() override { return mNowNs; }
    void SleepNs(std::int64_t) override {}

private:
    std::int64_t mNowNs = 0;
};

/// Finds the first jump of the sequence number as qlt::Hmd does: forward by more than 10, or back.
class JumpFinder
{
public:
    explicit JumpFinder(std::uint32_t sequence)
        : mPrevious(sequence)
    {
    }

    bool IsFirstJump(std::uint32_t sequence)
    {
        const std::uint32_t step = sequence - mPrevious;
        mPrevious = sequence;
        const bool isFirst = !mFound && step > MAX_STEP;
        mFound = mFound || isFirst;
        return isFirst;
    }

private:
    static constexpr std::uint32_t MAX_STEP = 10;

    std::uint32_t mPrevious;
    bool mFound = false;
};

std::vector<qlt::Quaternion> ReplayCore(const Recording& recording)
{
    constexpr std::int64_t PERIOD_US = 1000; // the filter starts this long before the first report
    DeviceClock clock(recording.timesUs.front() - PERIOD_US);
    qlt::SensorFusion fusion(clock);
    JumpFinder jumps(qlt::DecodeSensorReport(recording.reports.front()).sequence);
    std::vector<qlt::Quaternion> orientations;
    orientations.reserve(recording.reports.size());
    for (std::size_t i = 0; i < recording.reports.size(); ++i)
    {
        clock.Set(recording.timesUs[i]);
        const qlt::SensorSample sample = qlt::DecodeSensorReport(recording.reports[i]);
        if (jumps.IsFirstJump(sample.sequence))
        {
            fusion.Reset();
        }
        fusion.Fuse(sample.accelerometer, sample.gyroscope, sample.magnetometer, 0.0f);
        // The tracker applies its yaw origin, which may change the sign of a zero.
        orientations.push_back(qlt::Quaternion::Identity * fusion.GetQuaternion());
    }
    return orientations;
}

std::vector<qlt::Quaternion> ReplayKit(const Recording& recording)
{
    OrientationEstimator estimator;
    std::vector<qlt::Quaternion> orientations;
    orientations.reserve(recording.reports.size());
    for (const qlt::SensorReport& report : recording.reports)
    {
        estimator.Add(ReadImuSample(report));
        const Rotation& q = estimator.GetOrientation();
        orientations.emplace_back(static_cast<float>(q.w), static_cast<float>(q.x),
                                  static_cast<float>(q.y), static_cast<float>(q.z));
    }
    return orientations;
}

} // namespace

std::vector<qlt::Quaternion> Replay(const Recording& recording, PoseFilter filter)
{
    if (recording.reports.empty())
    {
        return {};
    }
    return filter == PoseFilter::Kit ? ReplayKit(recording) : ReplayCore(recording);
}

} // namespace qltkit
