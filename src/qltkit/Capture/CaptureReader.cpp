#include <qltkit/Capture/CaptureReader.h>

#include <qltkit/Error.h>

#include "Capture/CaptureChannels.h"
#include "Capture/DeviceTime.h"
#include "Capture/JsonText.h"
#include "Capture/McapFormat.h"
#include "Capture/McapScanner.h"

#include <charconv>

namespace qltkit
{

namespace
{

// Limits on the memory that a forged file can cost.
constexpr std::size_t MAX_CHANNELS = 4096;
constexpr std::size_t MAX_TOPIC_SIZE = 256;
constexpr std::size_t MAX_METADATA_BYTES = 1 << 20;
constexpr std::size_t MAX_PROBLEMS = 100;
constexpr std::size_t MAX_JSON_SIZE = 6 << 20; // a frame of the camera has 5 MB

struct Channel
{
    std::string topic;
    CaptureItem::Kind kind = CaptureItem::Kind::Other;
};

/// The kind of a JSON message on a channel with this schema.
CaptureItem::Kind KindOf(std::string_view schema)
{
    return schema == EVENT_SCHEMA   ? CaptureItem::Kind::Event
           : schema == LOG_SCHEMA   ? CaptureItem::Kind::Text
           : schema == IMAGE_SCHEMA ? CaptureItem::Kind::Frame
                                    : CaptureItem::Kind::Other;
}

template <typename Number>
Number ParsedOr(const std::map<std::string, std::string>& map, std::string_view key,
                Number otherwise)
{
    const auto found = map.find(std::string(key));
    if (found != map.end())
    {
        const std::string& text = found->second;
        std::from_chars(text.data(), text.data() + text.size(), otherwise);
    }
    return otherwise;
}

} // namespace

class CaptureReader::Impl
{
public:
    explicit Impl(const std::filesystem::path& path);

    bool Next(CaptureItem& item);

    std::map<std::string, std::map<std::string, std::string>> metadata;
    std::vector<CaptureProblem> problems;
    std::size_t problemCount = 0;
    FileBytes file;

    std::uint64_t Position() const { return mScanner.Offset(); }

private:
    bool FindMessage();
    void TakeSchema(ByteReader content);
    void TakeChannel(ByteReader content);
    void TakeMetadata(ByteReader content);
    void TakeMessage(ByteReader content, CaptureItem& item);
    bool Interpret(CaptureItem& item);
    bool InterpretReport(CaptureItem& item);
    bool InterpretFrame(CaptureItem& item);
    void Report(std::uint64_t offset, const std::string& text);
    void ReportRecord(const std::string& text);

    McapScanner mScanner;
    std::map<std::uint16_t, CaptureItem::Kind>
        mSchemas; // only the schemas that this reader decodes
    std::map<std::uint16_t, Channel> mChannels;
    std::size_t mMetadataBytes = 0;
    std::uint64_t mLogToHostNs = 0; // log time + this = host time, modulo 2^64
    DeviceTime mDeviceTime;
    McapRecord mRecord;
    bool mFound = false; // true when mRecord is a message that Next has not returned yet
    std::string mPixels; // the pixels of the last frame
};

CaptureReader::Impl::Impl(const std::filesystem::path& path)
    : file(path)
    , mScanner(file,
               [this](std::uint64_t offset, const std::string& text) { Report(offset, text); })
{
    mFound = FindMessage();
}

bool CaptureReader::Impl::Next(CaptureItem& item)
{
    if (!mFound && !FindMessage())
    {
        return false;
    }
    mFound = false;
    TakeMessage(ByteReader(mRecord.content), item);
    return true;
}

/// Advances to the next message on a known channel.
bool CaptureReader::Impl::FindMessage()
{
    while (mScanner.Next(mRecord))
    {
        ByteReader content(mRecord.content);
        switch (mRecord.opcode)
        {
        case McapOpcode::SCHEMA:
            TakeSchema(content);
            break;
        case McapOpcode::CHANNEL:
            TakeChannel(content);
            break;
        case McapOpcode::METADATA:
            TakeMetadata(content);
            break;
        case McapOpcode::MESSAGE:
            if (mRecord.content.size() >= 22 &&
                mChannels.count(NumberAt<std::uint16_t>(mRecord.content.data())) != 0)
            {
                return true;
            }
            ReportRecord("a message is malformed or on no channel");
            break;
        default:
            break;
        }
    }
    return false;
}

void CaptureReader::Impl::TakeSchema(ByteReader content)
{
    const auto id = content.Take<std::uint16_t>();
    const CaptureItem::Kind kind = KindOf(content.TakeString());
    content.TakeString(); // the encoding
    content.TakeString();
    if (!content.Whole())
    {
        ReportRecord("a schema is malformed");
        return;
    }
    mSchemas.erase(id);
    if (kind != CaptureItem::Kind::Other)
    {
        mSchemas[id] = kind;
    }
}

void CaptureReader::Impl::TakeChannel(ByteReader content)
{
    const auto id = content.Take<std::uint16_t>();
    const auto schema = content.Take<std::uint16_t>();
    const std::string_view topic = content.TakeString().substr(0, MAX_TOPIC_SIZE);
    const std::string_view encoding = content.TakeString();
    content.TakeString(); // the metadata
    if (!content.Whole())
    {
        ReportRecord("a channel is malformed");
        return;
    }
    if (mChannels.count(id) == 0 && mChannels.size() == MAX_CHANNELS)
    {
        ReportRecord("there are more channels than can be read");
        return;
    }
    Channel& channel = mChannels[id];
    const auto found = mSchemas.find(schema);
    channel.topic = topic;
    channel.kind = encoding == REPORT_ENCODING                     ? CaptureItem::Kind::Report
                   : encoding == "json" && found != mSchemas.end() ? found->second
                                                                   : CaptureItem::Kind::Other;
}

void CaptureReader::Impl::TakeMetadata(ByteReader content)
{
    const std::string_view name = content.TakeString();
    ByteReader entries(content.TakeString());
    std::map<std::string, std::string> map;
    mMetadataBytes += mRecord.content.size();
    if (mMetadataBytes > MAX_METADATA_BYTES)
    {
        ReportRecord("there is more metadata than can be read");
        return;
    }
    while (content.Whole() && entries.Whole() && !entries.Rest().empty())
    {
        const std::string_view key = entries.TakeString();
        map[std::string(key)] = entries.TakeString();
    }
    if (!content.Whole() || !entries.Whole())
    {
        ReportRecord("a metadata record is malformed");
        return;
    }
    if (name == CAPTURE_METADATA)
    {
        mLogToHostNs = static_cast<std::uint64_t>(ParsedOr<std::int64_t>(map, STEADY_KEY, 0)) -
                       ParsedOr<std::uint64_t>(map, WALL_KEY, 0);
    }
    metadata[std::string(name)] = std::move(map);
}

void CaptureReader::Impl::TakeMessage(ByteReader content, CaptureItem& item)
{
    const Channel& channel = mChannels[content.Take<std::uint16_t>()];
    item = {};
    item.sequence = content.Take<std::uint32_t>();
    item.logTimeNs = content.Take<std::uint64_t>();
    item.publishTimeNs = content.Take<std::uint64_t>();
    item.hostTimeNs = static_cast<std::int64_t>(item.logTimeNs + mLogToHostNs);
    item.topic = channel.topic;
    item.data = content.Rest();
    item.kind = channel.kind;
    if (!Interpret(item))
    {
        ReportRecord("a message on " + channel.topic + " is not what its channel says");
        item.kind = CaptureItem::Kind::Other;
    }
}

bool CaptureReader::Impl::Interpret(CaptureItem& item)
{
    if (item.kind == CaptureItem::Kind::Other)
    {
        return true;
    }
    if (item.kind == CaptureItem::Kind::Report)
    {
        return InterpretReport(item);
    }
    if (item.data.size() > MAX_JSON_SIZE)
    {
        return false;
    }
    if (item.kind == CaptureItem::Kind::Frame)
    {
        return InterpretFrame(item);
    }
    const JsonObject json(item.data);
    const bool isEvent = item.kind == CaptureItem::Kind::Event;
    const auto name = isEvent ? json.String("event") : std::string();
    const auto level = isEvent ? 0 : json.Number("level");
    auto text = json.String(isEvent ? "detail" : "message");
    if (!name || !text || !level || *level > static_cast<std::uint32_t>(CaptureLevel::Fatal))
    {
        return false;
    }
    item.name = *name;
    item.text = std::move(*text);
    item.level = static_cast<CaptureLevel>(*level);
    return true;
}

bool CaptureReader::Impl::InterpretReport(CaptureItem& item)
{
    if (item.data.size() != item.report.size())
    {
        return false;
    }
    for (std::size_t i = 0; i < item.report.size(); ++i)
    {
        item.report[i] = static_cast<std::uint8_t>(item.data[i]);
    }
    item.sequence = NumberAt<std::uint32_t>(item.data.data());
    item.deviceTimeUs = mDeviceTime.Of(item.report.data());
    return true;
}

bool CaptureReader::Impl::InterpretFrame(CaptureItem& item)
{
    const JsonObject json(item.data);
    const auto width = json.Number("width");
    const auto height = json.Number("height");
    const auto step = json.Number("step");
    auto encoding = json.String("encoding");
    auto pixels = FromBase64(json.String("data").value_or("?"));
    if (!width || !height || !step || !encoding || !pixels ||
        pixels->size() != std::uint64_t{*step} * *height)
    {
        return false;
    }
    mPixels = std::move(*pixels);
    item.frame = {*width, *height, *step, std::move(*encoding), mPixels};
    return true;
}

void CaptureReader::Impl::Report(std::uint64_t offset, const std::string& text)
{
    ++problemCount;
    if (problems.size() < MAX_PROBLEMS)
    {
        problems.push_back({offset, text});
    }
}

void CaptureReader::Impl::ReportRecord(const std::string& text)
{
    Report(mRecord.offset, text + ", at byte " + std::to_string(mRecord.offset));
}

CaptureReader::CaptureReader(const std::filesystem::path& path)
    : mImpl(std::make_unique<Impl>(path))
{
}

CaptureReader::~CaptureReader() = default;

bool CaptureReader::Next(CaptureItem& item) { return mImpl->Next(item); }

const std::map<std::string, std::map<std::string, std::string>>&
CaptureReader::Metadata() const noexcept
{
    return mImpl->metadata;
}

const std::vector<CaptureProblem>& CaptureReader::Problems() const noexcept
{
    return mImpl->problems;
}

std::size_t CaptureReader::ProblemCount() const noexcept { return mImpl->problemCount; }

std::uint64_t CaptureReader::Size() const noexcept { return mImpl->file.Size(); }

std::uint64_t CaptureReader::Position() const noexcept { return mImpl->Position(); }

} // namespace qltkit
