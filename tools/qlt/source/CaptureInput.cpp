#include "source/CaptureInput.h"

#include <algorithm>

CaptureInput::CaptureInput(const std::string& path)
{
    if (qltkit::IsCapture(path))
    {
        mReader = std::make_unique<qltkit::CaptureReader>(path);
        return;
    }
    mOwn = std::make_unique<const qltkit::Recording>(qltkit::LoadRecording(path));
    mRecording = mOwn.get();
}

CaptureInput::CaptureInput(const std::string& path, const qltkit::Recording& recording)
    : mRecording(&recording)
{
    if (qltkit::IsCapture(path))
    {
        mReader = std::make_unique<qltkit::CaptureReader>(path);
    }
}

CaptureInput::~CaptureInput() = default;

bool CaptureInput::Next(qltkit::CaptureItem& item)
{
    if (mReader != nullptr)
    {
        mProgress.Show(static_cast<double>(mReader->Position()) /
                       static_cast<double>(mReader->Size()));
        return mReader->Next(item);
    }
    const std::size_t count = mRecording->reports.size();
    if (mNext == count)
    {
        return false;
    }
    mProgress.Show(static_cast<double>(mNext) / static_cast<double>(count));
    item = {};
    item.kind = qltkit::CaptureItem::Kind::Report;
    item.topic = "/raw";
    item.report = mRecording->reports[mNext];
    item.data = {reinterpret_cast<const char*>(item.report.data()), item.report.size()};
    for (std::size_t i = 4; i > 0; --i)
    {
        item.sequence = item.sequence << 8 | item.report[i - 1];
    }
    item.deviceTimeUs = mRecording->timesUs[mNext];
    item.hostTimeNs = item.deviceTimeUs * 1000;
    item.logTimeNs = static_cast<std::uint64_t>(std::max<std::int64_t>(item.hostTimeNs, 0));
    item.publishTimeNs = item.logTimeNs;
    ++mNext;
    return true;
}

const CaptureInput::Metadata& CaptureInput::GetMetadata() const
{
    return mReader != nullptr ? mReader->Metadata() : mNone;
}

const std::vector<qltkit::CaptureProblem>& CaptureInput::Problems() const
{
    return mReader != nullptr ? mReader->Problems() : mRecording->problems;
}
