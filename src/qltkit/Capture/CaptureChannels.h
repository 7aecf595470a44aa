// The channels of a capture, with the schemas that viewers need.
#pragma once

#include <qltkit/Capture/McapWriter.h>

namespace qltkit
{

inline constexpr std::string_view REPORT_ENCODING = "x-headset-report";
inline constexpr std::string_view EVENT_SCHEMA = "headset.Event";
inline constexpr std::string_view LOG_SCHEMA = "foxglove.Log";
inline constexpr std::string_view IMAGE_SCHEMA = "foxglove.RawImage";

inline constexpr std::string_view IMU_SCHEMA = "headset.Imu";
inline constexpr std::string_view TRANSFORM_SCHEMA = "foxglove.FrameTransform";

inline constexpr std::size_t MAX_FRAME_BYTES = 4 << 20;

// The metadata record at the beginning of a capture, and the one at its end.
inline constexpr std::string_view CAPTURE_METADATA = "capture";
inline constexpr std::string_view END_METADATA = "capture.end";
inline constexpr std::string_view STEADY_KEY = "clock.steadyNs";
inline constexpr std::string_view WALL_KEY = "clock.wallNs";

McapChannel ReportChannel();
McapChannel ImuChannel();
McapChannel TransformChannel();
McapChannel EventChannel();
McapChannel LogChannel();
McapChannel ImageChannel();

} // namespace qltkit
