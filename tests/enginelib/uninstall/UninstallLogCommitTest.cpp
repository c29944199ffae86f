#include "uninstall/UninstallLog.h"

#include "core/RunState.h"
#include "os/Files.h"
#include "script/SystemPath.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

#include <fstream>

#ifndef _WIN32
#include "sim/SimMachine.h"

#include <csignal>
#include <sys/resource.h>
#endif

namespace {

void Fill(UninstallLog& log) {
    log.SetProduct("Suite");
    log.SetManufacturer("Valmora");
    log.AddComponent("Driver", "Install", false);
    log.AddComponent("Common", "Driver", true);
    log.AddItem(itemtype::File, "Driver", "C:\\Program Files\\Valmora\\drv.dll");
    log.AddItem(itemtype::Directory, "Driver", "C:\\Program Files\\Valmora");
    log.AddItem(itemtype::RegValue, "Driver", "HKLM,Software\\Valmora\\Driver,Path");
    log.AddItem(itemtype::RegKey, "Common", "HKLM,Software\\Valmora\\Common");
    log.AddItem(itemtype::Shortcut, "Driver", "Valmora\\Driver Help.lnk");
    log.AddItem(itemtype::Service, "Common", "ValmoraSpool");
    log.AddItem(itemtype::Port, "Driver", "IP_10.0.0.7", "Standard TCP/IP Port,1");
    log.AddItem(itemtype::Port, "Driver", "LPT9:");
    log.SetSpecial("Driver", "BaseDir", "C:\\Program Files\\Valmora");
    log.SetSpecial("Driver", "Version", "14.0.12.0");
    log.AddRequiredBy("Common", "Driver");
    log.AddOEMSharedBy("Driver", "Brand");
    log.SetOemProduct("Brand");
    log.AddItem(itemtype::File, "Driver", "C:\\Windows\\brand.ini");
    log.SetOemProduct("");
}

// Every section, every name in order and every value.
void ExpectSameModel(const IniFile& expected, const IniFile& actual) {
    ASSERT_EQ(expected.SectionCount(), actual.SectionCount());
    for (int index = 0; index < expected.SectionCount(); ++index) {
        IniSection* left = expected.GetSection(index);
        IniSection* right = actual.GetSection(index);
        ASSERT_EQ(left->GetName(), right->GetName());
        ASSERT_EQ(left->Names(), right->Names()) << left->GetName();
        for (const CStdStr& name : left->Names()) {
            CStdStr a;
            CStdStr b;
            left->GetValue(name, a);
            right->GetValue(name, b);
            EXPECT_EQ(a, b) << left->GetName() << ": " << name;
        }
    }
}

bool NoTemporaryFilesIn(const std::string& folder) {
    std::vector<os::FindData> found;
    return os::FindFiles(folder + "\\*.tmp", found) == os::error::FileNotFound;
}

class UninstallLogCommitTest : public ::testing::Test {
protected:
    TestMachine machine;
    std::string path = machine.Path("QorFiles.ulf");

    void SetUp() override {
        RunState::Reset();
        UninstallLog& global = UninstallLog::Global();
        global.Clear();
        global.SetNoWrite(false);
        global.SetOemProduct("");
        global.SetProduct("Suite");
        global.SetManufacturer("Valmora");
    }

    void TearDown() override {
        UninstallLog::Global().Clear();
        RunState::Reset();
    }

#ifndef _WIN32
    void setFaults(const std::string& text) {
        std::ofstream(machine.HostDir() + "/faults.ini") << text;
        std::string why;
        ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
    }
#endif
};

TEST_F(UninstallLogCommitTest, ALogReadsBackAsItWasCommitted) {
    UninstallLog log(UninstallLog::StartEmpty);
    Fill(log);
    ASSERT_TRUE(log.Commit(path));
    std::string text = TestMachine::ReadFile(path);
    EXPECT_EQ(0u, text.find("[Install]\r\nDriver,Suite=1\r\n\r\n[Driver,Suite]\r\n"));
    EXPECT_NE(std::string::npos, text.find("\r\nLPT9:\r\n"));

    UninstallLog again(UninstallLog::StartEmpty);
    ASSERT_TRUE(again.Read(path));
    ExpectSameModel(log, again);
    EXPECT_TRUE(NoTemporaryFilesIn(machine.Scratch()));

    // A second commit replaces the first.
    log.RemoveItem(itemtype::Port, "Driver", "LPT9:");
    ASSERT_TRUE(log.Commit(path));
    UninstallLog third(UninstallLog::StartEmpty);
    third.Read(path);
    ExpectSameModel(log, third);
}

TEST_F(UninstallLogCommitTest, AUtf16LogStaysUtf16) {
    std::string bytes = "\xFF\xFE";
    for (char c : std::string("[Install]\r\nDriver,Suite=1\r\n")) {
        bytes += c;
        bytes += '\0';
    }
    ASSERT_TRUE(TestMachine::WriteFile(path, bytes));
    UninstallLog log(UninstallLog::StartEmpty);
    ASSERT_TRUE(log.Read(path));
    log.SetProduct("Suite");
    log.AddComponent("Tools", "Driver", false);
    ASSERT_TRUE(log.Commit(path));
    std::string written = TestMachine::ReadFile(path);
    ASSERT_GE(written.size(), 4u);
    EXPECT_EQ("\xFF\xFE[", written.substr(0, 3));
    UninstallLog again(UninstallLog::StartEmpty);
    ASSERT_TRUE(again.Read(path));
    EXPECT_EQ(2, again.GetEncoding());
    ExpectSameModel(log, again);
}

TEST_F(UninstallLogCommitTest, TheRunsLogLivesInTheSystemFolder) {
    CStdStr expected = SystemPath(SystemPath::SystemFolder).GetDirectory() + "\\QorFiles.ulf";
    EXPECT_TRUE(UninstallLog::GetLogPath().EqualsNoCase(expected));
    UninstallLog& global = UninstallLog::Global();
    EXPECT_EQ(&global, &UninstallLog::Global());
    Fill(global);
    ASSERT_TRUE(global.Commit());
    ASSERT_TRUE(TestMachine::Exists(expected));

    UninstallLog fresh(UninstallLog::ReadMachineLog);
    ExpectSameModel(global, fresh);
    // Reading the machine's log replaces what the model held.
    fresh.AddItem(itemtype::File, "Driver", "C:\\stale.dll");
    ASSERT_TRUE(fresh.ReadAllRelevant(false, false));
    ExpectSameModel(global, fresh);
    // With conversion and commit asked, what was read is written back at once.
    ASSERT_EQ(os::error::Success, os::DeleteFile(expected));
    ASSERT_TRUE(fresh.ReadAllRelevant(true, true));
    EXPECT_EQ(0, fresh.SectionCount());
    EXPECT_TRUE(TestMachine::Exists(expected));
}

TEST_F(UninstallLogCommitTest, NoWriteDeletesTheLog) {
    UninstallLog log(UninstallLog::StartEmpty);
    Fill(log);
    ASSERT_TRUE(log.Commit(path));
    log.SetNoWrite(true);
    EXPECT_TRUE(log.Commit(path));
    EXPECT_FALSE(TestMachine::Exists(path));
    EXPECT_TRUE(log.Commit(path));
}

TEST_F(UninstallLogCommitTest, AMissingFolderFailsAndWritesNothing) {
    UninstallLog log(UninstallLog::StartEmpty);
    Fill(log);
    EXPECT_FALSE(log.Commit(machine.Path("Missing\\QorFiles.ulf")));
    EXPECT_FALSE(log.Commit(""));
}

TEST_F(UninstallLogCommitTest, TheInstalledViewFollowsTheMachinesLog) {
    UninstallLog& installed = UninstallLog::Installed();
    EXPECT_FALSE(installed.IsComponentInstalled("Driver"));
    EXPECT_EQ("", installed.GetSpecial("Driver", "Version"));

    UninstallLog& global = UninstallLog::Global();
    Fill(global);
    ASSERT_TRUE(global.Commit());
    EXPECT_TRUE(UninstallLog::Installed().IsComponentInstalled("Driver"));
    EXPECT_EQ("14.0.12.0", UninstallLog::Installed().GetSpecial("Driver", "Version"));
    EXPECT_EQ("Driver", UninstallLog::Installed().GetSpecial("Common", "RequiredBy"));

    // A change made by another program is seen too.
    CStdStr log = UninstallLog::GetLogPath();
    ASSERT_TRUE(TestMachine::WriteFile(log,
                                       "[Install]\r\nFax,Suite=1\r\n\r\n[Fax_Special,Suite]\r\n"
                                       "Version=2.0\r\n\r\n"));
    EXPECT_FALSE(UninstallLog::Installed().IsComponentInstalled("Driver"));
    EXPECT_EQ("2.0", UninstallLog::Installed().GetSpecial("Fax", "Version"));

    // It is never written.
    EXPECT_FALSE(UninstallLog::Installed().Commit());
    EXPECT_EQ("2.0", UninstallLog::Installed().GetSpecial("Fax", "Version"));
}

#ifndef _WIN32

TEST_F(UninstallLogCommitTest, AHeldLogIsLeftWholeWhenItCannotBeReplaced) {
    UninstallLog log(UninstallLog::StartEmpty);
    Fill(log);
    ASSERT_TRUE(log.Commit(path));
    const std::string before = TestMachine::ReadFile(path);

    setFaults("[Files]\nC:\\Scratch\\QorFiles.ulf=sharing\n");
    log.AddItem(itemtype::File, "Driver", "C:\\new.dll");
    EXPECT_FALSE(log.Commit(path));
    setFaults("");
    EXPECT_EQ(before, TestMachine::ReadFile(path));
    EXPECT_TRUE(NoTemporaryFilesIn(machine.Scratch()));
}

TEST_F(UninstallLogCommitTest, AFullDiskAtAnyByteLeavesThePreviousLogWhole) {
    UninstallLog log(UninstallLog::StartEmpty);
    Fill(log);
    ASSERT_TRUE(log.Commit(path));
    const std::string before = TestMachine::ReadFile(path);
    for (int i = 0; i < 20; ++i) {
        log.AddItem(itemtype::File, "Common", CStdStr::Formatted("C:\\Common\\file%02d.dll", i));
    }
    ASSERT_TRUE(log.Commit(machine.Path("size.ulf")));
    const size_t size = TestMachine::ReadFile(machine.Path("size.ulf")).size();
    ASSERT_GT(size, before.size());

    // Writes past the limit fail as on a full disk; the signal of that is ignored.
    auto previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit saved{};
    ::getrlimit(RLIMIT_FSIZE, &saved);
    for (size_t limit = 0; limit < size; ++limit) {
        rlimit small = saved;
        small.rlim_cur = limit;
        ::setrlimit(RLIMIT_FSIZE, &small);
        bool committed = log.Commit(path);
        ::setrlimit(RLIMIT_FSIZE, &saved);
        ASSERT_FALSE(committed) << "limit " << limit;
        ASSERT_EQ(before, TestMachine::ReadFile(path)) << "limit " << limit;
    }
    std::signal(SIGXFSZ, previous);
    EXPECT_TRUE(NoTemporaryFilesIn(machine.Scratch()));
    ASSERT_TRUE(log.Commit(path));
    EXPECT_EQ(size, TestMachine::ReadFile(path).size());
}

TEST_F(UninstallLogCommitTest, ALogThatCouldNotBeReadIsNotReplaced) {
    UninstallLog& global = UninstallLog::Global();
    Fill(global);
    ASSERT_TRUE(global.Commit());
    CStdStr machineLog = UninstallLog::GetLogPath();
    const std::string before = TestMachine::ReadFile(machineLog);

    setFaults("[Files]\n" + machineLog + "=lock\n");
    UninstallLog run(UninstallLog::StartEmpty);
    EXPECT_FALSE(run.ReadAllRelevant(false, false));
    EXPECT_EQ(0, run.SectionCount());
    setFaults("");
    run.SetProduct("Suite");
    run.AddComponent("Fax", "Install", false);
    EXPECT_FALSE(run.Commit());
    EXPECT_EQ(before, TestMachine::ReadFile(machineLog));
    // Once it reads, it is written again.
    ASSERT_TRUE(run.ReadAllRelevant(false, false));
    run.AddComponent("Fax", "Install", false);
    ASSERT_TRUE(run.Commit());
    UninstallLog after(UninstallLog::ReadMachineLog);
    after.SetProduct("Suite");
    EXPECT_TRUE(after.IsComponentInstalled("Fax"));
    EXPECT_TRUE(after.IsComponentInstalled("Driver"));
}

#endif

} // namespace
