#include "OpenXr.h"

namespace qltxr
{

class ActionTest : public HeadlessTest
{
protected:
    XrResult MakeSet(const char* name, const char* localized, XrActionSet& set) const
    {
        XrActionSetCreateInfo info{XR_TYPE_ACTION_SET_CREATE_INFO};
        std::strncpy(info.actionSetName, name, sizeof(info.actionSetName));
        std::strncpy(info.localizedActionSetName, localized, sizeof(info.localizedActionSetName));
        return CreateActionSet(instance, &info, &set);
    }

    XrResult Make(XrActionSet set, const char* name, XrActionType type,
                  const std::vector<XrPath>& paths, XrAction& action) const
    {
        XrActionCreateInfo info{XR_TYPE_ACTION_CREATE_INFO};
        std::strncpy(info.actionName, name, sizeof(info.actionName));
        std::strncpy(info.localizedActionName, name, sizeof(info.localizedActionName));
        info.actionType = type;
        info.countSubactionPaths = static_cast<std::uint32_t>(paths.size());
        info.subactionPaths = paths.data();
        return CreateAction(set, &info, &action);
    }

    XrResult Attach(const std::vector<XrActionSet>& sets) const
    {
        const XrSessionActionSetsAttachInfo info{XR_TYPE_SESSION_ACTION_SETS_ATTACH_INFO, nullptr,
                                                 static_cast<std::uint32_t>(sets.size()),
                                                 sets.data()};
        return AttachSessionActionSets(session, &info);
    }

    XrResult Suggest(XrPath profile, const std::vector<XrActionSuggestedBinding>& bindings) const
    {
        const XrInteractionProfileSuggestedBinding info{
            XR_TYPE_INTERACTION_PROFILE_SUGGESTED_BINDING, nullptr, profile,
            static_cast<std::uint32_t>(bindings.size()), bindings.data()};
        return SuggestInteractionProfileBindings(instance, &info);
    }

    XrPath mLeft = Path("/user/hand/left");
    XrPath mRight = Path("/user/hand/right");
    XrPath mUnknown = 999999;
};

TEST_F(ActionTest, NamesFollowTheRulesAndAreFreeAgainAfterDestruction)
{
    XrActionSet set = XR_NULL_HANDLE;
    const std::string tooLong(XR_MAX_ACTION_SET_NAME_SIZE, 'a');
    const std::tuple<std::string, const char*, XrResult> cases[] = {
        {"", "A", XR_ERROR_NAME_INVALID},
        {tooLong, "A", XR_ERROR_NAME_INVALID},
        {"Upper", "A", XR_ERROR_PATH_FORMAT_INVALID},
        {"a/b", "A", XR_ERROR_PATH_FORMAT_INVALID},
        {"..", "A", XR_ERROR_PATH_FORMAT_INVALID},
        {"set", "", XR_ERROR_LOCALIZED_NAME_INVALID},
        {"set", "The set", XR_SUCCESS},
        {"set", "Another", XR_ERROR_NAME_DUPLICATED},
        {"other", "The set", XR_ERROR_LOCALIZED_NAME_DUPLICATED}};
    for (const auto& [name, localized, expected] : cases)
    {
        XrActionSet made = XR_NULL_HANDLE;
        EXPECT_EQ(MakeSet(name.c_str(), localized, made), expected) << name;
        set = made != XR_NULL_HANDLE ? made : set;
    }
    XrAction action = XR_NULL_HANDLE;
    EXPECT_EQ(Make(set, "act", XR_ACTION_TYPE_POSE_INPUT, {mLeft}, action), XR_SUCCESS);
    EXPECT_EQ(Make(set, "act", XR_ACTION_TYPE_POSE_INPUT, {}, action), XR_ERROR_NAME_DUPLICATED);
    EXPECT_EQ(DestroyAction(action), XR_SUCCESS);
    EXPECT_EQ(Make(set, "act", XR_ACTION_TYPE_POSE_INPUT, {}, action), XR_SUCCESS);
    EXPECT_EQ(Make(set, "b", static_cast<XrActionType>(50), {}, action),
              XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(Make(set, "b", XR_ACTION_TYPE_FLOAT_INPUT, {mUnknown}, action),
              XR_ERROR_PATH_INVALID);
    EXPECT_EQ(Make(set, "b", XR_ACTION_TYPE_FLOAT_INPUT, {mLeft, mLeft}, action),
              XR_ERROR_PATH_UNSUPPORTED);
    EXPECT_EQ(Make(set, "b", XR_ACTION_TYPE_FLOAT_INPUT, {Path("/user/foot")}, action),
              XR_ERROR_PATH_UNSUPPORTED);
    EXPECT_EQ(DestroyActionSet(set), XR_SUCCESS);
    EXPECT_EQ(DestroyAction(action), XR_ERROR_HANDLE_INVALID) << "it went with its set";
    EXPECT_EQ(MakeSet("set", "The set", set), XR_SUCCESS);
}

TEST_F(ActionTest, SuggestionsAreCheckedPathByPath)
{
    XrActionSet set = XR_NULL_HANDLE;
    XrAction action = XR_NULL_HANDLE;
    ASSERT_EQ(MakeSet("set", "The set", set), XR_SUCCESS);
    ASSERT_EQ(Make(set, "act", XR_ACTION_TYPE_BOOLEAN_INPUT, {}, action), XR_SUCCESS);
    const std::string profiles = "/interaction_profiles/";
    const std::tuple<const char*, const char*, XrResult> cases[] = {
        {"khr/simple_controller", "/user/hand/left/input/select/click", XR_SUCCESS},
        {"khr/simple_controller", "/user/hand/left/input/select", XR_SUCCESS},
        // An action of any type can be bound to it.
        {"khr/simple_controller", "/user/hand/right/input/grip/pose", XR_SUCCESS},
        {"khr/simple_controller", "/user/hand/right/output/haptic", XR_SUCCESS},
        {"khr/simple_controller", "/user/hand/right/output", XR_ERROR_PATH_UNSUPPORTED},
        {"khr/simple_controller", "/user/head/input/select/click", XR_ERROR_PATH_UNSUPPORTED},
        {"htc/vive_controller", "/user/hand/left/input/trackpad/touch", XR_SUCCESS},
        {"htc/vive_pro", "/user/head/input/mute_mic/click", XR_SUCCESS},
        {"microsoft/xbox_controller", "/user/gamepad/input/shoulder_left/click", XR_SUCCESS},
        {"microsoft/xbox_controller", "/user/gamepad/output/haptic_left_trigger", XR_SUCCESS},
        {"oculus/touch_controller", "/user/hand/left/input/x/click", XR_SUCCESS},
        {"oculus/touch_controller", "/user/hand/right/input/x/click", XR_ERROR_PATH_UNSUPPORTED},
        {"oculus/go_controller", "/user/hand/left/input/back/click", XR_SUCCESS},
        {"google/daydream_controller", "/user/hand/left/input/trackpad", XR_SUCCESS},
        {"microsoft/motion_controller", "/user/hand/left/input/thumbstick/y", XR_SUCCESS},
        {"valve/index_controller", "/user/hand/left/input/trackpad/force", XR_SUCCESS},
        {"hp/mixed_reality_controller", "/user/hand/left/input/x/click",
         XR_ERROR_PATH_UNSUPPORTED}};
    for (const auto& [profile, path, expected] : cases)
    {
        EXPECT_EQ(Suggest(Path(profiles + profile), {{action, Path(path)}}), expected)
            << profile << " " << path;
    }
    const XrPath simple = Path(profiles + "khr/simple_controller");
    EXPECT_EQ(Suggest(simple, {}), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(Suggest(simple, {{action, mUnknown}}), XR_ERROR_PATH_INVALID);
    EXPECT_EQ(Suggest(mUnknown, {{action, simple}}), XR_ERROR_PATH_INVALID);
    const XrPath select = Path("/user/hand/left/input/select/click");
    EXPECT_EQ(Suggest(simple, {{XR_NULL_HANDLE, select}}), XR_ERROR_HANDLE_INVALID);
    ASSERT_EQ(Attach({set}), XR_SUCCESS);
    EXPECT_EQ(Suggest(simple, {{action, select}}), XR_ERROR_ACTIONSETS_ALREADY_ATTACHED);
}

TEST_F(ActionTest, SetsAreAttachedOnceAndForGood)
{
    XrActionSet set = XR_NULL_HANDLE;
    XrActionSet other = XR_NULL_HANDLE;
    XrAction action = XR_NULL_HANDLE;
    ASSERT_EQ(MakeSet("set", "The set", set), XR_SUCCESS);
    ASSERT_EQ(MakeSet("other", "Other", other), XR_SUCCESS);
    XrInteractionProfileState profile{XR_TYPE_INTERACTION_PROFILE_STATE};
    EXPECT_EQ(GetCurrentInteractionProfile(session, mLeft, &profile),
              XR_ERROR_ACTIONSET_NOT_ATTACHED);
    EXPECT_EQ(Attach({}), XR_ERROR_VALIDATION_FAILURE);
    EXPECT_EQ(Attach({set, XR_NULL_HANDLE}), XR_ERROR_HANDLE_INVALID);
    ASSERT_EQ(Attach({set}), XR_SUCCESS);
    EXPECT_EQ(Attach({other}), XR_ERROR_ACTIONSETS_ALREADY_ATTACHED);
    EXPECT_EQ(Make(set, "act", XR_ACTION_TYPE_POSE_INPUT, {}, action),
              XR_ERROR_ACTIONSETS_ALREADY_ATTACHED);
    EXPECT_EQ(GetCurrentInteractionProfile(session, mLeft, &profile), XR_SUCCESS);
    EXPECT_EQ(profile.interactionProfile, XR_NULL_PATH);
    EXPECT_EQ(GetCurrentInteractionProfile(session, Path("/user/foot"), &profile),
              XR_ERROR_PATH_UNSUPPORTED);
    EXPECT_EQ(GetCurrentInteractionProfile(session, XR_NULL_PATH, &profile), XR_ERROR_PATH_INVALID);
}

TEST_F(ActionTest, StatesAreInactiveAndEveryMisuseHasItsResult)
{
    XrActionSet set = XR_NULL_HANDLE;
    XrActionSet loose = XR_NULL_HANDLE;
    XrAction select = XR_NULL_HANDLE;
    XrAction buzz = XR_NULL_HANDLE;
    XrAction away = XR_NULL_HANDLE;
    ASSERT_EQ(MakeSet("set", "The set", set), XR_SUCCESS);
    ASSERT_EQ(MakeSet("loose", "Loose", loose), XR_SUCCESS);
    ASSERT_EQ(Make(set, "select", XR_ACTION_TYPE_BOOLEAN_INPUT, {mLeft}, select), XR_SUCCESS);
    ASSERT_EQ(Make(set, "buzz", XR_ACTION_TYPE_VIBRATION_OUTPUT, {mLeft}, buzz), XR_SUCCESS);
    ASSERT_EQ(Make(loose, "away", XR_ACTION_TYPE_BOOLEAN_INPUT, {}, away), XR_SUCCESS);
    ASSERT_EQ(Attach({set}), XR_SUCCESS);

    const std::tuple<XrAction, XrPath, XrResult> states[] = {
        {select, XR_NULL_PATH, XR_SUCCESS},
        {select, mLeft, XR_SUCCESS},
        {select, mRight, XR_ERROR_PATH_UNSUPPORTED},
        {select, mUnknown, XR_ERROR_PATH_INVALID},
        {away, XR_NULL_PATH, XR_ERROR_ACTIONSET_NOT_ATTACHED},
        {buzz, XR_NULL_PATH, XR_ERROR_ACTION_TYPE_MISMATCH},
        {XR_NULL_HANDLE, XR_NULL_PATH, XR_ERROR_HANDLE_INVALID}};
    for (const auto& [action, path, expected] : states)
    {
        const XrActionStateGetInfo info{XR_TYPE_ACTION_STATE_GET_INFO, nullptr, action, path};
        XrActionStateBoolean state{XR_TYPE_ACTION_STATE_BOOLEAN, nullptr, 1, 1, 7, 1};
        EXPECT_EQ(GetActionStateBoolean(session, &info, &state), expected);
        if (expected == XR_SUCCESS)
        {
            EXPECT_FALSE(state.isActive || state.currentState || state.changedSinceLastSync ||
                         state.lastChangeTime);
        }
    }
    const std::tuple<XrActionSet, XrPath, XrResult> syncs[] = {
        {set, XR_NULL_PATH, XR_SUCCESS},
        {set, mLeft, XR_SUCCESS},
        {set, mRight, XR_ERROR_PATH_UNSUPPORTED},
        {set, mUnknown, XR_ERROR_PATH_INVALID},
        {loose, XR_NULL_PATH, XR_ERROR_ACTIONSET_NOT_ATTACHED}};
    for (const auto& [active, path, expected] : syncs)
    {
        const XrActiveActionSet one{active, path};
        const XrActionsSyncInfo info{XR_TYPE_ACTIONS_SYNC_INFO, nullptr, 1, &one};
        EXPECT_EQ(SyncActions(session, &info), expected);
    }
    const XrHapticVibration vibration{XR_TYPE_HAPTIC_VIBRATION};
    const auto* feedback = reinterpret_cast<const XrHapticBaseHeader*>(&vibration);
    XrHapticActionInfo haptic{XR_TYPE_HAPTIC_ACTION_INFO, nullptr, buzz, mLeft};
    EXPECT_EQ(ApplyHapticFeedback(session, &haptic, feedback), XR_SUCCESS);
    EXPECT_EQ(StopHapticFeedback(session, &haptic), XR_SUCCESS);
    EXPECT_EQ(ApplyHapticFeedback(session, &haptic, nullptr), XR_ERROR_VALIDATION_FAILURE);
    haptic.action = select;
    EXPECT_EQ(StopHapticFeedback(session, &haptic), XR_ERROR_ACTION_TYPE_MISMATCH);

    const XrBoundSourcesForActionEnumerateInfo bound{
        XR_TYPE_BOUND_SOURCES_FOR_ACTION_ENUMERATE_INFO, nullptr, select};
    std::uint32_t count = 9;
    EXPECT_EQ(EnumerateBoundSourcesForAction(session, &bound, 0, &count, nullptr), XR_SUCCESS);
    EXPECT_EQ(count, 0u);
    XrInputSourceLocalizedNameGetInfo name{XR_TYPE_INPUT_SOURCE_LOCALIZED_NAME_GET_INFO, nullptr,
                                           mLeft, 0};
    EXPECT_EQ(GetInputSourceLocalizedName(session, &name, 0, &count, nullptr),
              XR_ERROR_VALIDATION_FAILURE);
    name.whichComponents = XR_INPUT_SOURCE_LOCALIZED_NAME_USER_PATH_BIT;
    EXPECT_EQ(GetInputSourceLocalizedName(session, &name, 0, &count, nullptr),
              XR_ERROR_PATH_UNSUPPORTED);

    RequestExitSession(session);
    const XrActionsSyncInfo nothing{XR_TYPE_ACTIONS_SYNC_INFO};
    EXPECT_EQ(SyncActions(session, &nothing), XR_SESSION_NOT_FOCUSED);
}

TEST_F(ActionTest, ActionSpacesAreOfPoseActionsAndFindNoDevice)
{
    XrActionSet set = XR_NULL_HANDLE;
    XrAction pose = XR_NULL_HANDLE;
    XrAction select = XR_NULL_HANDLE;
    ASSERT_EQ(MakeSet("set", "The set", set), XR_SUCCESS);
    ASSERT_EQ(Make(set, "pose", XR_ACTION_TYPE_POSE_INPUT, {mLeft}, pose), XR_SUCCESS);
    ASSERT_EQ(Make(set, "select", XR_ACTION_TYPE_BOOLEAN_INPUT, {}, select), XR_SUCCESS);
    XrSpace space = XR_NULL_HANDLE;
    const std::tuple<XrAction, XrPath, XrPosef, XrResult> cases[] = {
        {select, XR_NULL_PATH, IDENTITY, XR_ERROR_ACTION_TYPE_MISMATCH},
        {pose, mUnknown, IDENTITY, XR_ERROR_PATH_INVALID},
        {pose, mRight, IDENTITY, XR_ERROR_PATH_UNSUPPORTED},
        {pose, mLeft, XrPosef{}, XR_ERROR_POSE_INVALID},
        {pose, mLeft, IDENTITY, XR_SUCCESS}};
    for (const auto& [action, path, at, expected] : cases)
    {
        const XrActionSpaceCreateInfo info{XR_TYPE_ACTION_SPACE_CREATE_INFO, nullptr, action, path,
                                           at};
        EXPECT_EQ(CreateActionSpace(session, &info, &space), expected);
    }
    XrSpaceLocation location{XR_TYPE_SPACE_LOCATION, nullptr, 7};
    EXPECT_EQ(
        LocateSpace(space, ReferenceSpace(XR_REFERENCE_SPACE_TYPE_LOCAL), SOME_TIME, &location),
        XR_SUCCESS);
    EXPECT_EQ(location.locationFlags, 0u);
}

} // namespace qltxr
