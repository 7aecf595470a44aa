#include "Capture/CaptureEncoder.h"

#include "Capture/CaptureChannels.h"
#include "Capture/JsonText.h"

namespace qltkit
{

namespace
{

std::string_view BytesOf(const CaptureReport& report)
{
    return {reinterpret_cast<const char*>(report.data()), report.size()};
}

void AppendField(std::string& json, std::string_view name, std::string_view text)
{
    json += ",\"";
    json += name;
    json += "\":";
    AppendJsonString(json, text);
}

void AppendField(std::string& json, std::string_view name, std::uint32_t number)
{
    json += ",\"";
    json += name;
    json += "\":" + std::to_string(number);
}

} // namespace

CaptureEncoder::CaptureEncoder(McapWriter& mcap, const ClockPair& clocks)
    : mMcap(mcap)
    , mClocks(clocks)
    , mReportChannel(mcap.AddChannel(ReportChannel()))
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
    const std::uint64_t logTimeNs = LogTime(post.hostTimeNs);
    mJson = "{\"timestamp\":";
    AppendJsonTime(mJson, logTimeNs);
    switch (post.kind)
    {
    case CaptureItem::Kind::Text:
        AppendField(mJson, "level", static_cast<std::uint32_t>(post.level));
        AppendField(mJson, "message", post.text);
        mJson += R"(,"name":"QueltaSDK","file":"","line":0)";
        WriteJson(mLogChannel, LogChannel(), logTimeNs);
        break;
    case CaptureItem::Kind::Frame:
        mJson += R"(,"frame_id":"camera")";
        AppendField(mJson, "width", post.frame.width);
        AppendField(mJson, "height", post.frame.height);
        AppendField(mJson, "step", post.frame.step);
        AppendField(mJson, "encoding", post.frame.encoding);
        mJson += ",\"data\":";
        AppendBase64(mJson, post.text);
        WriteJson(mImageChannel, ImageChannel(), logTimeNs);
        break;
    default:
        // The headset's clock restarts when the headset connects again.
        mAnchored = mAnchored && post.name != "connected";
        AppendField(mJson, "event", post.name);
        AppendField(mJson, "detail", post.text);
        WriteJson(mEventChannel, EventChannel(), logTimeNs);
        break;
    }
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

void CaptureEncoder::WriteJson(std::uint16_t& channel, const McapChannel& description,
                               std::uint64_t logTimeNs)
{
    mJson += '}';
    if (channel == 0)
    {
        channel = mMcap.AddChannel(description);
    }
    mMcap.AddMessage({channel, 0, logTimeNs, logTimeNs, mJson});
}

} // namespace qltkit
