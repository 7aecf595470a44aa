#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace qltkit
{

/// A report of the headset's sensors: the 64 bytes as they were read.
using CaptureReport = std::array<std::uint8_t, 64>;

/// The severity of a text. The numbers are those of Foxglove's log messages.
enum class CaptureLevel : std::uint8_t
{
    /// The severity is not known.
    Unknown = 0,

    /// A detail for a developer.
    Debug = 1,

    /// Progress, as qlt::LogLevel::Info.
    Info = 2,

    /// Something that the user should know.
    Warning = 3,

    /// A failure, as qlt::LogLevel::Error.
    Error = 4,

    /// A failure that ends the program.
    Fatal = 5,
};

/// A picture of the camera. The first row is the top row.
struct CaptureFrame
{
    /// The number of pixels in a row.
    std::uint32_t width = 0;

    /// The number of rows.
    std::uint32_t height = 0;

    /// The number of bytes from one row to the next.
    std::uint32_t step = 0;

    /// The format of a pixel: one byte of grey, or another encoding of Foxglove's RawImage.
    std::string encoding = "mono8";

    /// The pixels: step * height bytes. The frame does not own them.
    std::string_view pixels;
};

/// One message of a capture: a report, an event, a text of the library or a frame of the camera.
/// `kind` says which members are set.
///
/// An item is a plain value, but its views `frame.pixels`, `topic` and `data` belong to the reader
/// and change with its next call.
struct CaptureItem
{
    /// The kinds of items. The times, `topic` and `data` are set for each of them.
    enum class Kind : std::uint8_t
    {
        /// `report`, `sequence` and `deviceTimeUs` are set.
        Report,

        /// `name` and `text` are set.
        Event,

        /// `level` and `text` are set.
        Text,

        /// `frame` is set.
        Frame,

        /// The item comes from a foreign channel, or its content is not what its channel says.
        Other,
    };

    /// The kind of this item.
    Kind kind = Kind::Other;

    /// The time by the steady clock of the machine that wrote the capture, in nanoseconds. A file
    /// without this clock gives Unix time.
    std::int64_t hostTimeNs = 0;

    /// The same moment as Unix time in nanoseconds.
    std::uint64_t logTimeNs = 0;

    /// Unix time in nanoseconds at the pace of the headset's clock, so the host's delays are not in
    /// it.
    std::uint64_t publishTimeNs = 0;

    /// The number that the headset gave the report. For other kinds it is the number in the file.
    std::uint32_t sequence = 0;

    /// The headset's clock in microseconds without its wrap.
    std::int64_t deviceTimeUs = 0;

    /// The bytes of the report.
    CaptureReport report{};

    /// The severity of the text.
    CaptureLevel level = CaptureLevel::Unknown;

    /// The name of the event, for example "connected", "lost" or "dropped".
    std::string name;

    /// The detail of the event, or the text.
    std::string text;

    /// The frame of the camera.
    CaptureFrame frame;

    /// The topic of the channel, for example "/raw".
    std::string_view topic;

    /// The bytes of the message in the file.
    std::string_view data;
};

} // namespace qltkit
