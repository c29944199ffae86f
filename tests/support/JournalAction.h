// An action for tests of action lists, components and the install walk: it records each Perform
// as its name in a journal the test shares, with the title it got and the title the progress
// reporter showed at that moment. Its answers are set by the test.
#pragma once

#include "actions/Action.h"
#include "core/IpcTransfer.h"
#include "uninstall/ItemType.h"

#include <functional>
#include <string>
#include <vector>

class JournalAction : public Action {
public:
    JournalAction(std::string name, std::vector<std::string>& journal, std::uint32_t units = 1)
            : mName(std::move(name)), mJournal(journal) {
        mUnits = units;
        mActionDesc = "<ActionDesc>" + mName + "</ActionDesc>";
    }

    bool Perform(CStdStr title) override {
        mJournal.push_back(mName);
        mTitles.push_back(title);
        if (mReporter != nullptr) {
            char shown[IpcTransfer::kTitleSize] = {};
            mReporter->GetCurrentTitle(shown);
            mShownTitles.push_back(shown);
        }
        if (!mLogs.empty()) {
            LogUninstallItem(itemtype::File, "", mLogs);
        }
        if (mOnPerform) {
            mOnPerform();
        }
        return mResult;
    }
    bool ShouldFreeze() override { return mFreezes > 0 && mFreezes-- > 0; }
    bool IsFatal() override { return mFatal; }
    bool HasReportedUnits() override { return mReportsUnits; }
    bool IsSameAction(const Action* other) override {
        auto* same = dynamic_cast<const JournalAction*>(other);
        return mSameAsAll || (same != nullptr && same->mName == mName);
    }

    // A failure that stops the list.
    void FailFatally() {
        mResult = false;
        mFatal = true;
    }

    std::string mName;
    std::vector<std::string>& mJournal;
    std::vector<CStdStr> mTitles;
    std::vector<std::string> mShownTitles;
    IpcTransfer* mReporter = nullptr;
    std::function<void()> mOnPerform;
    bool mResult = true;
    bool mFatal = false;
    bool mReportsUnits = false;
    // Counts as the same action as any other, as a duplicate of every list.
    bool mSameAsAll = false;
    int mFreezes = 0;
    // What each Perform records in the uninstall log as a file of the current component.
    CStdStr mLogs;
};
