#include "Capture/PostEncoder.h"

#include "Capture/CaptureChannels.h"
#include "Capture/JsonText.h"

namespace qltkit
{

namespace
{

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

void PostEncoder::Write(const Post& post, std::string_view pixels, std::uint64_t logTimeNs)
{
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
        AppendBase64(mJson, pixels);
        WriteJson(mImageChannel, ImageChannel(), logTimeNs);
        break;
    default:
        AppendField(mJson, "event", post.name);
        AppendField(mJson, "detail", post.text);
        WriteJson(mEventChannel, EventChannel(), logTimeNs);
        break;
    }
}

void PostEncoder::WriteJson(std::uint16_t& channel, const McapChannel& description,
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
