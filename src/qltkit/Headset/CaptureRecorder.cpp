#include <qltkit/Headset/CaptureRecorder.h>

namespace qltkit
{

CaptureRecorder::~CaptureRecorder() = default;

void CaptureRecorder::OnReport(const qlt::SensorReport& report, std::int64_t hostNs)
{
    if (!mIsConnected)
    {
        mIsConnected = true;
        mWriter.AddEvent("connected", {}, hostNs);
    }
    mWriter.AddReport(report.data(), hostNs);
}

void CaptureRecorder::OnLost(std::int64_t hostNs)
{
    if (mIsConnected && !mClosed)
    {
        mIsConnected = false;
        mWriter.AddEvent("lost", {}, hostNs);
    }
}

} // namespace qltkit
