#include "actions/ActionSet.h"

#include "core/IpcTransfer.h"
#include "core/RunState.h"
#include "script/NlsFile.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"
#include "uninstall/UninstallLog.h"

#include <memory>
#include <mutex>
#include <unordered_set>

namespace {

const char* const kComponent = "ActionSet";
constexpr std::uint32_t kMask = logmask::ActionSet;
const char* const kDefaultTitle = "%OEM% %ModelName%";

// Owns every action that was ever put in a set, until the process unloads the engine. Sets share
// actions, so none of them can own one.
class ActionKeeper {
public:
    void Keep(Action* action) {
        std::lock_guard<std::mutex> guard(mLock);
        if (mKnown.insert(action).second) {
            mOwned.emplace_back(action);
        }
    }

private:
    std::mutex mLock;
    std::unordered_set<Action*> mKnown;
    std::vector<std::unique_ptr<Action>> mOwned;
};

ActionKeeper& Keeper() {
    static ActionKeeper keeper;
    return keeper;
}

// Replaces each %key% of `text` by its language text (empty for a key the texts lack). The
// inserted text is not scanned again: the language files resolve their own references.
CStdStr ExpandLanguageText(const CStdStr& text) {
    CStdStr expanded;
    int position = 0;
    for (;;) {
        int first = text.Find('%', position);
        int second = first < 0 ? -1 : text.Find('%', first + 1);
        if (second < 0) {
            return expanded + text.Mid(position);
        }
        expanded += text.Mid(position, first - position);
        expanded += NlsFile::GetText(text.Mid(first + 1, second - first - 1));
        position = second + 1;
    }
}

} // namespace

CStdStr ActionSet::DefaultTitle() {
    return ExpandLanguageText(kDefaultTitle);
}

std::uint32_t ActionSet::GetUnits() const {
    std::uint32_t units = 0;
    for (const Action* action : mActions) {
        units += action->GetUnits();
    }
    return units;
}

void ActionSet::Add(Action* action) {
    if (action == nullptr) {
        ENGINE_LOG(0, "ActionSet::Add: a null action is not added");
        return;
    }
    Keeper().Keep(action);
    mActions.push_back(action);
}

void ActionSet::Operate(ActionOperator& op) {
    for (Action* action : mActions) {
        if (!op(action)) {
            break;
        }
    }
}

void ActionSet::RemoveDuplicates(ActionSet& seen) {
    if (&seen == this) {
        return;
    }
    std::vector<Action*> kept;
    kept.reserve(mActions.size());
    for (Action* action : mActions) {
        bool duplicate = false;
        for (const Action* other : seen.mActions) {
            if (action->IsSameAction(other)) {
                duplicate = true;
                break;
            }
        }
        if (!duplicate) {
            kept.push_back(action);
            seen.mActions.push_back(action);
        }
    }
    mActions.swap(kept);
}

int ActionSet::Run(CStdStr componentName, bool thawing, const CStdStr& title, bool removeTitle) {
    LogScope scope(kComponent, "ActionSet::Run", kMask);
    scope.Log(kMask, "componentName=%s, thawing=%d", componentName.c_str(), thawing ? 1 : 0);
    mState = Finished;

    UninstallLog& log = UninstallLog::Global();
    UninstallLog::SetParentComponent(componentName);
    log.SetCurrentTitle(title);

    size_t index = thawing ? mIndex : 0;
    const CStdStr performTitle = title.empty() ? DefaultTitle() : title;
    // The size is read on every round: an action may add to its own list.
    for (; index < mActions.size(); ++index) {
        Action* action = mActions[index];
        int shownIndex = static_cast<int>(index);
        if (!action->Perform(performTitle)) {
            if (action->IsFatal()) {
                scope.Log(logmask::Always, "mActions[%i]->Perform()[%s] fatal error", shownIndex,
                          action->GetActionDesc().c_str());
                mState = Failed;
                break;
            }
            scope.Log(logmask::Info, "mActions[%i]->Perform()[%s] failed..", shownIndex,
                      action->GetActionDesc().c_str());
        }
        if (!action->HasReportedUnits()) {
            if (IpcTransfer* reporter = RunState::GetReporter()) {
                reporter->AddCurrentUnits(action->GetUnits());
            }
        }
        if (action->ShouldFreeze()) {
            if (!thawing) {
                mIndex = static_cast<std::uint32_t>(index);
                mState = Frozen;
                break;
            }
            // The rest of the list still runs, but the run as a whole has failed.
            scope.Log(logmask::Always, "Cannot freeze an action while it is thawing.");
            scope.Log(logmask::Always, "ActionDesc: %s, index:%d", action->GetActionDesc().c_str(),
                      shownIndex);
            mState = Failed;
        }
    }

    // A run that builds a package leaves the uninstall log as it found it.
    if (!title.empty() && RunState::GetPackageDir().empty()) {
        if (removeTitle) {
            log.RemoveOEMSharedBy(componentName, title);
        } else {
            log.SetCurrentTitle(CStdStr());
            log.AddOEMSharedBy(componentName, title);
        }
    }
    scope.SetResult(static_cast<int>(mState));
    return mState;
}
