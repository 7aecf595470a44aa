// The interaction profiles of OpenXR 1.0, with every path that a program may suggest for them.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace qltxr
{

class InteractionProfiles
{
public:
    InteractionProfiles();

    bool Has(std::string_view profile) const { return mProfiles.count(std::string(profile)) > 0; }

    /// Returns true for the path of a component, and for an input or output that has components.
    bool HasBinding(const std::string& profile, const std::string& path) const;

private:
    std::unordered_map<std::string, std::unordered_set<std::string>> mProfiles;
};

} // namespace qltxr
