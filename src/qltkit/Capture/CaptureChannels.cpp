#include "Capture/CaptureChannels.h"

namespace qltkit
{

namespace
{

constexpr std::string_view TIME = R"("timestamp":{"type":"object","title":"time","properties":{)"
                                  R"("sec":{"type":"integer","minimum":0},)"
                                  R"("nsec":{"type":"integer","minimum":0,"maximum":999999999}}})";

constexpr std::string_view REPORT = R"(64 bytes, little-endian, as the headset sends them:
0 u32 sequence, 4 u32 time in microseconds, 8 i16[4] orientation of its own (z, w, x, y),
16 i16[3] gyroscope (1000/32768 degrees per second), 22 i16[3] accelerometer (1/8192 g),
28 i16[3] magnetometer (0.00014615609 gauss), 34 i16 temperature (1/256 degrees Celsius),
36 u32[2] reserved, 44 i32[3] position (0.0001 m), 56 u32[2] reserved
)";

std::string ObjectSchema(std::string_view title, std::string_view fields, std::string_view required)
{
    std::string schema = R"({"title":")";
    schema += title;
    schema += R"(","type":"object","properties":{)";
    schema += TIME;
    schema += fields;
    schema += R"(},"required":["timestamp",)";
    schema += required;
    return schema + "]}";
}

/// Returns the schema of a field that contains the numbers x, y and z.
std::string TripleField(std::string_view name)
{
    return '"' + std::string(name) +
           R"(":{"type":"object","properties":{"x":{"type":"number"},"y":{"type":"number"},)"
           R"("z":{"type":"number"}},"required":["x","y","z"]})";
}

McapChannel JsonChannel(std::string topic, std::string_view name, std::string_view fields,
                        std::string_view required)
{
    return {std::move(topic),
            "json",
            std::string(name),
            "jsonschema",
            ObjectSchema(name, fields, required),
            {}};
}

} // namespace

McapChannel ReportChannel()
{
    return {"/raw",   std::string(REPORT_ENCODING), "headset.Report",
            "x-text", std::string(REPORT),          {}};
}

McapChannel ImuChannel()
{
    McapChannel channel = JsonChannel(
        "/imu", IMU_SCHEMA,
        R"(,"sequence":{"type":"integer","minimum":0},"device_time_us":{"type":"integer"},)" +
            TripleField("gyroscope") + "," + TripleField("accelerometer") + "," +
            TripleField("magnetometer") + R"(,"temperature":{"type":"number"})",
        R"("sequence","device_time_us","gyroscope","accelerometer","magnetometer","temperature")");
    channel.metadata = {{"gyroscope", "radians per second"},
                        {"accelerometer", "g"},
                        {"magnetometer", "gauss"},
                        {"temperature", "degrees Celsius"},
                        {"axes", "x right, y up, -z forward"}};
    return channel;
}

McapChannel TransformChannel()
{
    return JsonChannel(
        "/tf", TRANSFORM_SCHEMA,
        R"(,"parent_frame_id":{"type":"string"},"child_frame_id":{"type":"string"},)" +
            TripleField("translation") +
            R"(,"rotation":{"type":"object","properties":{"x":{"type":"number"},)"
            R"("y":{"type":"number"},"z":{"type":"number"},"w":{"type":"number"}},)"
            R"("required":["x","y","z","w"]})",
        R"("parent_frame_id","child_frame_id","translation","rotation")");
}

McapChannel EventChannel()
{
    return JsonChannel("/events", EVENT_SCHEMA,
                       R"(,"event":{"type":"string"},"detail":{"type":"string"})",
                       R"("event","detail")");
}

McapChannel LogChannel()
{
    return JsonChannel(
        "/log", LOG_SCHEMA,
        R"(,"level":{"type":"integer","oneOf":[{"title":"UNKNOWN","const":0},)"
        R"({"title":"DEBUG","const":1},{"title":"INFO","const":2},{"title":"WARNING","const":3},)"
        R"({"title":"ERROR","const":4},{"title":"FATAL","const":5}]},"message":{"type":"string"},)"
        R"("name":{"type":"string"},"file":{"type":"string"},"line":{"type":"integer","minimum":0})",
        R"("level","message","name","file","line")");
}

McapChannel ImageChannel()
{
    return JsonChannel("/camera", IMAGE_SCHEMA,
                       R"(,"frame_id":{"type":"string"},"width":{"type":"integer","minimum":0},)"
                       R"("height":{"type":"integer","minimum":0},"encoding":{"type":"string"},)"
                       R"("step":{"type":"integer","minimum":0},)"
                       R"("data":{"type":"string","contentEncoding":"base64"})",
                       R"("frame_id","width","height","encoding","step","data")");
}

} // namespace qltkit
