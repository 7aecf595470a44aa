#pragma once

#include <qlt/Math/Quaternion.h>
#include <qltkit/Capture/CaptureItem.h>
#include <qltkit/Capture/McapWriter.h>
#include <qltkit/Export.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace qltkit
{

/// Writes a capture for people and viewers: an MCAP file in which every message is JSON with a
/// schema. It has these channels:
///
/// - /imu, "headset.Imu": the decoded values of each report, with units in the channel's metadata.
/// - /tf, "foxglove.FrameTransform": the orientation of the head after each report, from the frame
///   "tracking" to the frame "headset", so that a 3D panel shows the head turning. The first
///   message turns the frame "tracking" (y up) into the frame "world" (z up).
/// - /events, "headset.Event"; /log, "foxglove.Log"; /camera, "foxglove.RawImage".
///
/// It does no I/O: a sink gets the bytes, as with McapWriter. One thread at a time may use it.
class QLTKIT_API JsonCaptureWriter
{
public:
    /// Gives the beginning of the file to the sink.
    explicit JsonCaptureWriter(McapWriter::Sink sink);
    ~JsonCaptureWriter();

    JsonCaptureWriter(const JsonCaptureWriter&) = delete;
    JsonCaptureWriter& operator=(const JsonCaptureWriter&) = delete;

    /// Adds a metadata record, for example one of CaptureReader::Metadata.
    void AddMetadata(std::string_view name, const std::map<std::string, std::string>& metadata);

    /// Adds an item. `orientation` is that of the head after the report, from head to tracking
    /// coordinates; other items ignore it. Returns false for an item of a foreign channel, which is
    /// left out.
    bool Add(const CaptureItem& item, const qlt::Quaternion& orientation);

    /// Writes the index. Nothing may be added after it.
    void Close();

private:
    class Impl;

    std::unique_ptr<Impl> mImpl;
};

} // namespace qltkit
