#include <qltkit/Headset/ReportFollower.h>

#include <chrono>
#include <thread>

namespace qltkit
{

ReportFollower::ReportFollower(const RecordingTracker* held, std::size_t reports)
    : mHeld(held)
    , mLastReport(reports)
{
}

ReportFollower::~ReportFollower() = default;

void ReportFollower::OnOrientationEvent(const qlt::Quaternion& orientation, float time)
{
    if (mEnded)
    {
        return;
    }
    OnReport(mReports, orientation, time);
    if (++mReports != mLastReport)
    {
        return;
    }
    mEnded = true;
    while (mHeld != nullptr && !mHeld->IsStopping())
    {
        WhileHeld();
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
}

void ReportFollower::WhileHeld() {}

} // namespace qltkit
