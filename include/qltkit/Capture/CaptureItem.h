// What a capture consists of: reports, events, text of the library, and frames of the camera.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace qltkit
{

/// A report of the headset's sensors as it was read, byte by byte.
using CaptureReport = std::array<std::uint8_t, 64>;

/// How grave a text is, with the numbers that viewers know.
enum class CaptureLevel : std::uint8_t
{
    Unknown = 0,
    Debug = 1,
    Info = 2,
    Warning = 3,
    Error = 4,
    Fatal = 5,
};

/// A picture of the camera, first row first.
struct CaptureFrame
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t step = 0;         // bytes from row to row
    std::string encoding = "mono8"; // or another name that Foxglove's RawImage knows
    std::string_view pixels;        // step * height bytes
};

/// One message of a capture.
struct CaptureItem
{
    enum class Kind : std::uint8_t
    {
        Report, // report, sequence and deviceTimeUs are set
        Event,  // name and text are set
        Text,   // level and text are set
        Frame,  // frame is set
        Other,  // of somebody else's channel: only the times, topic and data are set
    };

    Kind kind = Kind::Other;
    std::int64_t hostTimeNs = 0;     // the steady clock of the machine that wrote the capture
    std::uint64_t logTimeNs = 0;     // the same moment as Unix time
    std::uint64_t publishTimeNs = 0; // Unix time that runs at the pace of the headset's clock
    std::uint32_t sequence = 0;
    std::int64_t deviceTimeUs = 0; // the headset's clock, counted on when its 32 bits are full
    CaptureReport report{};
    CaptureLevel level = CaptureLevel::Unknown;
    std::string name;
    std::string text;
    CaptureFrame frame;
    std::string_view topic;
    std::string_view data; // the message as it is in the file
};

} // namespace qltkit
