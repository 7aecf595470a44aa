#include "State/Actions.h"

#include "State/Structures.h"

#include <algorithm>

namespace qltxr
{

namespace
{

template <typename Named>
void RequireFree(const std::list<Named>& taken, std::string_view name, std::string_view localized)
{
    for (const Named& other : taken)
    {
        Require(other.name != name, XR_ERROR_NAME_DUPLICATED);
        Require(other.localizedName != localized, XR_ERROR_LOCALIZED_NAME_DUPLICATED);
    }
}

void RequireNames(std::string_view name, std::string_view localized)
{
    Require(!name.empty(), XR_ERROR_NAME_INVALID);
    Require(IsPathPart(name), XR_ERROR_PATH_FORMAT_INVALID);
    Require(!localized.empty(), XR_ERROR_LOCALIZED_NAME_INVALID);
}

bool IsActionType(XrActionType type)
{
    switch (type)
    {
    case XR_ACTION_TYPE_BOOLEAN_INPUT:
    case XR_ACTION_TYPE_FLOAT_INPUT:
    case XR_ACTION_TYPE_VECTOR2F_INPUT:
    case XR_ACTION_TYPE_POSE_INPUT:
    case XR_ACTION_TYPE_VIBRATION_OUTPUT:
        return true;
    default:
        return false;
    }
}

template <typename Value>
bool Contains(const std::vector<Value>& values, Value value)
{
    return std::find(values.begin(), values.end(), value) != values.end();
}

template <typename Object>
void Erase(std::list<Object>& list, const Object& object)
{
    list.remove_if([&object](const Object& other) { return &other == &object; });
}

} // namespace

ActionSet& Actions::CreateSet(const XrActionSetCreateInfo& info)
{
    const std::string_view name = FixedText(info.actionSetName, sizeof(info.actionSetName));
    const std::string_view localized =
        FixedText(info.localizedActionSetName, sizeof(info.localizedActionSetName));
    RequireNames(name, localized);
    RequireFree(mSets, name, localized);
    ActionSet& set = mSets.emplace_back(mTable);
    set.name = name;
    set.localizedName = localized;
    return set;
}

Action& Actions::Create(ActionSet& set, const XrActionCreateInfo& info)
{
    Require(!set.attached, XR_ERROR_ACTIONSETS_ALREADY_ATTACHED);
    Require(IsActionType(info.actionType), XR_ERROR_VALIDATION_FAILURE);
    const std::string_view name = FixedText(info.actionName, sizeof(info.actionName));
    const std::string_view localized =
        FixedText(info.localizedActionName, sizeof(info.localizedActionName));
    RequireNames(name, localized);
    std::vector<XrPath> paths = SubactionPaths(info);
    RequireFree(set.actions, name, localized);
    Action& action = set.actions.emplace_back(mTable, set);
    action.name = name;
    action.localizedName = localized;
    action.type = info.actionType;
    action.subactionPaths = std::move(paths);
    return action;
}

std::vector<XrPath> Actions::SubactionPaths(const XrActionCreateInfo& info) const
{
    std::vector<XrPath> paths;
    Require(info.countSubactionPaths == 0 || info.subactionPaths != nullptr,
            XR_ERROR_VALIDATION_FAILURE);
    for (std::uint32_t i = 0; i < info.countSubactionPaths; ++i)
    {
        const XrPath path = info.subactionPaths[i];
        Require(IsTopLevelUserPath(mPaths.TextOf(path)) && !Contains(paths, path),
                XR_ERROR_PATH_UNSUPPORTED);
        paths.push_back(path);
    }
    return paths;
}

void Actions::Destroy(const ActionSet& set) { Erase(mSets, set); }

void Actions::Destroy(const Action& action) { Erase(action.set.actions, action); }

// The runtime stores no suggestion, because there is no controller to bind.
void Actions::Suggest(const XrInteractionProfileSuggestedBinding& suggestion)
{
    Require(suggestion.countSuggestedBindings > 0 && suggestion.suggestedBindings != nullptr,
            XR_ERROR_VALIDATION_FAILURE);
    const std::string& profile = mPaths.TextOf(suggestion.interactionProfile);
    Require(mProfiles.Has(profile), XR_ERROR_PATH_UNSUPPORTED);
    for (std::uint32_t i = 0; i < suggestion.countSuggestedBindings; ++i)
    {
        const XrActionSuggestedBinding& binding = suggestion.suggestedBindings[i];
        const Action& action = Resolve<Action>(mTable, binding.action);
        const std::string& path = mPaths.TextOf(binding.binding);
        Require(mProfiles.HasBinding(profile, path), XR_ERROR_PATH_UNSUPPORTED);
        Require(!action.set.attached, XR_ERROR_ACTIONSETS_ALREADY_ATTACHED);
    }
}

void Actions::RequireDeclared(const Action& action, XrPath subactionPath) const
{
    if (subactionPath != XR_NULL_PATH)
    {
        mPaths.TextOf(subactionPath);
        Require(Contains(action.subactionPaths, subactionPath), XR_ERROR_PATH_UNSUPPORTED);
    }
}

void AttachedSets::Attach(const HandleTable& table, const XrSessionActionSetsAttachInfo& info)
{
    Require(info.countActionSets > 0 && info.actionSets != nullptr, XR_ERROR_VALIDATION_FAILURE);
    std::vector<ActionSet*> sets;
    for (std::uint32_t i = 0; i < info.countActionSets; ++i)
    {
        sets.push_back(&Resolve<ActionSet>(table, info.actionSets[i]));
    }
    Require(!mAttached, XR_ERROR_ACTIONSETS_ALREADY_ATTACHED);
    mSets.assign(info.actionSets, info.actionSets + info.countActionSets);
    mAttached = true;
    for (ActionSet* set : sets)
    {
        set->attached = true;
    }
}

void AttachedSets::RequireSet(XrActionSet set) const
{
    Require(Contains(mSets, set), XR_ERROR_ACTIONSET_NOT_ATTACHED);
}

void AttachedSets::Sync(const HandleTable& table, const PathTable& paths,
                        const XrActionsSyncInfo& info) const
{
    Require(info.countActiveActionSets == 0 || info.activeActionSets != nullptr,
            XR_ERROR_VALIDATION_FAILURE);
    for (std::uint32_t i = 0; i < info.countActiveActionSets; ++i)
    {
        const XrActiveActionSet& active = info.activeActionSets[i];
        const ActionSet& set = Resolve<ActionSet>(table, active.actionSet);
        RequireSet(active.actionSet);
        if (active.subactionPath == XR_NULL_PATH)
        {
            continue;
        }
        paths.TextOf(active.subactionPath);
        const auto declares = [&active](const Action& action)
        { return Contains(action.subactionPaths, active.subactionPath); };
        Require(std::any_of(set.actions.begin(), set.actions.end(), declares),
                XR_ERROR_PATH_UNSUPPORTED);
    }
}

} // namespace qltxr
