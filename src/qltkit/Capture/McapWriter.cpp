#include <qltkit/Capture/McapWriter.h>

#include <qltkit/Error.h>

#include "Capture/Crc32.h"
#include "Capture/McapFormat.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace qltkit
{

namespace
{

constexpr std::size_t CHUNK_SIZE = 1 << 20;

/// The earliest and the latest of some times. Both are 0 when there are none.
struct TimeSpan
{
    void Add(std::uint64_t timeNs)
    {
        start = any ? std::min(start, timeNs) : timeNs;
        end = any ? std::max(end, timeNs) : timeNs;
        any = true;
    }

    std::uint64_t start = 0;
    std::uint64_t end = 0;
    bool any = false;
};

} // namespace

struct McapWriter::State
{
    struct Channel
    {
        std::string schemaRecord;
        std::string channelRecord;
        std::uint64_t messages = 0;
        std::string chunkIndex; // log times and offsets of its messages in the current chunk
    };

    void Write(std::string_view bytes)
    {
        sink(bytes);
        crc.Update(bytes);
        offset += bytes.size();
    }

    void WriteRecord(std::uint8_t opcode, std::string_view content)
    {
        std::string bytes;
        AppendRecord(bytes, opcode, content);
        Write(bytes);
    }

    void Flush();
    void WriteChunk();
    std::string WriteMessageIndexes();
    std::string Statistics() const;
    std::string Summary() const;
    void Close();

    Sink sink;
    Crc32 crc; // CRC of all bytes so far
    std::uint64_t offset = 0;
    std::vector<Channel> channels;
    std::string chunk;
    TimeSpan chunkTimes;
    TimeSpan times;
    std::uint64_t messages = 0;
    std::uint16_t schemas = 0;
    std::uint32_t chunks = 0;
    std::uint32_t metadata = 0;
    std::string chunkIndexes; // records of the summary
    std::string metadataIndexes;
};

McapWriter::McapWriter(Sink sink)
    : mState(std::make_unique<State>())
{
    mState->sink = std::move(sink);
    std::string header;
    AppendString(header, "");
    AppendString(header, "QueltaKit " QLTKIT_VERSION);
    std::string bytes(MCAP_MAGIC);
    AppendRecord(bytes, McapOpcode::HEADER, header);
    mState->Write(bytes);
}

McapWriter::~McapWriter() = default;

std::uint16_t McapWriter::AddChannel(const McapChannel& channel)
{
    if (mState->channels.size() == 0xFFFF)
    {
        throw Error("an MCAP file has at most 65535 channels");
    }
    const auto id = static_cast<std::uint16_t>(mState->channels.size() + 1);
    const bool hasSchema = !channel.schemaName.empty();
    State::Channel added;
    if (hasSchema)
    {
        std::string schema;
        AppendNumber(schema, id);
        AppendString(schema, channel.schemaName);
        AppendString(schema, channel.schemaEncoding);
        AppendString(schema, channel.schema);
        AppendRecord(added.schemaRecord, McapOpcode::SCHEMA, schema);
        ++mState->schemas;
    }
    std::string content;
    AppendNumber(content, id);
    AppendNumber(content, static_cast<std::uint16_t>(hasSchema ? id : 0));
    AppendString(content, channel.topic);
    AppendString(content, channel.messageEncoding);
    AppendMap(content, channel.metadata);
    AppendRecord(added.channelRecord, McapOpcode::CHANNEL, content);
    mState->channels.push_back(std::move(added));
    return id;
}

void McapWriter::AddMessage(const McapMessage& message)
{
    State& state = *mState;
    if (message.channel == 0 || message.channel > state.channels.size())
    {
        throw Error("there is no channel " + std::to_string(message.channel) +
                    " in this MCAP file");
    }
    State::Channel& channel = state.channels[message.channel - 1U];
    if (channel.chunkIndex.empty())
    {
        // Every chunk repeats these records, so it can be read when other chunks are lost.
        state.chunk += channel.schemaRecord;
        state.chunk += channel.channelRecord;
    }
    AppendNumber(channel.chunkIndex, message.logTimeNs);
    AppendNumber(channel.chunkIndex, std::uint64_t{state.chunk.size()});
    AppendNumber(state.chunk, McapOpcode::MESSAGE);
    AppendNumber(state.chunk, std::uint64_t{22 + message.data.size()});
    AppendNumber(state.chunk, message.channel);
    AppendNumber(state.chunk, message.sequence);
    AppendNumber(state.chunk, message.logTimeNs);
    AppendNumber(state.chunk, message.publishTimeNs);
    state.chunk += message.data;
    state.chunkTimes.Add(message.logTimeNs);
    state.times.Add(message.logTimeNs);
    ++channel.messages;
    ++state.messages;
    if (state.chunk.size() >= CHUNK_SIZE)
    {
        state.Flush();
    }
}

void McapWriter::AddMetadata(std::string_view name,
                             const std::map<std::string, std::string>& metadata)
{
    State& state = *mState;
    std::string content;
    AppendString(content, name);
    AppendMap(content, metadata);
    std::string index;
    AppendNumber(index, state.offset);
    AppendNumber(index, MCAP_PREFIX_SIZE + content.size());
    AppendString(index, name);
    AppendRecord(state.metadataIndexes, McapOpcode::METADATA_INDEX, index);
    ++state.metadata;
    state.WriteRecord(McapOpcode::METADATA, content);
}

void McapWriter::Flush() { mState->Flush(); }

void McapWriter::Close() { mState->Close(); }

void McapWriter::State::Flush()
{
    if (!chunkTimes.any)
    {
        return;
    }
    const std::uint64_t begin = offset;
    WriteChunk();
    const std::uint64_t length = offset - begin;
    const std::string offsets = WriteMessageIndexes();
    std::string index;
    AppendNumber(index, chunkTimes.start);
    AppendNumber(index, chunkTimes.end);
    AppendNumber(index, begin);
    AppendNumber(index, length);
    AppendString(index, offsets);
    AppendNumber(index, offset - begin - length);
    AppendString(index, "");
    AppendNumber(index, std::uint64_t{chunk.size()});
    AppendNumber(index, std::uint64_t{chunk.size()});
    AppendRecord(chunkIndexes, McapOpcode::CHUNK_INDEX, index);
    ++chunks;
    chunk.clear();
    chunkTimes = {};
}

void McapWriter::State::WriteChunk()
{
    std::string bytes;
    AppendNumber(bytes, McapOpcode::CHUNK);
    AppendNumber(bytes, MCAP_CHUNK_HEADER_SIZE + chunk.size());
    AppendNumber(bytes, chunkTimes.start);
    AppendNumber(bytes, chunkTimes.end);
    AppendNumber(bytes, std::uint64_t{chunk.size()});
    AppendNumber(bytes, Crc32Of(chunk));
    AppendString(bytes, "");
    AppendNumber(bytes, std::uint64_t{chunk.size()});
    Write(bytes);
    Write(chunk);
}

/// Writes the indexes and returns the map from channel to offset for the chunk's index.
std::string McapWriter::State::WriteMessageIndexes()
{
    std::string offsets;
    for (std::size_t i = 0; i < channels.size(); ++i)
    {
        if (channels[i].chunkIndex.empty())
        {
            continue;
        }
        const auto id = static_cast<std::uint16_t>(i + 1);
        AppendNumber(offsets, id);
        AppendNumber(offsets, offset);
        std::string content;
        AppendNumber(content, id);
        AppendString(content, channels[i].chunkIndex);
        WriteRecord(McapOpcode::MESSAGE_INDEX, content);
        channels[i].chunkIndex.clear();
    }
    return offsets;
}

std::string McapWriter::State::Statistics() const
{
    std::string counts;
    for (std::size_t i = 0; i < channels.size(); ++i)
    {
        AppendNumber(counts, static_cast<std::uint16_t>(i + 1));
        AppendNumber(counts, channels[i].messages);
    }
    std::string content;
    AppendNumber(content, messages);
    AppendNumber(content, schemas);
    AppendNumber(content, static_cast<std::uint32_t>(channels.size()));
    AppendNumber(content, std::uint32_t{0}); // attachments
    AppendNumber(content, metadata);
    AppendNumber(content, chunks);
    AppendNumber(content, times.start);
    AppendNumber(content, times.end);
    AppendString(content, counts);
    std::string record;
    AppendRecord(record, McapOpcode::STATISTICS, content);
    return record;
}

/// The records of the summary and the offsets of their groups, in the order that all readers
/// accept.
std::string McapWriter::State::Summary() const
{
    std::string schemaRecords;
    std::string channelRecords;
    for (const Channel& channel : channels)
    {
        schemaRecords += channel.schemaRecord;
        channelRecords += channel.channelRecord;
    }
    const std::string statistics = Statistics();
    const std::string* const groups[] = {&schemaRecords, &channelRecords, &statistics,
                                         &chunkIndexes, &metadataIndexes};
    std::string summary;
    std::string offsets;
    for (const std::string* group : groups)
    {
        if (!group->empty())
        {
            std::string content;
            AppendNumber(content, static_cast<std::uint8_t>(group->front()));
            AppendNumber(content, offset + summary.size());
            AppendNumber(content, std::uint64_t{group->size()});
            AppendRecord(offsets, McapOpcode::SUMMARY_OFFSET, content);
            summary += *group;
        }
    }
    const std::uint64_t offsetsStart = offset + summary.size();
    summary += offsets;
    AppendNumber(summary, McapOpcode::FOOTER);
    AppendNumber(summary, MCAP_FOOTER_CONTENT_SIZE);
    AppendNumber(summary, offset);
    AppendNumber(summary, offsetsStart);
    return summary;
}

void McapWriter::State::Close()
{
    Flush();
    std::string dataEnd;
    AppendNumber(dataEnd, crc.Value());
    WriteRecord(McapOpcode::DATA_END, dataEnd);
    std::string summary = Summary();
    AppendNumber(summary, Crc32Of(summary));
    summary += MCAP_MAGIC;
    Write(summary);
}

} // namespace qltkit
