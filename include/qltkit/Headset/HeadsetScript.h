#pragma once

#include <qltkit/Export.h>

#include <qlt/Sensors/SensorReport.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qltkit
{

/// The script of a ScriptedHeadset: the motion of the head, the faults of the sensors, and the
/// events with their times. Scripts are JSON files; scripts/headsets contains examples. A plain
/// record. Times are in seconds from the beginning of the script.
struct HeadsetScript
{
    enum class Motion
    {
        Rest,      // upright, facing forward
        Turns,     // HeadMotion with `motionSeed`, `speed` times as fast
        Angles,    // a smooth curve through `points`
        Recording, // the reports of `recording`
    };

    /// The orientation of the head at a time, in degrees: turns about y, then x, then z.
    struct Point
    {
        double atS = 0.0;
        double yawDeg = 0.0;
        double pitchDeg = 0.0;
        double rollDeg = 0.0;
    };

    /// The sensors and the units of their faults.
    enum Sensor
    {
        Gyroscope,     // degrees a second
        Accelerometer, // g
        Magnetometer,  // gauss
    };

    /// The faults of a sensor, in the sensor's unit and the tracker's frame: x right, y up, -z
    /// forward.
    struct Faults
    {
        std::array<double, 3> bias{};
        std::array<double, 3> biasPerKelvin{}; // relative to the temperature of the first report
        double noise = 0.0;                    // standard deviation of each axis
        double clip = std::numeric_limits<double>::infinity(); // largest magnitude of an axis
    };

    /// A temperature in degrees Celsius. It changes linearly between two moments and is constant
    /// outside them.
    struct TemperatureRamp
    {
        double fromC = 0.0;
        double toC = 0.0;
        double beginS = 0.0;
        double endS = 0.0;
    };

    enum class EventKind
    {
        Unplug,
        Plug,          // sequence and device clock restart
        Stall,         // nothing arrives for `forS`, then everything at once
        ShortRead,     // the next read gives only the first `amount` bytes of its report
        SequenceJump,  // the sequence number jumps by `amount`
        Repeat,        // the next report arrives `amount` more times
        Drop,          // the next `amount` reports never arrive
        ClockJump,     // the device clock jumps by `amount` microseconds
        ClockDrift,    // the device clock is `ppm` too fast from now on
        Stick,         // `axis` of `sensor` keeps its value for `forS`
        ForeignPlug,   // plugs in another device of the same driver; a search finds it first
        ForeignUnplug, // unplugs that device
    };

    struct Event
    {
        double atS = 0.0;
        EventKind kind = EventKind::Unplug;
        double forS = 0.0;
        std::int64_t amount = 0;
        double ppm = 0.0;
        Sensor sensor = Gyroscope;
        std::size_t axis = 0; // 0 x, 1 y, 2 z
        std::uint16_t vendorId = 0;
        std::uint16_t productId = 0;
    };

    std::string about;      // a description for people
    std::uint64_t seed = 0; // of all noise

    /// The headset is unplugged permanently at this time. 0 means no end, or the end of the
    /// recording.
    double seconds = 0.0;

    Motion motion = Motion::Rest;
    std::uint64_t motionSeed = 0;
    double speed = 1.0;
    std::vector<Point> points; // at least one, times ascending
    std::vector<qlt::SensorReport> recording;

    std::array<Faults, 3> faults{}; // indexed by Sensor

    /// Without a value the temperature is that of the recording, or of a room that slowly warms up.
    std::optional<TemperatureRamp> temperature;

    std::optional<std::uint32_t> clockStartUs; // empty: one second, or the recording's
    double driftPpm = 0.0; // error of the device clock; positive when it is too fast

    /// The host is asleep for a share of the reports. Such a report waits for up to `lateMs`
    /// milliseconds, and later reports queue behind it.
    double lateMs = 0.0;
    double lateShare = 1.0;

    std::vector<Event> events; // times ascending
};

/// Reads a script from a text. `folder` is the folder of the file of a recording, and that file
/// must not be outside it. Without a folder a recording is refused. `name` stands for the text in
/// errors. Any thread.
///
/// Throws Error with `name`, line and field when the text is no JSON, when it violates the format,
/// and when it exceeds a limit: 1 MB, 50,000 values, 8 levels.
QLTKIT_API HeadsetScript ParseHeadsetScript(std::string_view text,
                                            const std::filesystem::path& folder = {},
                                            const std::string& name = "script");

/// Reads a script from a file. The folder of the file is the folder of its recording. Throws Error
/// also when the file cannot be read. Any thread.
QLTKIT_API HeadsetScript LoadHeadsetScript(const std::filesystem::path& file);

} // namespace qltkit
