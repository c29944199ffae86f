// An ordered list of actions of one phase of a component, and its run: fatal failures stop it,
// other failures are only logged, an action may freeze the list so that a later run (a thaw)
// resumes at that action, and every action's progress units are credited.
//
// Actions live until the process unloads the engine: Add hands an action (made with new) to a
// keeper of the process, so that a set neither deletes its actions nor needs to, and one action
// may stand in several sets (RemoveDuplicates puts the survivors in `seen` too).
#pragma once

#include "actions/Action.h"
#include "actions/ActionOperator.h"

#include <cstdint>
#include <vector>

class ActionSet {
public:
    enum State {
        NeverRun = 0,
        Finished = 1, // also: running
        Failed = 2,   // a fatal action, or a freeze asked during a thaw
        Frozen = 3,   // stopped at mIndex
    };

    ActionSet() = default;
    ActionSet(const ActionSet&) = delete;
    ActionSet& operator=(const ActionSet&) = delete;

    // Runs the actions (from the frozen one when `thawing`) for the component and title; with a
    // title, records afterwards that this OEM brand ran (or, with `removeTitle`, no longer runs)
    // the component's lists. Returns the new state.
    int Run(CStdStr componentName, bool thawing, const CStdStr& title, bool removeTitle);
    // Calls `op` on each action in order until it answers false.
    void Operate(ActionOperator& op);
    void Add(Action* action);
    // Keeps the actions that no member of `seen` equals, and appends them to `seen`; the others
    // leave this set.
    void RemoveDuplicates(ActionSet& seen);

    size_t Size() const { return mActions.size(); }
    Action* GetAt(size_t index) const {
        return index < mActions.size() ? mActions[index] : nullptr;
    }
    int GetState() const { return mState; }
    std::uint32_t GetIndex() const { return mIndex; }
    // The sum of the actions' progress units.
    std::uint32_t GetUnits() const;

    // The title an action gets when the run has none: the default model text, expanded.
    static CStdStr DefaultTitle();

private:
    std::vector<Action*> mActions;
    std::uint32_t mIndex = 0;
    std::int32_t mState = NeverRun;
};
