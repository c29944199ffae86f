#include "actions/ActionSet.h"

#include "core/IpcTransfer.h"
#include "core/RunState.h"
#include "os/Files.h"
#include "script/NlsFile.h"
#include "support/JournalAction.h"
#include "support/SuiteLog.h"
#include "support/TestMachine.h"
#include "system/DebugLog.h"
#include "system/DebugLogger.h"
#include "system/Registry.h"
#include "uninstall/UninstallLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

class ActionSetTest : public ::testing::Test {
protected:
    TestMachine machine;
    IpcTransfer reporter;
    std::vector<std::string> journal;
    UninstallLog& log = UninstallLog::Global();

    void SetUp() override {
        NlsFile::Reset();
        RunState::Reset();
        RunState::SetReporter(&reporter);
        StartSuiteLog(log);
    }

    void TearDown() override {
        if (mLogging) {
            DebugLogger& logger = DebugLogger::Instance();
            while (logger.GetEnableCount() > 0) {
                logger.DisableLog();
            }
            logger.SetLogBits(0);
            DebugLog::Instance().SetFile("");
        }
        log.Clear();
        RunState::Reset();
        NlsFile::Reset();
    }

    // The actions live until the process ends, as the set hands them over.
    JournalAction* make(const std::string& name, std::uint32_t units = 1) {
        return new JournalAction(name, journal, units);
    }

    ActionSet& setOf(std::initializer_list<JournalAction*> actions) {
        for (JournalAction* action : actions) {
            mSet.Add(action);
        }
        return mSet;
    }

    std::uint32_t units() {
        std::uint32_t current = 0;
        reporter.GetCurrentUnits(&current);
        return current;
    }

    // The debug log of categories 0 and 1, in a file of the test.
    std::string logFile = machine.Path("debug.log");
    void startLog() {
        mLogging = true;
        Registry registry;
        for (const char* name :
             {"ExcludeTidPid", "ExcludeDate", "ExcludeTime", "ExcludeComponent"}) {
            registry.WriteValue("HKLM", "Software\\Tovar", name, RegistryValue::Dword(1));
        }
        registry.WriteValue("HKLM", "Software\\Tovar", "Log", RegistryValue::Dword(1));
        DebugLogger::Instance().ReadSettings();
        DebugLog::Instance().SetFile(logFile);
        DebugLogger::Instance().EnableLog();
    }
    bool logHas(const std::string& text) {
        return TestMachine::ReadFile(logFile).find(text) != std::string::npos;
    }

private:
    ActionSet mSet;
    bool mLogging = false;
};

using Journal = std::vector<std::string>;

TEST_F(ActionSetTest, ActionsRunInOrderAndFailuresOnlyAreLogged) {
    JournalAction* failing = make("b", 3);
    failing->mResult = false;
    JournalAction* selfReporting = make("c", 5);
    selfReporting->mReportsUnits = true;
    ActionSet& set = setOf({make("a", 2), failing, selfReporting, make("d", 7)});
    EXPECT_EQ(17u, set.GetUnits());
    startLog();

    EXPECT_EQ(ActionSet::Finished, set.Run("Driver", false, "", false));
    EXPECT_EQ((Journal{"a", "b", "c", "d"}), journal);
    EXPECT_EQ(ActionSet::Finished, set.GetState());
    // The failed action's units count; the self-reporting one's are not credited again.
    EXPECT_EQ(12u, units());
    EXPECT_TRUE(logHas("mActions[1]->Perform()[<ActionDesc>b</ActionDesc>] failed.."));
    EXPECT_EQ("Driver", RunState::GetCurrentComponent());

    // A second run starts again from the first action.
    journal.clear();
    EXPECT_EQ(ActionSet::Finished, set.Run("Driver", false, "", false));
    EXPECT_EQ((Journal{"a", "b", "c", "d"}), journal);
}

TEST_F(ActionSetTest, AFatalFailureStopsTheList) {
    JournalAction* fatal = make("b", 3);
    fatal->mResult = false;
    fatal->mFatal = true;
    ActionSet& set = setOf({make("a", 2), fatal, make("c", 5)});
    startLog();
    EXPECT_EQ(ActionSet::Failed, set.Run("Driver", false, "", false));
    EXPECT_EQ((Journal{"a", "b"}), journal);
    EXPECT_EQ(2u, units());
    EXPECT_TRUE(logHas("mActions[1]->Perform()[<ActionDesc>b</ActionDesc>] fatal error"));
    // A fatal action that succeeded is no failure.
    journal.clear();
    fatal->mResult = true;
    EXPECT_EQ(ActionSet::Finished, set.Run("Driver", false, "", false));
    EXPECT_EQ((Journal{"a", "b", "c"}), journal);
}

TEST_F(ActionSetTest, AFrozenListResumesAtTheFrozenAction) {
    JournalAction* waiting = make("b", 3);
    waiting->mResult = false; // a failed action may freeze too
    ActionSet& set = setOf({make("a", 2), waiting, make("c", 5)});
    // A thaw of a list that never froze runs it whole.
    EXPECT_EQ(ActionSet::Finished, set.Run("Driver", true, "", false));
    EXPECT_EQ((Journal{"a", "b", "c"}), journal);
    journal.clear();
    const std::uint32_t before = units();
    waiting->mFreezes = 1;

    EXPECT_EQ(ActionSet::Frozen, set.Run("Driver", false, "", false));
    EXPECT_EQ((Journal{"a", "b"}), journal);
    EXPECT_EQ(1u, set.GetIndex());
    EXPECT_EQ(before + 5u, units());

    journal.clear();
    EXPECT_EQ(ActionSet::Finished, set.Run("Driver", true, "", false));
    EXPECT_EQ((Journal{"b", "c"}), journal);
    // The frozen action is performed, and credited, twice.
    EXPECT_EQ(before + 13u, units());
}

TEST_F(ActionSetTest, AFreezeDuringAThawFailsTheRunButRunsTheRest) {
    JournalAction* waiting = make("b");
    waiting->mFreezes = 2;
    ActionSet& set = setOf({make("a"), waiting, make("c")});
    ASSERT_EQ(ActionSet::Frozen, set.Run("Driver", false, "", false));
    journal.clear();
    startLog();
    EXPECT_EQ(ActionSet::Failed, set.Run("Driver", true, "", false));
    EXPECT_EQ((Journal{"b", "c"}), journal);
    EXPECT_TRUE(logHas("Cannot freeze an action while it is thawing."));
    EXPECT_TRUE(logHas("ActionDesc: <ActionDesc>b</ActionDesc>, index:1"));
}

TEST_F(ActionSetTest, ThawingPastTheEndRunsNothing) {
    JournalAction* waiting = make("c");
    waiting->mFreezes = 1;
    ActionSet& set = setOf({make("a"), make("b"), waiting});
    ASSERT_EQ(ActionSet::Frozen, set.Run("Driver", false, "", false));
    ASSERT_EQ(2u, set.GetIndex());
    // Two of the three leave the set as duplicates of another component's.
    ActionSet seen;
    seen.Add(make("a"));
    seen.Add(make("c"));
    set.RemoveDuplicates(seen);
    ASSERT_EQ(1u, set.Size());
    journal.clear();
    EXPECT_EQ(ActionSet::Finished, set.Run("Driver", true, "", false));
    EXPECT_TRUE(journal.empty());
}

TEST_F(ActionSetTest, AnEmptySetStillRecordsItsTitle) {
    ActionSet empty;
    EXPECT_EQ(ActionSet::Finished, empty.Run("Driver", false, "BrandA", false));
    EXPECT_EQ("BrandA", log.GetSpecial("Driver", "OEMSharedBy,Suite"));
    EXPECT_EQ("", log.GetCurrentTitle());
    EXPECT_EQ(ActionSet::Finished, empty.Run("Driver", false, "", true));
    EXPECT_EQ("BrandA", log.GetSpecial("Driver", "OEMSharedBy,Suite"));
    EXPECT_EQ(ActionSet::Finished, empty.Run("Driver", false, "BrandA", true));
    EXPECT_EQ("", log.GetSpecial("Driver", "OEMSharedBy,Suite"));
    // After an uninstall-side run the brand stays the log's scope.
    EXPECT_EQ("BrandA", log.GetCurrentTitle());
}

TEST_F(ActionSetTest, ItemsAreRecordedUnderTheComponentAndTheTitle) {
    JournalAction* copying = make("a");
    copying->mLogs = "C:\\Drv\\a.dll";
    ActionSet& set = setOf({copying});

    set.Run("Driver", false, "", false);
    EXPECT_EQ("1", log.GetValue("Driver_Files,Suite", "C:\\Drv\\a.dll"));
    ASSERT_EQ(1u, copying->mTitles.size());
    EXPECT_EQ(ActionSet::DefaultTitle(), copying->mTitles[0]);
    EXPECT_FALSE(copying->mTitles[0].empty());
    EXPECT_EQ(nullptr, log.FindSection("Driver_Special,Suite"));

    set.Run("Driver", false, "BrandA", false);
    EXPECT_EQ("BrandA", copying->mTitles[1]);
    EXPECT_EQ("1", log.GetValue("Driver_Files,Suite,BrandA", "C:\\Drv\\a.dll"));
    EXPECT_EQ("BrandA", log.GetSpecial("Driver", "OEMSharedBy,Suite"));

    // An action that does not log still works, and leaves no record.
    copying->SetLogIt(false);
    copying->mLogs = "C:\\Drv\\quiet.dll";
    set.Run("Driver", false, "", false);
    EXPECT_EQ(3u, copying->mTitles.size());
    EXPECT_FALSE(log.HasItem(itemtype::File, "Driver", "C:\\Drv\\quiet.dll"));
}

TEST_F(ActionSetTest, AnEmptyTitleGivesTheDefaultModelText) {
    std::string folder = machine.Path("nls");
    os::CreateDirectory(folder);
    ASSERT_TRUE(TestMachine::WriteFile(folder + "\\en.nls",
                                       "[Global]\r\nOEM=Valmora\r\nModelName=LX 500\r\n"));
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "en"));
    JournalAction* showing = make("a");
    setOf({showing}).Run("Driver", false, "", false);
    ASSERT_EQ(1u, showing->mTitles.size());
    EXPECT_EQ("Valmora LX 500", showing->mTitles[0]);
}

TEST_F(ActionSetTest, DuplicatesLeaveTheSetAndSurvivorsJoinSeen) {
    ActionSet seen;
    JournalAction* seenB = make("b");
    seen.Add(seenB);
    JournalAction* a = make("a");
    JournalAction* b = make("b");
    JournalAction* c = make("c");
    JournalAction* a2 = make("a");
    ActionSet& set = setOf({a, b, c, a2});
    set.RemoveDuplicates(seen);
    ASSERT_EQ(2u, set.Size());
    EXPECT_EQ(a, set.GetAt(0));
    EXPECT_EQ(c, set.GetAt(1));
    ASSERT_EQ(3u, seen.Size());
    EXPECT_EQ(seenB, seen.GetAt(0));
    EXPECT_EQ(a, seen.GetAt(1));
    EXPECT_EQ(c, seen.GetAt(2));

    // An action that equals any other survives only into an empty `seen`.
    JournalAction* scan = make("scan");
    scan->mSameAsAll = true;
    ActionSet first;
    first.Add(scan);
    ActionSet none;
    first.RemoveDuplicates(none);
    EXPECT_EQ(1u, first.Size());
    ActionSet second;
    second.Add(scan);
    second.RemoveDuplicates(seen);
    EXPECT_EQ(0u, second.Size());
}

TEST_F(ActionSetTest, UnitsCanBeReadWhileAListRuns) {
    ActionSet set;
    for (int i = 0; i < 1000; ++i) {
        set.Add(make("a", 2));
    }
    std::atomic<bool> done{false};
    std::uint32_t lastSeen = 0;
    bool neverBackwards = true;
    std::thread poller([&] {
        while (!done) {
            std::uint32_t now = 0;
            reporter.GetCurrentUnits(&now);
            neverBackwards = neverBackwards && now >= lastSeen;
            lastSeen = now;
        }
    });
    set.Run("Driver", false, "", false);
    done = true;
    poller.join();
    EXPECT_TRUE(neverBackwards);
    EXPECT_EQ(2000u, units());
}

} // namespace
