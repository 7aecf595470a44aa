#include "Capture/CaptureEncoder.h"

#include "Capture/CaptureChannels.h"

namespace qltkit
{

namespace
{

std::string_view BytesOf(const CaptureReport& report)
{
    return {reinterpret_cast<const char*>(report.data()), report.size()};
}

} // namespace

CaptureEncoder::CaptureEncoder(McapWriter& mcap, const ClockPair& clocks)
    : mMcap(mcap)
    , mClocks(clocks)
    , mReportChannel(mcap.AddChannel(ReportChannel()))
    , mPosts(mcap)
{
}

void CaptureEncoder::Write(const ReportRing::Entry& report)
{
    McapMessage message;
    message.channel = mReportChannel;
    message.data = BytesOf(report.report);
    message.sequence = NumberAt<std::uint32_t>(message.data.data());
    message.logTimeNs = LogTime(report.hostTimeNs);
    message.publishTimeNs = PublishTime(mDeviceTime.Of(report.report.data()), message.logTimeNs);
    mMcap.AddMessage(message);
}

void CaptureEncoder::Write(const Post& post)
{
    // A reconnection restarts the headset's clock.
    mAnchored = mAnchored && (post.kind != CaptureItem::Kind::Event || post.name != "connected");
    mPosts.Write(post, post.text, LogTime(post.hostTimeNs));
}

/// The sum is modulo 2^64, so a reader can always compute the host time from it.
std::uint64_t CaptureEncoder::LogTime(std::int64_t hostTimeNs) const
{
    return mClocks.wallNs +
           (static_cast<std::uint64_t>(hostTimeNs) - static_cast<std::uint64_t>(mClocks.steadyNs));
}

/// Returns the headset's clock with an offset. With this offset it equals the log time at the first
/// report.
std::uint64_t CaptureEncoder::PublishTime(std::int64_t deviceTimeUs, std::uint64_t logTimeNs)
{
    if (!mAnchored)
    {
        mAnchored = true;
        mAnchorUs = deviceTimeUs;
        mAnchorNs = logTimeNs;
    }
    return mAnchorNs + static_cast<std::uint64_t>(deviceTimeUs - mAnchorUs) * 1000;
}

} // namespace qltkit
