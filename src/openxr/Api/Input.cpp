// The functions of actions. No device is ever active.
#include "Api/Functions.h"
#include "Api/Runtime.h"
#include "State/Structures.h"

namespace qltxr
{

namespace
{

Instance& TheInstance() { return *TheRuntime().instance; }

/// Performs the checks that all questions about an action's state share.
const Action& AskedAction(const Session& session, const XrActionStateGetInfo* info)
{
    RequireType(info, XR_TYPE_ACTION_STATE_GET_INFO);
    const Action& action = Get<Action>(info->action);
    session.attached.RequireSet(action.set.handle.Get());
    TheInstance().actions.RequireDeclared(action, info->subactionPath);
    return action;
}

/// Answers such a question: the action is not active.
template <typename State>
XrResult AnswerState(XrSession handle, const XrActionStateGetInfo* info, State* state,
                     XrStructureType stateType, XrActionType actionType)
{
    const Lock lock = LockRuntime();
    const Session& session = Get<Session>(handle);
    RequireType(state, stateType);
    const Action& action = AskedAction(session, info);
    Require(action.type == actionType, XR_ERROR_ACTION_TYPE_MISMATCH);
    void* const next = state->next;
    *state = {};
    state->type = stateType;
    state->next = next;
    return XR_SUCCESS;
}

XrResult AnswerHaptic(XrSession handle, const XrHapticActionInfo* info)
{
    const Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_HAPTIC_ACTION_INFO);
    const Action& action = Get<Action>(info->action);
    session.attached.RequireSet(action.set.handle.Get());
    TheInstance().actions.RequireDeclared(action, info->subactionPath);
    Require(action.type == XR_ACTION_TYPE_VIBRATION_OUTPUT, XR_ERROR_ACTION_TYPE_MISMATCH);
    return session.state.IsFocused() ? XR_SUCCESS : XR_SESSION_NOT_FOCUSED;
}

} // namespace

XrResult XRAPI_CALL CreateActionSet(XrInstance handle, const XrActionSetCreateInfo* info,
                                    XrActionSet* set)
{
    const Lock lock = LockRuntime();
    Instance& instance = Get<Instance>(handle);
    RequireType(info, XR_TYPE_ACTION_SET_CREATE_INFO);
    RequirePointer(set);
    *set = instance.actions.CreateSet(*info).handle.Get();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroyActionSet(XrActionSet handle)
{
    const Lock lock = LockRuntime();
    const ActionSet& set = Get<ActionSet>(handle);
    TheInstance().actions.Destroy(set);
    return XR_SUCCESS;
}

XrResult XRAPI_CALL CreateAction(XrActionSet handle, const XrActionCreateInfo* info,
                                 XrAction* action)
{
    const Lock lock = LockRuntime();
    ActionSet& set = Get<ActionSet>(handle);
    RequireType(info, XR_TYPE_ACTION_CREATE_INFO);
    RequirePointer(action);
    *action = TheInstance().actions.Create(set, *info).handle.Get();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroyAction(XrAction handle)
{
    const Lock lock = LockRuntime();
    Actions::Destroy(Get<Action>(handle));
    return XR_SUCCESS;
}

XrResult XRAPI_CALL SuggestInteractionProfileBindings(
    XrInstance handle, const XrInteractionProfileSuggestedBinding* suggestion)
{
    const Lock lock = LockRuntime();
    Instance& instance = Get<Instance>(handle);
    RequireType(suggestion, XR_TYPE_INTERACTION_PROFILE_SUGGESTED_BINDING);
    instance.actions.Suggest(*suggestion);
    return XR_SUCCESS;
}

XrResult XRAPI_CALL AttachSessionActionSets(XrSession handle,
                                            const XrSessionActionSetsAttachInfo* info)
{
    const Lock lock = LockRuntime();
    Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_SESSION_ACTION_SETS_ATTACH_INFO);
    session.attached.Attach(TheRuntime().handles, *info);
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetCurrentInteractionProfile(XrSession handle, XrPath path,
                                                 XrInteractionProfileState* profile)
{
    const Lock lock = LockRuntime();
    const Session& session = Get<Session>(handle);
    RequireType(profile, XR_TYPE_INTERACTION_PROFILE_STATE);
    session.attached.RequireAny();
    Require(IsTopLevelUserPath(TheInstance().paths.TextOf(path)), XR_ERROR_PATH_UNSUPPORTED);
    profile->interactionProfile = XR_NULL_PATH;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetActionStateBoolean(XrSession session, const XrActionStateGetInfo* info,
                                          XrActionStateBoolean* state)
{
    return AnswerState(session, info, state, XR_TYPE_ACTION_STATE_BOOLEAN,
                       XR_ACTION_TYPE_BOOLEAN_INPUT);
}

XrResult XRAPI_CALL GetActionStateFloat(XrSession session, const XrActionStateGetInfo* info,
                                        XrActionStateFloat* state)
{
    return AnswerState(session, info, state, XR_TYPE_ACTION_STATE_FLOAT,
                       XR_ACTION_TYPE_FLOAT_INPUT);
}

XrResult XRAPI_CALL GetActionStateVector2f(XrSession session, const XrActionStateGetInfo* info,
                                           XrActionStateVector2f* state)
{
    return AnswerState(session, info, state, XR_TYPE_ACTION_STATE_VECTOR2F,
                       XR_ACTION_TYPE_VECTOR2F_INPUT);
}

XrResult XRAPI_CALL GetActionStatePose(XrSession session, const XrActionStateGetInfo* info,
                                       XrActionStatePose* state)
{
    return AnswerState(session, info, state, XR_TYPE_ACTION_STATE_POSE, XR_ACTION_TYPE_POSE_INPUT);
}

XrResult XRAPI_CALL SyncActions(XrSession handle, const XrActionsSyncInfo* info)
{
    const Lock lock = LockRuntime();
    const Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_ACTIONS_SYNC_INFO);
    session.attached.Sync(TheRuntime().handles, TheInstance().paths, *info);
    return session.state.IsFocused() ? XR_SUCCESS : XR_SESSION_NOT_FOCUSED;
}

XrResult XRAPI_CALL EnumerateBoundSourcesForAction(XrSession handle,
                                                   const XrBoundSourcesForActionEnumerateInfo* info,
                                                   std::uint32_t capacity, std::uint32_t* count,
                                                   XrPath* sources)
{
    const Lock lock = LockRuntime();
    const Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_BOUND_SOURCES_FOR_ACTION_ENUMERATE_INFO);
    session.attached.RequireSet(Get<Action>(info->action).set.handle.Get());
    AnswerCount(capacity, count, sources, 0);
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetInputSourceLocalizedName(XrSession handle,
                                                const XrInputSourceLocalizedNameGetInfo* info,
                                                std::uint32_t capacity, std::uint32_t* count,
                                                char* buffer)
{
    constexpr XrInputSourceLocalizedNameFlags COMPONENTS =
        XR_INPUT_SOURCE_LOCALIZED_NAME_USER_PATH_BIT |
        XR_INPUT_SOURCE_LOCALIZED_NAME_INTERACTION_PROFILE_BIT |
        XR_INPUT_SOURCE_LOCALIZED_NAME_COMPONENT_BIT;
    const Lock lock = LockRuntime();
    const Session& session = Get<Session>(handle);
    RequireType(info, XR_TYPE_INPUT_SOURCE_LOCALIZED_NAME_GET_INFO);
    RequirePointer(count);
    Require(capacity == 0 || buffer != nullptr, XR_ERROR_VALIDATION_FAILURE);
    session.attached.RequireAny();
    TheInstance().paths.TextOf(info->sourcePath);
    Require(info->whichComponents != 0 && (info->whichComponents & ~COMPONENTS) == 0,
            XR_ERROR_VALIDATION_FAILURE);
    return XR_ERROR_PATH_UNSUPPORTED; // the runtime binds no source
}

XrResult XRAPI_CALL ApplyHapticFeedback(XrSession handle, const XrHapticActionInfo* info,
                                        const XrHapticBaseHeader* feedback)
{
    const Lock lock = LockRuntime();
    Get<Session>(handle);
    RequireType(feedback, XR_TYPE_HAPTIC_VIBRATION);
    return AnswerHaptic(handle, info);
}

XrResult XRAPI_CALL StopHapticFeedback(XrSession handle, const XrHapticActionInfo* info)
{
    const Lock lock = LockRuntime();
    return AnswerHaptic(handle, info);
}

} // namespace qltxr
