#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace qltkit
{

/// A report of the headset's sensors: the 64 bytes as they were read.
using CaptureReport = std::array<std::uint8_t, 64>;

/// The severity of a text. Viewers use the same numbers.
enum class CaptureLevel : std::uint8_t
{
    Unknown = 0,
    Debug = 1,
    Info = 2,
    Warning = 3,
    Error = 4,
    Fatal = 5,
};

/// A picture of the camera. The first row is the top row.
struct CaptureFrame
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t step = 0;         // bytes from one row to the next
    std::string encoding = "mono8"; // or another encoding of Foxglove's RawImage
    std::string_view pixels;        // step * height bytes
};

/// One message of a capture: a report, an event, a text of the library or a frame of the camera. A
/// plain value.
struct CaptureItem
{
    enum class Kind : std::uint8_t
    {
        Report, // report, sequence and deviceTimeUs are set
        Event,  // name and text are set
        Text,   // level and text are set
        Frame,  // frame is set
        Other,  // from a foreign channel: only the times, topic and data are set
    };

    Kind kind = Kind::Other;
    std::int64_t hostTimeNs = 0;     // steady clock of the machine that wrote the capture
    std::uint64_t logTimeNs = 0;     // the same moment as Unix time
    std::uint64_t publishTimeNs = 0; // Unix time at the pace of the headset's clock
    std::uint32_t sequence = 0;
    std::int64_t deviceTimeUs = 0; // the headset's clock without its wrap
    CaptureReport report{};
    CaptureLevel level = CaptureLevel::Unknown;
    std::string name;
    std::string text;
    CaptureFrame frame;
    std::string_view topic;
    std::string_view data; // the bytes of the message in the file
};

} // namespace qltkit
