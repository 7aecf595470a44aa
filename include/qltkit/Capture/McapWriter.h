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

/// The description of a channel. All text is UTF-8.
struct McapChannel
{
    std::string topic;
    std::string messageEncoding; // for example "json"
    std::string schemaName;      // empty for a channel without a schema
    std::string schemaEncoding;  // for example "jsonschema"
    std::string schema;
    std::map<std::string, std::string> metadata;
};

/// One message. Times are Unix times in nanoseconds.
struct McapMessage
{
    std::uint16_t channel = 0;
    std::uint32_t sequence = 0; // 0 when there is none
    std::uint64_t logTimeNs = 0;
    std::uint64_t publishTimeNs = 0; // equal to the log time when it is unknown
    std::string_view data;
};

/// Writes MCAP, the open container format for time-stamped messages on channels. The files are not
/// compressed. They have chunks with checksums, an index and statistics. Foxglove, PlotJuggler and
/// the format's own libraries can open them.
///
/// A McapWriter does no I/O: it gives the bytes to a sink. One thread at a time.
class QLTKIT_API McapWriter
{
public:
    /// Takes the next bytes of the file. An exception from the sink passes through the operation
    /// that called it. The writer cannot be used after that.
    using Sink = std::function<void(std::string_view)>;

    /// Gives the beginning of the file to the sink.
    explicit McapWriter(Sink sink);

    /// Does not close the file: without Close the file has no summary.
    ~McapWriter();

    McapWriter(const McapWriter&) = delete;
    McapWriter& operator=(const McapWriter&) = delete;

    /// Adds a channel and returns its number, which starts at 1. Throws Error when all 65535
    /// numbers are used.
    std::uint16_t AddChannel(const McapChannel& channel);

    /// Adds a message. Throws Error when its channel does not exist. The sink gets the message with
    /// its chunk: when the chunk has reached one mebibyte, or at Flush.
    void AddMessage(const McapMessage& message);

    /// Adds a metadata record. The sink gets it at once.
    void AddMetadata(std::string_view name, const std::map<std::string, std::string>& metadata);

    /// Ends the current chunk and gives it to the sink. Without a message in the chunk it does
    /// nothing.
    void Flush();

    /// Flushes and writes the summary. Nothing may be added after it.
    void Close();

private:
    struct State;

    std::unique_ptr<State> mState;
};

} // namespace qltkit
