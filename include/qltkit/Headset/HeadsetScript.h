// The script of a ScriptedHeadset: how the head moves, what is wrong with the sensors, and what
// happens when. Scripts are JSON; docs/headset-script.md describes the format.
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

/// A plain record. Times are seconds from the beginning of the script.
struct HeadsetScript
{
    enum class Motion
    {
        Rest,      // upright, facing forward
        Turns,     // HeadMotion with `motionSeed`, `speed` times as fast
        Angles,    // through `points`
        Recording, // the reports of `recording`
    };

    /// Where the head is at a time: turns about y, then x, then z, degrees.
    struct Point
    {
        double atS = 0.0;
        double yawDeg = 0.0;
        double pitchDeg = 0.0;
        double rollDeg = 0.0;
    };

    enum Sensor
    {
        Gyroscope,     // degrees a second
        Accelerometer, // g
        Magnetometer,  // gauss
    };

    /// In the sensor's unit and the tracker's frame: x right, y up, -z forward.
    struct Faults
    {
        std::array<double, 3> bias{};
        std::array<double, 3> biasPerKelvin{}; // away from the temperature of the first report
        double noise = 0.0;                    // standard deviation of each axis
        double clip = std::numeric_limits<double>::infinity(); // largest magnitude of an axis
    };

    /// A straight line between two moments, and constant outside.
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
        Plug,          // sequence and device clock start again
        Stall,         // nothing arrives for `forS`, then all of it at once
        ShortRead,     // the next read gives the first `amount` bytes of its report
        SequenceJump,  // by `amount`
        Repeat,        // the next report comes `amount` more times
        Drop,          // the next `amount` reports never come
        ClockJump,     // the device clock, by `amount` microseconds
        ClockDrift,    // the device clock is `ppm` too fast from now on
        Stick,         // `axis` of `sensor` keeps its value for `forS`
        ForeignPlug,   // another device with the same driver, found before the headset
        ForeignUnplug, // it goes again
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

    std::string about;      // for people
    std::uint64_t seed = 0; // of all noise
    double seconds = 0.0;   // then the cable is out for good; 0: no end, or the recording's

    Motion motion = Motion::Rest;
    std::uint64_t motionSeed = 0;
    double speed = 1.0;
    std::vector<Point> points; // at least one, times ascending
    std::vector<qlt::SensorReport> recording;

    std::array<Faults, 3> faults{};             // by Sensor
    std::optional<TemperatureRamp> temperature; // without: a room that slowly warms up, or recorded

    std::optional<std::uint32_t> clockStartUs; // without: one second, or recorded
    double driftPpm = 0.0;                     // of the device clock; above 0 it is too fast

    /// A share of the reports finds the host asleep and waits for up to so long; later ones queue.
    double lateMs = 0.0;
    double lateShare = 1.0;

    std::vector<Event> events; // times ascending
};

/// Reads a script. `folder` is where the file of a recording is, which must not lead out of it;
/// without a folder a recording is refused. `name` stands for the text in errors.
///
/// Error, with `name`, line and field, for text that is no JSON, breaks the format in any way, or
/// exceeds its limits: 1 MB, 50,000 values, 8 levels.
QLTKIT_API HeadsetScript ParseHeadsetScript(std::string_view text,
                                            const std::filesystem::path& folder = {},
                                            const std::string& name = "script");

/// The same from a file. Error also when the file cannot be read.
QLTKIT_API HeadsetScript LoadHeadsetScript(const std::filesystem::path& file);

} // namespace qltkit
