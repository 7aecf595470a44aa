// Action sets, their actions, and what a session does with them. There is no controller, so no
// action is ever active; every rule is kept all the same. The caller serialises all operations.
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
    bool attached = false; // to a session, for the rest of the set's life
    std::list<Action> actions;
    Registration<XrActionSet, KIND> handle;
};

/// The sets of an instance.
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

    /// A path that an action was declared with, or none.
    void RequireDeclared(const Action& action, XrPath subactionPath) const;

private:
    std::vector<XrPath> SubactionPaths(const XrActionCreateInfo& info) const;

    HandleTable& mTable;
    PathTable& mPaths;
    InteractionProfiles mProfiles;
    std::list<ActionSet> mSets;
};

/// The sets that a session has attached.
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
