#include <qltkit/Headset/HeadsetScript.h>

#include <qltkit/Error.h>
#include <qltkit/Headset/ScriptedHeadset.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <tuple>

namespace
{

using qltkit::HeadsetScript;
using qltkit::ParseHeadsetScript;
using qltkit::ScriptedHeadset;

/// The reason why the text is refused. Empty for a valid script.
std::string ErrorOf(const std::string& text)
{
    try
    {
        ScriptedHeadset(ParseHeadsetScript(text), ScriptedHeadset::Pace::Fastest);
        return {};
    }
    catch (const qltkit::Error& error)
    {
        return error.what();
    }
}

} // namespace

TEST(HeadsetScriptTest, AScriptThatIsWrongIsRefusedWithLineAndField)
{
    const std::string rest = R"({"motion": {"kind": "rest"}, )";
    // Each row has a script, " => ", and the end of the error after "script, line ". A ` stands for
    // a quote and a | for a new line.
    std::istringstream cases(
        R"( => 1: not JSON: unexpected end of input; expected '[', '{', or a literal
|[1] => 2: a script must be an object
{} => 1: motion is missing
{|`motion`: {`kind`: `rest`},||} => 4: not JSON: unexpected '}'; expected string literal
{`motion`: {`kind`: `rest`} => 1: not JSON: unexpected end of input; expected '}'
R|`seed`: 1,|`seed`: 2} => 3: `seed` is there twice
R|`sead`:|1} => 3: `sead` is no field here
R`seed`: -1} => 1: seed must be a whole number from 0 to 18446744073709551615
R`seed`: 18446744073709551616} => 1: seed must be a whole number from 0 to 18446744073709551615
R`seconds`: 0|} => 1: seconds must be a number from 0.001 to 1000000
R`seconds`: 1e999} => 1: not JSON: a number is too large
R`about`: null} => 1: about must be a text
R`about`: `x|y`} => 1: not JSON: invalid string: control character U+000A (LF) must be escaped to \u000A or \n
R`events`: {}} => 1: events must be a list
R`clock`:|[]} => 2: clock must be an object
R`clock`: {`start_us`: 0.5}} => 1: clock.start_us must be a whole number from 0 to 4294967295
R`sensors`: {`gyroscope`: {`bias`: [1, 2]}}} => 1: sensors.gyroscope.bias must be a list of three numbers
R`sensors`: {`gyroscope`: {`bias`: [1,|true, 3]}}} => 2: sensors.gyroscope.bias[1] must be a number from -2000 to 2000
R`sensors`: {`temperature`: {`from`: 1, `to`: 2, `begin`: 3, `end`: 3}}} => 1: sensors.temperature.end must be after begin
R`events`: [{`at`: 1, `event`: `stall`}]} => 1: events[0].for is missing
R`events`: [{`at`: 1, `event`: `stick`, `sensor`:|`nose`}]} => 2: events[0].sensor is `nose` and must be one of: gyroscope, accelerometer, magnetometer
R`events`: [{`at`: 1, `event`: `plug`}]} => 1: events[0].event cannot be: the headset is plugged in
R`events`: [{`at`: 2, `event`: `unplug`},|{`at`: 2, `event`: `drop`, `count`: 1}]} => 2: events[1].event cannot be: the headset is unplugged
R`events`: [{`at`: 2, `event`: `foreign_unplug`}]} => 1: events[0].event cannot be: there is none
R`events`: [{`at`: 2, `event`: `unplug`},|{`at`: 1, `event`: `plug`}]} => 2: events[1].at must not be earlier than in the event before
R`events`: [{`at`: 2, `event`: `unplug`, `for`: 1}]} => 1: events[0]: `for` is no field here
R`seconds`: 1, `events`: [{`at`: 2, `event`: `unplug`}]} => 1: events[0].at is after the end of the script
{`motion`: {`kind`: `angles`, `points`: []}} => 1: motion.points must have a point
{`motion`: {`kind`: `angles`, `points`: [{`at`: 1}, {`at`: 1}]}} => 1: motion.points[1].at must be later than in the point before
{`motion`: {`kind`: `rest`, `speed`: 1}} => 1: motion: `speed` is no field here
{`motion`: {`kind`: `angles`, `points`: [{`at`: 1, `x`: 1}]}} => 1: motion.points[0]: `x` is no field here
R`sensors`: {`nose`: {}}} => 1: sensors: `nose` is no field here
R`sensors`: {`gyroscope`: {`x`: 1}}} => 1: sensors.gyroscope: `x` is no field here
R`sensors`: {`temperature`: {`from`: 1, `to`: 2, `begin`: 3, `end`: 4, `x`: 1}}} => 1: sensors.temperature: `x` is no field here
R`clock`: {`x`: 1}} => 1: clock: `x` is no field here
R`host`: {`x`: 1}} => 1: host: `x` is no field here
[[[[[[[[[[[[ => 1: there are more than 8 levels)");
    for (std::string line; std::getline(cases, line);)
    {
        std::replace(line.begin(), line.end(), '`', '"');
        std::string text = line.substr(0, line.find(" => "));
        std::replace(text.begin(), text.end(), '|', '\n');
        text = text.substr(0, 1) == "R" ? rest + text.substr(1) : text;
        EXPECT_EQ(ErrorOf(text), "script, line " + line.substr(line.find(" => ") + 4));
    }
    EXPECT_EQ(ErrorOf("[\"\xFF\"]"),
              "script, line 1: not JSON: invalid string: ill-formed UTF-8 byte");
    std::string many = rest + "\"events\": [";
    for (int i = 0; i < 50000; ++i)
    {
        many += "0,\n";
    }
    EXPECT_EQ(ErrorOf(many), "script, line 49997: there are more than 50000 values");
    EXPECT_EQ(ErrorOf(std::string((1 << 20) + 1, ' ')), "script is larger than 1048576 bytes");
    EXPECT_THROW(qltkit::LoadHeadsetScript("no/such/file.json"), qltkit::Error);
    HeadsetScript script;
    script.events = {{1.0, HeadsetScript::EventKind::Plug}};
    EXPECT_THROW(ScriptedHeadset headset(script), qltkit::Error);
}

TEST(HeadsetScriptTest, EveryFieldIsRead)
{
    using Kind = HeadsetScript::EventKind;
    const HeadsetScript script = ParseHeadsetScript(R"({"about": "all", "seed": 5, "seconds": 60,
        "motion": {"kind": "turns", "seed": 6, "speed": 0.25},
        "sensors": {"accelerometer": {"bias": [1, 2, 3], "bias_per_kelvin": [4, 5, 6], "noise": 7,
        "clip": 8}, "temperature": {"from": 20, "to": 30, "begin": 1, "end": 2}},
        "clock": {"start_us": 9, "drift_ppm": 10}, "host": {"late_ms": 11, "late_share": 0.5},
        "events": [{"at": 1, "event": "stall", "for": 2},
        {"at": 2, "event": "short_read", "length": 3}, {"at": 3, "event": "sequence_jump", "by": -4},
        {"at": 4, "event": "repeat", "count": 5}, {"at": 5, "event": "clock_jump", "us": -6},
        {"at": 6, "event": "clock_drift", "ppm": 7},
        {"at": 7, "event": "stick", "sensor": "magnetometer", "axis": "z", "for": 8},
        {"at": 8, "event": "foreign_plug", "vendor": 1, "product": 2},
        {"at": 9, "event": "foreign_unplug"}, {"at": 10, "event": "foreign_plug"}]})");
    EXPECT_EQ(script.about, "all");
    EXPECT_EQ(script.seed, 5u);
    EXPECT_EQ(script.seconds, 60.0);
    EXPECT_EQ(script.motion, HeadsetScript::Motion::Turns);
    EXPECT_EQ(script.motionSeed, 6u);
    EXPECT_EQ(script.speed, 0.25);
    const HeadsetScript::Faults& faults = script.faults[HeadsetScript::Accelerometer];
    EXPECT_EQ(faults.bias, (std::array<double, 3>{1, 2, 3}));
    EXPECT_EQ(faults.biasPerKelvin, (std::array<double, 3>{4, 5, 6}));
    EXPECT_EQ(faults.noise, 7.0);
    EXPECT_EQ(faults.clip, 8.0);
    EXPECT_EQ(script.temperature->fromC, 20.0);
    EXPECT_EQ(script.temperature->toC, 30.0);
    EXPECT_EQ(script.temperature->beginS, 1.0);
    EXPECT_EQ(script.temperature->endS, 2.0);
    EXPECT_EQ(script.clockStartUs, 9u);
    EXPECT_EQ(script.driftPpm, 10.0);
    EXPECT_EQ(script.lateMs, 11.0);
    EXPECT_EQ(script.lateShare, 0.5);
    const HeadsetScript::Event expected[] = {
        {1, Kind::Stall, 2},
        {2, Kind::ShortRead, 0, 3},
        {3, Kind::SequenceJump, 0, -4},
        {4, Kind::Repeat, 0, 5},
        {5, Kind::ClockJump, 0, -6},
        {6, Kind::ClockDrift, 0, 0, 7},
        {7, Kind::Stick, 8, 0, 0, HeadsetScript::Magnetometer, 2},
        {8, Kind::ForeignPlug, 0, 0, 0, {}, 0, 1, 2},
        {9, Kind::ForeignUnplug},
        {10, Kind::ForeignPlug, 0, 0, 0, {}, 0, 0x04B4, 0x1003}};
    ASSERT_EQ(script.events.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i)
    {
        const auto fields = [](const HeadsetScript::Event& e)
        {
            return std::tie(e.atS, e.kind, e.forS, e.amount, e.ppm, e.sensor, e.axis, e.vendorId,
                            e.productId);
        };
        EXPECT_EQ(fields(script.events[i]), fields(expected[i])) << i;
    }
}

TEST(HeadsetScriptTest, ADamagedScriptIsRefusedOrAnotherScript)
{
    std::ifstream file(std::string(QLT_SCRIPTS) + "/bad_cable.json", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::size_t end = text.rfind('}');
    std::mt19937 random(1);
    for (std::size_t i = 0; i < end; ++i)
    {
        EXPECT_EQ(ErrorOf(text.substr(0, i)).rfind("script, line ", 0), 0u) << i;
        std::string flipped = text;
        flipped[i] = static_cast<char>(flipped[i] ^ 1 << random() % 8);
        const std::string error = ErrorOf(flipped);
        EXPECT_TRUE(error.empty() || error.rfind("script, line ", 0) == 0) << error;
    }
}
