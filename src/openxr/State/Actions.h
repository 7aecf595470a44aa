// Action sets, their actions, and the action sets that a session has attached. There is no
// controller, so no action is ever active. The calls are still checked by every rule. The caller
// serialises all operations.
#pragma once

#include "State/HandleTable.h"
#include "State/InteractionProfiles.h"
#include "State/PathTable.h"

#include <list>
#include <string>
#include <vector>

namespace qltxr
{

struct ActionSet;

struct Action
{
    static constexpr HandleKind KIND = HandleKind::Action;

    Action(HandleTable& table, ActionSet& itsSet)
        : set(itsSet)
        , handle(table, this)
    {
    }

    ActionSet& set;
    std::string name;
    std::string localizedName;
    XrActionType type = XR_ACTION_TYPE_BOOLEAN_INPUT;
    std::vector<XrPath> subactionPaths;
    Registration<XrAction, KIND> handle;
};

struct ActionSet
{
    static constexpr HandleKind KIND = HandleKind::ActionSet;

    explicit ActionSet(HandleTable& table)
        : handle(table, this)
    {
    }

    std::string name;
    std::string localizedName;
    // A session has attached the set; this lasts for the rest of the set's life.
    bool attached = false;
    std::list<Action> actions;
    Registration<XrActionSet, KIND> handle;
};

/// The action sets of an instance.
class Actions
{
public:
    Actions(HandleTable& table, PathTable& paths)
        : mTable(table)
        , mPaths(paths)
    {
    }

    ActionSet& CreateSet(const XrActionSetCreateInfo& info);
    Action& Create(ActionSet& set, const XrActionCreateInfo& info);
    void Destroy(const ActionSet& set);
    static void Destroy(const Action& action);

    void Suggest(const XrInteractionProfileSuggestedBinding& suggestion);

    /// Throws unless the action was declared with this path or the path is XR_NULL_PATH.
    void RequireDeclared(const Action& action, XrPath subactionPath) const;

private:
    std::vector<XrPath> SubactionPaths(const XrActionCreateInfo& info) const;

    HandleTable& mTable;
    PathTable& mPaths;
    InteractionProfiles mProfiles;
    std::list<ActionSet> mSets;
};

/// The action sets that a session has attached.
class AttachedSets
{
public:
    void Attach(const HandleTable& table, const XrSessionActionSetsAttachInfo& info);
    void Sync(const HandleTable& table, const PathTable& paths,
              const XrActionsSyncInfo& info) const;

    void RequireAny() const { Require(mAttached, XR_ERROR_ACTIONSET_NOT_ATTACHED); }
    void RequireSet(XrActionSet set) const;

private:
    bool mAttached = false;
    std::vector<XrActionSet> mSets;
};

} // namespace qltxr
