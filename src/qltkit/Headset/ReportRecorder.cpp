#include <qltkit/Headset/ReportRecorder.h>

namespace qltkit
{

ReportRecorder::ReportRecorder(const std::string& path)
    : mFile(path)
{
}

ReportRecorder::~ReportRecorder() = default;

void ReportRecorder::OnReport(const qlt::SensorReport& report, std::int64_t)
{
    if (mFailed)
    {
        return;
    }
    mFile.Write({reinterpret_cast<const char*>(report.data()), report.size()});
    mFailed = !mFile.Flush();
    mReports += mFailed ? 0 : 1;
}

void ReportRecorder::OnLost(std::int64_t) {}

void ReportRecorder::Close() { mFile.Close(); }

} // namespace qltkit
