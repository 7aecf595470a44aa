#include <qltkit/Capture/JsonCaptureWriter.h>

#include <qlt/Sensors/SensorReport.h>

#include "Capture/CaptureChannels.h"
#include "Capture/JsonText.h"
#include "Capture/PostEncoder.h"

#include <charconv>
#include <cmath>

namespace qltkit
{

namespace
{

constexpr float HALF_ROOT = 0.70710678f; // half of the square root of 2

/// Appends the shortest text of the number. JSON knows no infinity and no NaN, which become 0.
template <typename Number>
void AppendNumberText(std::string& json, Number value)
{
    char text[32];
    if constexpr (std::is_floating_point_v<Number>)
    {
        value = std::isfinite(value) ? value : Number{};
    }
    json.append(text, std::to_chars(text, text + sizeof text, value).ptr);
}

template <typename Number>
void AppendField(std::string& json, std::string_view name, Number value)
{
    json += ",\"";
    json += name;
    json += "\":";
    AppendNumberText(json, value);
}

/// Appends an object with x, y and z, but without its closing brace.
void AppendTriple(std::string& json, std::string_view name, const qlt::Vec3& v)
{
    json += ",\"";
    json += name;
    json += "\":{\"x\":";
    AppendNumberText(json, v.x());
    AppendField(json, "y", v.y());
    AppendField(json, "z", v.z());
}

} // namespace

class JsonCaptureWriter::Impl
{
public:
    explicit Impl(McapWriter::Sink sink)
        : mcap(std::move(sink))
        , mPosts(mcap)
    {
    }

    void WriteReport(const CaptureItem& item, const qlt::Quaternion& orientation);
    void WritePost(const CaptureItem& item);

    McapWriter mcap;

private:
    void WriteImu(const CaptureItem& item);
    void WriteTransform(const CaptureItem& item, std::string_view parent, std::string_view child,
                        const qlt::Quaternion& q);
    void Begin(const CaptureItem& item);
    void Send(const CaptureItem& item, std::uint16_t channel);

    PostEncoder mPosts;
    std::uint16_t mImu = 0; // 0 until the first report
    std::uint16_t mTransform = 0;
    std::string mJson;
};

void JsonCaptureWriter::Impl::WriteReport(const CaptureItem& item,
                                          const qlt::Quaternion& orientation)
{
    if (mImu == 0)
    {
        mImu = mcap.AddChannel(ImuChannel());
        mTransform = mcap.AddChannel(TransformChannel());
        WriteTransform(item, "world", "tracking", {HALF_ROOT, HALF_ROOT, 0.0f, 0.0f});
    }
    WriteImu(item);
    WriteTransform(item, "tracking", "headset", orientation);
}

void JsonCaptureWriter::Impl::WriteImu(const CaptureItem& item)
{
    const qlt::SensorSample sample = qlt::DecodeSensorReport(item.report);
    Begin(item);
    AppendField(mJson, "sequence", item.sequence);
    AppendField(mJson, "device_time_us", item.deviceTimeUs);
    AppendTriple(mJson, "gyroscope", sample.gyroscope);
    mJson += '}';
    AppendTriple(mJson, "accelerometer", sample.accelerometer);
    mJson += '}';
    AppendTriple(mJson, "magnetometer", sample.magnetometer);
    mJson += '}';
    AppendField(mJson, "temperature", sample.temperature);
    Send(item, mImu);
}

void JsonCaptureWriter::Impl::WriteTransform(const CaptureItem& item, std::string_view parent,
                                             std::string_view child, const qlt::Quaternion& q)
{
    Begin(item);
    mJson += ",\"parent_frame_id\":\"";
    mJson += parent;
    mJson += "\",\"child_frame_id\":\"";
    mJson += child;
    mJson += '"';
    AppendTriple(mJson, "translation", {});
    mJson += '}';
    AppendTriple(mJson, "rotation", q.v());
    AppendField(mJson, "w", q.w());
    mJson += '}';
    Send(item, mTransform);
}

void JsonCaptureWriter::Impl::Begin(const CaptureItem& item)
{
    mJson = "{\"timestamp\":";
    AppendJsonTime(mJson, item.logTimeNs);
}

void JsonCaptureWriter::Impl::Send(const CaptureItem& item, std::uint16_t channel)
{
    mJson += '}';
    mcap.AddMessage({channel, item.sequence, item.logTimeNs, item.publishTimeNs, mJson});
}

void JsonCaptureWriter::Impl::WritePost(const CaptureItem& item)
{
    Post post;
    post.kind = item.kind;
    post.level = item.level;
    post.name = item.name;
    post.text = item.text;
    post.frame = item.frame;
    mPosts.Write(post, item.frame.pixels, item.logTimeNs);
}

JsonCaptureWriter::JsonCaptureWriter(McapWriter::Sink sink)
    : mImpl(std::make_unique<Impl>(std::move(sink)))
{
}

JsonCaptureWriter::~JsonCaptureWriter() = default;

void JsonCaptureWriter::AddMetadata(std::string_view name,
                                    const std::map<std::string, std::string>& metadata)
{
    mImpl->mcap.AddMetadata(name, metadata);
}

bool JsonCaptureWriter::Add(const CaptureItem& item, const qlt::Quaternion& orientation)
{
    switch (item.kind)
    {
    case CaptureItem::Kind::Report:
        mImpl->WriteReport(item, orientation);
        return true;
    case CaptureItem::Kind::Other:
        return false;
    default:
        mImpl->WritePost(item);
        return true;
    }
}

void JsonCaptureWriter::Close() { mImpl->mcap.Close(); }

} // namespace qltkit
