#include "Tracking/PoseWriter.h"

#include <qltkit/Error.h>

namespace qltkit
{
namespace
{

/// A step of the sequence number from this value on is a step back.
constexpr std::uint32_t HALF_RANGE = 0x80000000u;

/// The writer publishes the errors of predictions once in this number of reports, because people
/// read them only now and then.
constexpr std::uint64_t REPORTS_OF_ERRORS = 8;

std::uint32_t U32(const qlt::SensorReport& report, std::size_t offset)
{
    std::uint32_t value = 0;
    for (std::size_t i = 4; i > 0; --i)
    {
        value = value << 8 | report[offset + i - 1];
    }
    return value;
}

} // namespace

Calibration PoseWriter::CalibrationOf(const HeadTrackerOptions& options)
{
    if (options.calibration.empty())
    {
        return {};
    }
    if (options.filter != PoseFilter::Kit)
    {
        throw Error("only the kit's filter takes a calibration");
    }
    return LoadCalibration(options.calibration, options.unit);
}

void PoseWriter::OnReport(const qlt::SensorReport& report, std::int64_t hostNs)
{
    if (mSink != nullptr)
    {
        mSink->OnReport(report, hostNs);
    }
    ++mRecord.pose.reportNumber;
    mFresh = Follow(U32(report, 0), U32(report, 4), hostNs);
    if (!mFresh)
    {
        return;
    }
    const ReportTime time = mTimer.Take(mDeviceUs, hostNs);
    mRecord.pose.timeNs = time.hostNs;
    mRecord.pose.deviceTimeUs = time.deviceUs;
    if (mFilter == PoseFilter::Kit &&
        mEstimator.Add(Calibrated(ReadImuSample(report), mCalibration)))
    {
        mPredictor.Add(mEstimator);
        const Rotation& q = mEstimator.GetOrientation();
        const Vector3 rate = mEstimator.GetAngularVelocity();
        Publish(
            {static_cast<float>(q.w), static_cast<float>(q.x), static_cast<float>(q.y),
             static_cast<float>(q.z)},
            {static_cast<float>(rate.x), static_cast<float>(rate.y), static_cast<float>(rate.z)});
    }
}

void PoseWriter::OnLost(std::int64_t hostNs)
{
    if (mClosed)
    {
        return;
    }
    if (mSink != nullptr)
    {
        mSink->OnLost(hostNs);
    }
    if (mLink != Link::Up)
    {
        return;
    }
    mLink = Link::Down;
    mTimer.StartAnew();
    mEvents.Add(TrackerEvent::Kind::Lost, hostNs);
    mHistory.Lose(hostNs);
}

void PoseWriter::OnGyroscopeEvent(const qlt::Vec3& angularVelocity, float)
{
    mCoreRate = angularVelocity;
}

void PoseWriter::OnOrientationEvent(const qlt::Quaternion& orientation, float)
{
    if (mFilter == PoseFilter::Core && mFresh)
    {
        const Rotation q = {orientation.w(), orientation.x(), orientation.y(), orientation.z()};
        const Vector3 rate = {mCoreRate.x(), mCoreRate.y(), mCoreRate.z()};
        mPredictor.Add({static_cast<std::uint64_t>(mRecord.pose.deviceTimeUs), 0, true, q, rate});
        Publish(orientation, mCoreRate);
    }
}

void PoseWriter::Publish(const qlt::Quaternion& orientation, const qlt::Vec3& rate)
{
    mRecord.pose.orientation = orientation;
    mRecord.pose.angularVelocity = rate;
    mRecord.terms = mPredictor.GetTerms();
    mHistory.Publish(mRecord);
    if (mRecord.pose.reportNumber % REPORTS_OF_ERRORS == 0)
    {
        mErrors.Publish({mPredictor.GetErrors(), mPredictor.GetRecentErrors()});
    }
}

PoseWriter::Errors PoseWriter::ReadErrors() const
{
    Errors errors;
    for (;;)
    {
        const std::uint64_t count = mErrors.Count();
        if (count == 0 || mErrors.Read(count - 1, errors))
        {
            return errors;
        }
    }
}

/// Derives events of the connection from the report's number and arrival. Returns false when the
/// report repeats the last one.
bool PoseWriter::Follow(std::uint32_t sequence, std::uint32_t deviceUs, std::int64_t hostNs)
{
    const std::uint32_t step = sequence - mRecord.pose.sequence;
    const bool wasUp = mLink == Link::Up;
    const bool repeated = wasUp && step == 0 && deviceUs == mDeviceUs;
    if (!wasUp)
    {
        mEvents.Add(mLink == Link::New ? TrackerEvent::Kind::Connected : TrackerEvent::Kind::Back,
                    hostNs);
        mLink = Link::Up;
    }
    else if (step > 1 && step < HALF_RANGE)
    {
        mEvents.Add(TrackerEvent::Kind::Gap, hostNs, step - 1);
    }
    mRecord.pose.sequence = sequence;
    mDeviceUs = deviceUs;
    return !repeated;
}

} // namespace qltkit
