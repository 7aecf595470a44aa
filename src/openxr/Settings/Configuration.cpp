#include "Settings/Configuration.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace qltxr
{

namespace
{

using nlohmann::json;

constexpr double MIN_RATE_HZ = 1.0;
constexpr double MAX_RATE_HZ = 1000.0;
constexpr std::uint32_t MIN_WINDOW = 64;
constexpr std::uint32_t MAX_WINDOW = 8192;

std::string Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

/// Parses "WIDTHxHEIGHT", or "off" for no window. Returns false for every other text.
bool ParseMirror(const std::string& text, OutputSettings& output)
{
    if (text == "off")
    {
        output.window = false;
        return true;
    }
    std::istringstream stream(text);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    char by = 0;
    const auto isSize = [](std::uint32_t s) { return s >= MIN_WINDOW && s <= MAX_WINDOW; };
    if (!(stream >> width >> by >> height) || by != 'x' || !stream.eof() || !isSize(width) ||
        !isSize(height))
    {
        return false;
    }
    output.window = true;
    output.width = width;
    output.height = height;
    return true;
}

/// The fields of one JSON object. Each field is read at most once.
class Fields
{
public:
    Fields(const json& object, std::string place, std::vector<std::string>& complaints)
        : mObject(object)
        , mPlace(std::move(place))
        , mComplaints(complaints)
    {
    }

    void Complain(const std::string& field, const std::string& rule) const
    {
        mComplaints.push_back(mPlace + ": " + field + " " + rule);
    }

    void Text(const char* field, std::string& value)
    {
        const json* found = Find(field);
        if (found != nullptr && found->is_string())
        {
            value = found->get<std::string>();
        }
        else if (found != nullptr)
        {
            Complain(field, "is to be a text");
        }
    }

    void Number(const char* field, double low, double high, double& value)
    {
        const json* found = Find(field);
        if (found == nullptr)
        {
            return;
        }
        const double number = found->is_number() ? found->get<double>() : std::nan("");
        if (number >= low && number <= high)
        {
            value = number;
            return;
        }
        std::ostringstream rule;
        rule << "is to be a number from " << low << " to " << high;
        Complain(field, rule.str());
    }

    const json* Find(const char* field)
    {
        const auto found = mObject.find(field);
        mKnown.emplace_back(field);
        return found == mObject.end() ? nullptr : &*found;
    }

    void ComplainOfOthers() const
    {
        for (const auto& entry : mObject.items())
        {
            if (std::find(mKnown.begin(), mKnown.end(), entry.key()) == mKnown.end())
            {
                Complain(entry.key(), "is not a setting");
            }
        }
    }

private:
    const json& mObject;
    const std::string mPlace;
    std::vector<std::string>& mComplaints;
    std::vector<std::string> mKnown;
};

void ReadPerson(const json& object, const std::string& name, Configuration& configuration)
{
    Fields fields(object, name + ": person", configuration.complaints);
    Person& person = configuration.person;
    fields.Number("ipd_m", 0.04, 0.09, person.ipdM);
    fields.Number("neck_to_eye_up_m", 0.0, 0.3, person.neckToEyeUpM);
    fields.Number("neck_to_eye_forward_m", 0.0, 0.3, person.neckToEyeForwardM);
    fields.Number("eye_height_m", 0.3, 2.5, person.eyeHeightM);
    fields.ComplainOfOthers();
}

void ReadObject(const json& object, const std::string& name, Configuration& configuration)
{
    Fields fields(object, name, configuration.complaints);
    fields.Text("source", configuration.source.name);
    std::string filter = "kit";
    fields.Text("filter", filter);
    if (filter != "kit" && filter != "core")
    {
        fields.Complain("filter", "is to be \"kit\" or \"core\"");
    }
    configuration.source.filter =
        filter == "core" ? qltkit::PoseFilter::Core : qltkit::PoseFilter::Kit;
    fields.Number("rate_hz", MIN_RATE_HZ, MAX_RATE_HZ, configuration.rateHz);
    std::string mirror;
    fields.Text("mirror", mirror);
    if (!mirror.empty() && !ParseMirror(mirror, configuration.output))
    {
        fields.Complain("mirror", "is to be \"off\" or a size such as \"1280x720\"");
    }
    if (const json* person = fields.Find("person"))
    {
        person->is_object() ? ReadPerson(*person, name, configuration)
                            : fields.Complain("person", "is to be an object");
    }
    fields.ComplainOfOthers();
}

void ReadEnvironment(Configuration& configuration)
{
    const std::string source = Environment("QUELTA_SOURCE");
    configuration.source.name = source.empty() ? configuration.source.name : source;
    configuration.pictureFile = Environment("QUELTA_OPENXR_PICTURE");
    configuration.output.picture = !configuration.pictureFile.empty();
    configuration.frames = std::strtoull(Environment("QUELTA_OPENXR_FRAMES").c_str(), nullptr, 10);
    const std::string mirror = Environment("QUELTA_OPENXR_MIRROR");
    if (!mirror.empty() && !ParseMirror(mirror, configuration.output))
    {
        configuration.complaints.emplace_back(
            "QUELTA_OPENXR_MIRROR is to be \"off\" or a size such as \"1280x720\"");
    }
    const std::string rate = Environment("QUELTA_OPENXR_RATE");
    const double hz = std::strtod(rate.c_str(), nullptr);
    if (hz >= MIN_RATE_HZ && hz <= MAX_RATE_HZ)
    {
        configuration.rateHz = hz;
    }
    else if (!rate.empty())
    {
        configuration.complaints.emplace_back(
            "QUELTA_OPENXR_RATE is to be a number from 1 to 1000");
    }
}

} // namespace

std::string ConfigHome()
{
    const std::string home = Environment("XDG_CONFIG_HOME");
    return home.empty() ? Environment("HOME") + "/.config" : home;
}

Configuration ParseConfiguration(const std::string& text, const std::string& name)
{
    Configuration configuration;
    try
    {
        const json object = json::parse(text);
        object.is_object() ? ReadObject(object, name, configuration)
                           : configuration.complaints.push_back(name + " is to be an object");
    }
    catch (const json::exception& error)
    {
        configuration.complaints.push_back(name + ": " + error.what());
    }
    return configuration;
}

Configuration LoadConfiguration()
{
    const std::string path = ConfigHome() + "/quelta/openxr.json";
    std::ifstream file(path);
    Configuration configuration;
    if (file)
    {
        std::ostringstream text;
        text << file.rdbuf();
        configuration = ParseConfiguration(text.str(), path);
    }
    ReadEnvironment(configuration);
    return configuration;
}

} // namespace qltxr
