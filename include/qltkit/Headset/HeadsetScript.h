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
/// events with their times. Scripts are JSON files; scripts/headsets contains examples. A program
/// may also fill in the record itself:
///
///     qltkit::HeadsetScript script;
///     script.seconds = 2.0;
///     script.faults[qltkit::HeadsetScript::Gyroscope].bias = {0.5, 0.0, 0.0};
///     qltkit::HeadsetScript::Event unplug;
///     unplug.atS = 1.0;
///     script.events = {unplug};
///
/// A plain record. Times are in seconds from the beginning of the script.
struct HeadsetScript
{
    /// The motion of the head.
    enum class Motion
    {
        /// The head is upright and faces forward.
        Rest,

        /// The head moves as HeadMotion with `motionSeed`, `speed` times as fast.
        Turns,

        /// The head follows a smooth curve through `points` and rests outside them. Between two
        /// points the curve never leaves their range (Steffen 1990).
        Angles,

        /// The headset sends the reports of `recording`.
        Recording,
    };

    /// The orientation of the head at a time: turns about y, then x, then z.
    struct Point
    {
        /// The time of the point in seconds.
        double atS = 0.0;

        /// The turn about y in degrees.
        double yawDeg = 0.0;

        /// The turn about x in degrees.
        double pitchDeg = 0.0;

        /// The turn about z in degrees.
        double rollDeg = 0.0;
    };

    /// The sensors. Their faults have the units that are named here.
    enum Sensor
    {
        /// The gyroscope; its faults are in degrees per second.
        Gyroscope,

        /// The accelerometer; its faults are in g.
        Accelerometer,

        /// The magnetometer; its faults are in gauss.
        Magnetometer,
    };

    /// The faults of a sensor, in the sensor's unit and the tracker's frame: x right, y up, -z
    /// forward.
    struct Faults
    {
        /// The true value of each axis is multiplied by this factor before its bias is added.
        std::array<double, 3> scale{1.0, 1.0, 1.0};

        /// The constant error of each axis.
        std::array<double, 3> bias{};

        /// The change of the error of each axis per kelvin above the temperature of the first
        /// report.
        std::array<double, 3> biasPerKelvin{};

        /// The standard deviation of the noise of each axis.
        double noise = 0.0;

        /// The largest magnitude that an axis can show.
        double clip = std::numeric_limits<double>::infinity();
    };

    /// A temperature in degrees Celsius. It changes linearly between two moments and is constant
    /// outside them.
    struct TemperatureRamp
    {
        /// The temperature until `beginS`.
        double fromC = 0.0;

        /// The temperature from `endS` on.
        double toC = 0.0;

        /// The beginning of the change in seconds.
        double beginS = 0.0;

        /// The end of the change in seconds. It must be after `beginS`.
        double endS = 0.0;
    };

    /// The kinds of events. Each names the members of the event that it uses.
    enum class EventKind
    {
        /// The headset is unplugged.
        Unplug,

        /// The headset is plugged in. Its sequence and its device clock restart.
        Plug,

        /// Nothing arrives for `forS`, then everything arrives at once.
        Stall,

        /// The next read gives only the first `amount` bytes of its report.
        ShortRead,

        /// The sequence number jumps by `amount`.
        SequenceJump,

        /// The next report arrives `amount` more times.
        Repeat,

        /// The next `amount` reports never arrive.
        Drop,

        /// The device clock jumps by `amount` microseconds.
        ClockJump,

        /// The device clock is `ppm` parts per million too fast from now on.
        ClockDrift,

        /// The axis `axis` of `sensor` keeps its value for `forS`.
        Stick,

        /// Another device of the same driver is plugged in, with `vendorId` and `productId`. A
        /// search finds it before the headset.
        ForeignPlug,

        /// That device is unplugged.
        ForeignUnplug,
    };

    /// An event of a script. Members that its kind does not use have no effect.
    struct Event
    {
        /// The time of the event in seconds.
        double atS = 0.0;

        /// The kind of the event.
        EventKind kind = EventKind::Unplug;

        /// The duration in seconds.
        double forS = 0.0;

        /// A number of reports, bytes or microseconds.
        std::int64_t amount = 0;

        /// The error of the clock in parts per million.
        double ppm = 0.0;

        /// The sensor of a Stick.
        Sensor sensor = Gyroscope;

        /// The axis of a Stick: 0 is x, 1 is y and 2 is z.
        std::size_t axis = 0;

        /// The USB vendor of a foreign device.
        std::uint16_t vendorId = 0;

        /// The USB product of a foreign device.
        std::uint16_t productId = 0;
    };

    /// A description for people.
    std::string about;

    /// The seed of all noise. The same seed gives the same bytes.
    std::uint64_t seed = 0;

    /// The headset is unplugged permanently at this time. 0 means no end, or the end of the
    /// recording.
    double seconds = 0.0;

    /// The motion of the head.
    Motion motion = Motion::Rest;

    /// The seed of Motion::Turns.
    std::uint64_t motionSeed = 0;

    /// The pace of Motion::Turns: 2 is twice as fast.
    double speed = 1.0;

    /// The points of Motion::Angles. There is at least one, and their times increase.
    std::vector<Point> points;

    /// The reports of Motion::Recording.
    std::vector<qlt::SensorReport> recording;

    /// The faults of each sensor, indexed by Sensor.
    std::array<Faults, 3> faults{};

    /// Without a value the temperature is that of the recording, or of a room that slowly warms up.
    std::optional<TemperatureRamp> temperature;

    /// The device time of the first report in microseconds. Without a value it is one second, or
    /// the time in the recording.
    std::optional<std::uint32_t> clockStartUs;

    /// The error of the device clock in parts per million. It is positive when the clock is too
    /// fast.
    double driftPpm = 0.0;

    /// The longest delay of a report in milliseconds. The host is asleep for a share of the
    /// reports. Such a report waits for up to `lateMs`, and later reports queue behind it.
    double lateMs = 0.0;

    /// The share of the reports that wait, from 0 to 1.
    double lateShare = 1.0;

    /// The events. Their times do not decrease.
    std::vector<Event> events;
};

/// Reads a script from a JSON text. `folder` is the folder of the file of a recording, and that
/// file must not be outside it. Without a folder a recording is refused. `name` stands for the text
/// in errors.
///
/// Throws Error with `name`, line and field when the text is no JSON, when it violates the format,
/// and when it exceeds a limit: 1 MB, 50,000 values, 8 levels. docs/headset-script.md describes the
/// format. Any thread.
QLTKIT_API HeadsetScript ParseHeadsetScript(std::string_view text,
                                            const std::filesystem::path& folder = {},
                                            const std::string& name = "script");

/// Reads a script from a file. The folder of the file is the folder of its recording. Throws Error
/// also when the file cannot be read. Any thread.
QLTKIT_API HeadsetScript LoadHeadsetScript(const std::filesystem::path& file);

} // namespace qltkit
