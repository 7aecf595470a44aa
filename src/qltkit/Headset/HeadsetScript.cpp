#include <qltkit/Headset/HeadsetScript.h>

#include <qltkit/Error.h>

#include "Headset/JsonFields.h"
#include "Headset/ScriptFiles.h"
#include "Headset/ScriptTimeline.h"

namespace qltkit
{

namespace
{

using Kind = HeadsetScript::EventKind;

constexpr Range SECONDS = {0.0, MAX_SCRIPT_SECONDS};
constexpr Range DEGREES = {-36000.0, 36000.0};
constexpr Range SENSOR_VALUES = {-2000.0, 2000.0};
constexpr Range SCALES = {0.5, 2.0};
constexpr Range CELSIUS = {-100.0, 120.0};
constexpr Range REPORTS = {1.0, 1000000.0};
constexpr Range DRIFT_PPM = {-MAX_DRIFT_PPM, MAX_DRIFT_PPM};
constexpr Range U16 = {0.0, 65535.0};
constexpr Range U32 = {0.0, 4294967295.0};
constexpr Range I32 = {-2147483648.0, 2147483647.0};

/// The foreign device of an event without identifiers: it has the same driver and other firmware.
constexpr std::uint16_t FOREIGN_VENDOR_ID = 0x04B4;
constexpr std::uint16_t FOREIGN_PRODUCT_ID = 0x1003;

const std::vector<std::string> SENSORS = {"gyroscope", "accelerometer", "magnetometer"};
const std::vector<std::string> AXES = {"x", "y", "z"};

// The names in the order of HeadsetScript::EventKind and HeadsetScript::Motion.
const std::vector<std::string> EVENTS = {
    "unplug", "plug",       "stall",       "short_read", "sequence_jump", "repeat",
    "drop",   "clock_jump", "clock_drift", "stick",      "foreign_plug",  "foreign_unplug"};
const std::vector<std::string> MOTIONS = {"rest", "turns", "angles", "recording"};

std::vector<HeadsetScript::Point> PointsOf(JsonFields& motion)
{
    std::vector<HeadsetScript::Point> points(motion.List("points").size());
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        JsonFields fields = motion.Item("points", i);
        points[i] = {fields.Number("at", SECONDS), fields.Number("yaw", DEGREES, 0.0),
                     fields.Number("pitch", DEGREES, 0.0), fields.Number("roll", DEGREES, 0.0)};
        fields.RefuseOthers();
    }
    return points;
}

void ReadRecording(JsonFields& motion, const std::filesystem::path& folder, HeadsetScript& script)
{
    const std::string file = motion.Text("file");
    try
    {
        script.recording = ReadReports(PathInside(folder, file));
    }
    catch (const Error& error)
    {
        motion.Fail("file", error.what());
    }
}

void ReadMotion(JsonFields motion, const std::filesystem::path& folder, HeadsetScript& script)
{
    script.motion = static_cast<HeadsetScript::Motion>(motion.Choice("kind", MOTIONS));
    script.motionSeed = script.seed;
    switch (script.motion)
    {
    case HeadsetScript::Motion::Rest:
        break;
    case HeadsetScript::Motion::Turns:
        script.motionSeed = motion.Has("seed") ? motion.Count("seed") : script.seed;
        script.speed = motion.Number("speed", {0.01, 10.0}, 1.0);
        break;
    case HeadsetScript::Motion::Angles:
        script.points = PointsOf(motion);
        break;
    case HeadsetScript::Motion::Recording:
        ReadRecording(motion, folder, script);
        break;
    }
    motion.RefuseOthers();
}

void ReadFaults(JsonFields sensor, HeadsetScript::Faults& faults)
{
    if (sensor.Has("scale"))
    {
        faults.scale = sensor.Vector("scale", SCALES);
    }
    if (sensor.Has("bias"))
    {
        faults.bias = sensor.Vector("bias", SENSOR_VALUES);
    }
    if (sensor.Has("bias_per_kelvin"))
    {
        faults.biasPerKelvin = sensor.Vector("bias_per_kelvin", SENSOR_VALUES);
    }
    faults.noise = sensor.Number("noise", {0.0, SENSOR_VALUES.most}, faults.noise);
    faults.clip = sensor.Number("clip", {0.0, SENSOR_VALUES.most}, faults.clip);
    sensor.RefuseOthers();
}

void ReadSensors(JsonFields sensors, HeadsetScript& script)
{
    for (std::size_t i = 0; i < SENSORS.size(); ++i)
    {
        if (sensors.Has(SENSORS[i]))
        {
            ReadFaults(sensors.Object(SENSORS[i]), script.faults[i]);
        }
    }
    if (sensors.Has("temperature"))
    {
        JsonFields ramp = sensors.Object("temperature");
        script.temperature = {ramp.Number("from", CELSIUS), ramp.Number("to", CELSIUS),
                              ramp.Number("begin", SECONDS), ramp.Number("end", SECONDS)};
        if (script.temperature->endS <= script.temperature->beginS)
        {
            ramp.Fail("end", "must be after begin");
        }
        ramp.RefuseOthers();
    }
    sensors.RefuseOthers();
}

void ReadClock(JsonFields clock, HeadsetScript& script)
{
    if (clock.Has("start_us"))
    {
        script.clockStartUs = static_cast<std::uint32_t>(clock.Whole("start_us", U32));
    }
    script.driftPpm = clock.Number("drift_ppm", DRIFT_PPM, 0.0);
    clock.RefuseOthers();
}

void ReadHost(JsonFields host, HeadsetScript& script)
{
    script.lateMs = host.Number("late_ms", {0.0, MAX_LATE_MS}, 0.0);
    script.lateShare = host.Number("late_share", {0.0, 1.0}, 1.0);
    host.RefuseOthers();
}

void ReadForeignDevice(JsonFields& fields, HeadsetScript::Event& event)
{
    const auto id = [&fields](const char* name, std::uint16_t fallback)
    { return fields.Has(name) ? static_cast<std::uint16_t>(fields.Whole(name, U16)) : fallback; };
    event.vendorId = id("vendor", FOREIGN_VENDOR_ID);
    event.productId = id("product", FOREIGN_PRODUCT_ID);
}

HeadsetScript::Event EventOf(JsonFields fields)
{
    HeadsetScript::Event event;
    event.atS = fields.Number("at", SECONDS);
    event.kind = static_cast<Kind>(fields.Choice("event", EVENTS));
    switch (event.kind)
    {
    case Kind::Unplug:
    case Kind::Plug:
    case Kind::ForeignUnplug:
        break;
    case Kind::Stall:
        event.forS = fields.Number("for", SECONDS);
        break;
    case Kind::ShortRead:
        event.amount = fields.Whole("length", {0.0, 63.0});
        break;
    case Kind::SequenceJump:
        event.amount = fields.Whole("by", I32);
        break;
    case Kind::Repeat:
    case Kind::Drop:
        event.amount = fields.Whole("count", REPORTS);
        break;
    case Kind::ClockJump:
        event.amount = fields.Whole("us", I32);
        break;
    case Kind::ClockDrift:
        event.ppm = fields.Number("ppm", DRIFT_PPM);
        break;
    case Kind::Stick:
        event.sensor = static_cast<HeadsetScript::Sensor>(fields.Choice("sensor", SENSORS));
        event.axis = fields.Choice("axis", AXES);
        event.forS = fields.Number("for", SECONDS);
        break;
    case Kind::ForeignPlug:
        ReadForeignDevice(fields, event);
        break;
    }
    fields.RefuseOthers();
    return event;
}

HeadsetScript ScriptOf(JsonFields fields, const std::filesystem::path& folder)
{
    HeadsetScript script;
    fields.Find("$schema"); // editors use it to complete and to check the file
    script.about = fields.Has("about") ? fields.Text("about") : "";
    script.seed = fields.Has("seed") ? fields.Count("seed") : 0;
    script.seconds = fields.Number("seconds", {0.001, MAX_SCRIPT_SECONDS}, 0.0);
    ReadMotion(fields.Object("motion"), folder, script);
    if (fields.Has("sensors"))
    {
        ReadSensors(fields.Object("sensors"), script);
    }
    if (fields.Has("clock"))
    {
        ReadClock(fields.Object("clock"), script);
    }
    if (fields.Has("host"))
    {
        ReadHost(fields.Object("host"), script);
    }
    const std::size_t events = fields.Has("events") ? fields.List("events").size() : 0;
    for (std::size_t i = 0; i < events; ++i)
    {
        script.events.push_back(EventOf(fields.Item("events", i)));
    }
    fields.RefuseOthers();
    if (const auto fault = FindFault(script))
    {
        JsonFields place = fault->list == "points" ? fields.Object("motion") : fields;
        if (fault->index < place.List(fault->list).size())
        {
            place.Item(fault->list, fault->index).Fail(fault->field, fault->text);
        }
        place.Fail(fault->list, fault->text);
    }
    return script;
}

} // namespace

HeadsetScript ParseHeadsetScript(std::string_view text, const std::filesystem::path& folder,
                                 const std::string& name)
{
    const JsonValue tree = ParseJson(text, name);
    return ScriptOf(JsonFields(tree, "", name), folder);
}

HeadsetScript LoadHeadsetScript(const std::filesystem::path& file)
{
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
    return ParseHeadsetScript(ReadSmallFile(file, MAX_JSON_SIZE), folder, file.u8string());
}

} // namespace qltkit
