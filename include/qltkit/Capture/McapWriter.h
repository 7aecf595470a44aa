// Writes MCAP, the open container of time-stamped messages on channels: checksummed chunks, an
// index, and statistics, without compression. Foxglove, PlotJuggler and the format's own libraries
// open what it writes.
//
// A McapWriter does no I/O of its own: a sink takes the bytes. One thread at a time.
#pragma once

#include <qltkit/Export.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace qltkit
{

/// All text is UTF-8.
struct McapChannel
{
    std::string topic;
    std::string messageEncoding; // "json" for one
    std::string schemaName;      // empty for a channel without a schema
    std::string schemaEncoding;  // "jsonschema" for one
    std::string schema;
    std::map<std::string, std::string> metadata;
};

struct McapMessage
{
    std::uint16_t channel = 0;
    std::uint32_t sequence = 0; // 0 when it is not used
    std::uint64_t logTimeNs = 0;
    std::uint64_t publishTimeNs = 0; // the log time when it is not known
    std::string_view data;
};

class QLTKIT_API McapWriter
{
public:
    /// Takes the next bytes of the file. An exception of the sink leaves the operation that called
    /// it; the writer is of no use after that.
    using Sink = std::function<void(std::string_view)>;

    /// Writes the beginning of the file.
    explicit McapWriter(Sink sink);

    /// Does not close the file.
    ~McapWriter();

    McapWriter(const McapWriter&) = delete;
    McapWriter& operator=(const McapWriter&) = delete;

    /// The channel's number, from 1. Error when all 65535 are taken.
    std::uint16_t AddChannel(const McapChannel& channel);

    /// Error when there is no such channel. The message reaches the sink with its chunk: when that
    /// has a mebibyte, or at Flush.
    void AddMessage(const McapMessage& message);

    /// Reaches the sink at once.
    void AddMetadata(std::string_view name, const std::map<std::string, std::string>& metadata);

    /// Ends the current chunk; nothing when it has no message.
    void Flush();

    /// Flushes and writes the summary. Nothing may be added after it.
    void Close();

private:
    struct State;

    std::unique_ptr<State> mState;
};

} // namespace qltkit
