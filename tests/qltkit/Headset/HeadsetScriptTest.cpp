#include <qltkit/Headset/HeadsetScript.h>

#include <qltkit/Error.h>
#include <qltkit/Headset/ScriptedHeadset.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

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
