#include "qltkit_c_api/Guard.h"

#include <qltkit/Capture/CaptureReader.h>

#include <algorithm>
#include <iterator>

struct qltkit_CaptureReader
{
    explicit qltkit_CaptureReader(const std::filesystem::path& file)
        : reader(file)
    {
    }

    qltkit::CaptureReader reader;
    qltkit::CaptureItem item;
    std::string topic; // the topic of the item, with a zero at the end
};

namespace
{

using qltkit::Guarded;
using qltkit::Required;

qltkit_CaptureReader& Get(qltkit_CaptureReader* reader)
{
    return Required(reader, "the reader is null");
}

const std::uint8_t* BytesOf(std::string_view bytes)
{
    return reinterpret_cast<const std::uint8_t*>(bytes.data());
}

void Store(const qltkit::CaptureItem& item, const std::string& topic, qltkit_CaptureItem& place)
{
    place.kind = static_cast<std::int32_t>(item.kind);
    place.level = static_cast<std::int32_t>(item.level);
    place.hostTimeNs = item.hostTimeNs;
    place.logTimeNs = item.logTimeNs;
    place.publishTimeNs = item.publishTimeNs;
    place.deviceTimeUs = item.deviceTimeUs;
    place.sequence = item.sequence;
    place.size = static_cast<std::uint32_t>(item.data.size());
    std::copy(item.report.begin(), item.report.end(), place.report);
    place.topic = topic.c_str();
    place.name = item.name.c_str();
    place.text = item.text.c_str();
    place.data = BytesOf(item.data);
    const qltkit::CaptureFrame& frame = item.frame;
    const bool isFrame = item.kind == qltkit::CaptureItem::Kind::Frame;
    place.frame = {frame.width,
                   frame.height,
                   frame.step,
                   static_cast<std::uint32_t>(frame.pixels.size()),
                   frame.encoding.c_str(),
                   isFrame ? BytesOf(frame.pixels) : nullptr};
}

} // namespace

qltkit_Result qltkit_CaptureReader_Open(const char* file, qltkit_CaptureReader** reader)
{
    return Guarded(
        [&]
        {
            auto& result = Required(reader, "the place for the reader is null");
            result = new qltkit_CaptureReader(qltkit::PathOf(file));
        });
}

qltkit_Result qltkit_CaptureReader_Next(qltkit_CaptureReader* reader, qltkit_CaptureItem* item)
{
    return Guarded(
        [&]
        {
            qltkit_CaptureReader& handle = Get(reader);
            auto& result = Required(item, "the place for the item is null");
            if (!handle.reader.Next(handle.item))
            {
                return QLTKIT_END;
            }
            handle.topic = handle.item.topic;
            Store(handle.item, handle.topic, result);
            return QLTKIT_OK;
        });
}

qltkit_Result qltkit_CaptureReader_Metadata(qltkit_CaptureReader* reader, uint64_t index,
                                            const char** record, const char** key,
                                            const char** value)
{
    return Guarded(
        [&]
        {
            qltkit::Require(record != nullptr && key != nullptr && value != nullptr,
                            "a place for the metadata is null");
            for (const auto& [name, entries] : Get(reader).reader.Metadata())
            {
                if (index < entries.size())
                {
                    const auto entry =
                        std::next(entries.begin(), static_cast<std::ptrdiff_t>(index));
                    *record = name.c_str();
                    *key = entry->first.c_str();
                    *value = entry->second.c_str();
                    return QLTKIT_OK;
                }
                index -= entries.size();
            }
            return QLTKIT_END;
        });
}

qltkit_Result qltkit_CaptureReader_Problem(qltkit_CaptureReader* reader, uint64_t index,
                                           uint64_t* offset, const char** text)
{
    return Guarded(
        [&]
        {
            qltkit::Require(offset != nullptr && text != nullptr,
                            "a place for the problem is null");
            const auto& problems = Get(reader).reader.Problems();
            if (index >= problems.size())
            {
                return QLTKIT_END;
            }
            const qltkit::CaptureProblem& problem = problems[static_cast<std::size_t>(index)];
            *offset = problem.offset;
            *text = problem.text.c_str();
            return QLTKIT_OK;
        });
}

qltkit_Result qltkit_CaptureReader_Position(qltkit_CaptureReader* reader, uint64_t* position,
                                            uint64_t* size)
{
    return Guarded(
        [&]
        {
            qltkit::Require(position != nullptr && size != nullptr,
                            "a place for the position is null");
            *position = Get(reader).reader.Position();
            *size = Get(reader).reader.Size();
        });
}

void qltkit_CaptureReader_Delete(qltkit_CaptureReader* reader) { delete reader; }
