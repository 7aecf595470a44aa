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

/// The description of a channel. All text is UTF-8. A plain value.
struct McapChannel
{
    /// The name of the channel for people and viewers, for example "/raw".
    std::string topic;

    /// The format of the messages, for example "json".
    std::string messageEncoding;

    /// The name of the schema, or empty for a channel without a schema.
    std::string schemaName;

    /// The format of the schema, for example "jsonschema".
    std::string schemaEncoding;

    /// The text of the schema.
    std::string schema;

    /// Further properties of the channel. They may be empty.
    std::map<std::string, std::string> metadata;
};

/// One message. Times are Unix times in nanoseconds.
struct McapMessage
{
    /// The number that AddChannel returned.
    std::uint16_t channel = 0;

    /// The number of the message on its channel, or 0 when there is none.
    std::uint32_t sequence = 0;

    /// The time at which the message was recorded. The index of the file sorts by it.
    std::uint64_t logTimeNs = 0;

    /// The time at which the message was made, or the log time when it is unknown.
    std::uint64_t publishTimeNs = 0;

    /// The bytes of the message. They are needed only during the call of AddMessage.
    std::string_view data;
};

/// Writes MCAP, the open container format for time-stamped messages on channels (https://mcap.dev).
/// The files are not compressed. They have chunks with checksums, an index and statistics.
/// Foxglove, PlotJuggler and the format's own libraries can open them.
///
///     qltkit::McapWriter mcap([&](std::string_view bytes) { file.Write(bytes); });
///     const std::uint16_t channel = mcap.AddChannel({"/state", "json", "", "", "", {}});
///     mcap.AddMessage({channel, 0, timeNs, timeNs, "{}"});
///     mcap.Close();
///
/// A McapWriter does no I/O: it gives the bytes to a sink. One thread at a time may use it.
/// CaptureWriter is the class for captures of a headset; this one is for other messages.
class QLTKIT_API McapWriter
{
public:
    /// Takes the next bytes of the file. An exception from the sink passes through the operation
    /// that called it. The writer cannot be used after that.
    using Sink = std::function<void(std::string_view)>;

    /// Gives the beginning of the file to the sink. The sink must not be empty.
    explicit McapWriter(Sink sink);

    /// Does not close the file: without Close the file has no summary.
    ~McapWriter();

    McapWriter(const McapWriter&) = delete;
    McapWriter& operator=(const McapWriter&) = delete;

    /// Adds a channel and returns its number, which starts at 1. The sink gets nothing yet. Throws
    /// Error when all 65535 numbers are used.
    std::uint16_t AddChannel(const McapChannel& channel);

    /// Adds a message. Throws Error when its channel does not exist. The sink gets the message with
    /// its chunk: when the chunk has reached one mebibyte, or at Flush.
    void AddMessage(const McapMessage& message);

    /// Adds a metadata record. The sink gets it at once. All text is UTF-8.
    void AddMetadata(std::string_view name, const std::map<std::string, std::string>& metadata);

    /// Ends the current chunk and gives it to the sink. Without a message in the chunk it does
    /// nothing.
    void Flush();

    /// Flushes and writes the summary. Call it once; nothing may be added after it.
    void Close();

private:
    struct State;

    std::unique_ptr<State> mState;
};

} // namespace qltkit
