#include "State/InteractionProfiles.h"

#include <sstream>
#include <vector>

namespace qltxr
{

namespace
{

struct Profile
{
    const char* name;
    const char* users; // the user paths, without "/user/"
    // The paths below a user path, without `input/`; a{b,c}d means abd and acd.
    const char* components;
};

constexpr const char* HANDS = "hand/left hand/right";

// Some controllers differ between the hands. Their names stand in two lines.
constexpr Profile PROFILES[] = {
    {"khr/simple_controller", HANDS, "select/click menu/click grip/pose aim/pose output/haptic"},
    {"google/daydream_controller", HANDS,
     "select/click trackpad trackpad/{x,y,click,touch} grip/pose aim/pose"},
    {"htc/vive_controller", HANDS,
     "system/click squeeze/click menu/click trigger/{click,value} trackpad "
     "trackpad/{x,y,click,touch} grip/pose aim/pose output/haptic"},
    {"htc/vive_pro", "head", "system/click volume_up/click volume_down/click mute_mic/click"},
    {"microsoft/motion_controller", HANDS,
     "menu/click squeeze/click trigger/value thumbstick thumbstick/{x,y,click} trackpad "
     "trackpad/{x,y,click,touch} grip/pose aim/pose output/haptic"},
    {"microsoft/xbox_controller", "gamepad",
     "menu/click view/click a/click b/click x/click y/click dpad_{down,right,up,left}/click "
     "shoulder_{left,right}/click thumbstick_{left,right} thumbstick_left/{x,y,click} "
     "thumbstick_right/{x,y,click} trigger_{left,right}/value output/haptic_{left,right} "
     "output/haptic_left_trigger output/haptic_right_trigger"},
    {"oculus/go_controller", HANDS,
     "system/click trigger/click back/click trackpad trackpad/{x,y,click,touch} grip/pose "
     "aim/pose"},
    {"oculus/touch_controller", HANDS,
     "squeeze/value trigger/{value,touch} thumbstick thumbstick/{x,y,click,touch} "
     "thumbrest/touch grip/pose aim/pose output/haptic"},
    {"oculus/touch_controller", "hand/left", "x/{click,touch} y/{click,touch} menu/click"},
    {"oculus/touch_controller", "hand/right", "a/{click,touch} b/{click,touch} system/click"},
    {"valve/index_controller", HANDS,
     "system/{click,touch} a/{click,touch} b/{click,touch} squeeze/{value,force} "
     "trigger/{click,value,touch} thumbstick thumbstick/{x,y,click,touch} trackpad "
     "trackpad/{x,y,force,touch} grip/pose aim/pose output/haptic"},
};

std::vector<std::string> Words(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
    {
        words.push_back(word);
    }
    return words;
}

/// Expands a{b,c}d into abd and acd.
std::vector<std::string> Alternatives(const std::string& pattern)
{
    const std::size_t open = pattern.find('{');
    if (open == std::string::npos)
    {
        return {pattern};
    }
    const std::size_t close = pattern.find('}');
    std::istringstream list(pattern.substr(open + 1, close - open - 1));
    std::vector<std::string> all;
    for (std::string choice; std::getline(list, choice, ',');)
    {
        all.push_back(pattern.substr(0, open) + choice + pattern.substr(close + 1));
    }
    return all;
}

void AddComponent(std::unordered_set<std::string>& paths, const std::string& user,
                  const std::string& component)
{
    const bool isOutput = component.rfind("output/", 0) == 0;
    const std::string path = "/user/" + user + (isOutput ? "/" : "/input/") + component;
    paths.insert(path);
    if (!isOutput && component.find('/') != std::string::npos)
    {
        paths.insert(path.substr(0, path.rfind('/')));
    }
}

} // namespace

InteractionProfiles::InteractionProfiles()
{
    for (const Profile& profile : PROFILES)
    {
        auto& paths = mProfiles["/interaction_profiles/" + std::string(profile.name)];
        for (const std::string& user : Words(profile.users))
        {
            for (const std::string& pattern : Words(profile.components))
            {
                for (const std::string& component : Alternatives(pattern))
                {
                    AddComponent(paths, user, component);
                }
            }
        }
    }
}

bool InteractionProfiles::HasBinding(const std::string& profile, const std::string& path) const
{
    const auto found = mProfiles.find(profile);
    return found != mProfiles.end() && found->second.count(path) > 0;
}

} // namespace qltxr
