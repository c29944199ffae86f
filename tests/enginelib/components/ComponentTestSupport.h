// What the tests of components and of the engine's install walk share: an action that writes
// what happens to it into a journal, and the language texts of a test.
#pragma once

#include "actions/ActionSet.h"
#include "core/IpcTransfer.h"
#include "os/Files.h"
#include "script/NlsFile.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// Records each Perform as its name in the shared journal, with the title it got and the title
// that the progress reporter showed at that moment. Its answers are set by the test.
class JournalAction : public Action {
public:
    JournalAction(std::string name, std::vector<std::string>& journal, std::uint32_t units)
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
        if (mOnPerform) {
            mOnPerform();
        }
        return mResult;
    }
    bool ShouldFreeze() override { return mFreezes > 0 && mFreezes-- > 0; }
    bool IsFatal() override { return mFatal; }
    bool IsSameAction(const Action* other) override {
        auto* same = dynamic_cast<const JournalAction*>(other);
        return same != nullptr && same->mName == mName;
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
    int mFreezes = 0;
};

// Adds a journal action to a list; the list's keeper owns it from then on, as it owns every
// action of the run.
inline JournalAction* AddJournalAction(ActionSet& list, const std::string& name,
                                       std::vector<std::string>& journal, std::uint32_t units = 1) {
    auto* action = new JournalAction(name, journal, units);
    list.Add(action);
    return action;
}

// Loads `text` as the English language file of a folder of the test's machine.
inline void LoadEnglishTexts(const TestMachine& machine, const std::string& text) {
    std::string folder = machine.Path("nls");
    os::CreateDirectory(folder);
    ASSERT_TRUE(TestMachine::WriteFile(folder + "\\en.nls", text));
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "en"));
}
