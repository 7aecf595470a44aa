#include "Tracking/PoseWriter.h"

namespace qltkit
{
namespace
{

/// A step of the sequence by more than this is one back.
constexpr std::uint32_t HALF_RANGE = 0x80000000u;

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

void PoseWriter::OnReport(const qlt::SensorReport& report, std::int64_t hostNs)
{
    if (mSink != nullptr)
    {
        mSink->OnReport(report, hostNs);
    }
    ++mRecord.reportNumber;
    mFresh = Follow(U32(report, 0), U32(report, 4), hostNs);
    if (mFresh)
    {
        const ReportTime time = mTimer.Take(mDeviceUs, hostNs);
        mRecord.timeNs = time.hostNs;
        mRecord.deviceTimeUs = time.deviceUs;
    }
}

void PoseWriter::OnLost(std::int64_t hostNs)
{
    if (mSink != nullptr)
    {
        mSink->OnLost(hostNs);
    }
    if (mLink != Link::Up || mClosed)
    {
        return;
    }
    mLink = Link::Down;
    mTimer.StartAnew();
    mHistory.Lose(hostNs);
    mEvents.Add(TrackerEvent::Kind::Lost, hostNs);
}

void PoseWriter::OnGyroscopeEvent(const qlt::Vec3& angularVelocity, float)
{
    if (mFilter == PoseFilter::Core)
    {
        mRecord.angularVelocity = angularVelocity;
    }
}

void PoseWriter::OnOrientationEvent(const qlt::Quaternion& orientation, float)
{
    if (mFilter == PoseFilter::Core && mFresh)
    {
        mRecord.orientation = orientation;
        mHistory.Publish(mRecord);
    }
}

/// Tells what the report's number and arrival say about the connection. False for a report that
/// repeats the last one.
bool PoseWriter::Follow(std::uint32_t sequence, std::uint32_t deviceUs, std::int64_t hostNs)
{
    const std::uint32_t step = sequence - mRecord.sequence;
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
    mRecord.sequence = sequence;
    mDeviceUs = deviceUs;
    return !repeated;
}

} // namespace qltkit
