#include "actions/FileAction.h"

#include "core/IpcTransfer.h"
#include "core/RunState.h"
#include "os/Files.h"
#include "os/Process.h"
#include "support/CompressedFiles.h"
#include "support/LogCapture.h"
#include "support/SimMachineState.h"
#include "support/SuiteLog.h"
#include "support/TestMachine.h"
#include "system/FileFinder.h"
#include "system/FileOp.h"
#include "system/ProtectedFolder.h"
#include "tools/VersionedImage.h"
#include "uninstall/UninstallLog.h"

#include <gtest/gtest.h>

namespace {

class FileActionTest : public ::testing::Test {
protected:
    TestMachine machine;
    IpcTransfer reporter;
    UninstallLog& uninstall = UninstallLog::Global();
    LogCapture log{machine.Path("debug.log")};

    void SetUp() override {
        RunState::Reset();
        RunState::SetReporter(&reporter);
        StartSuiteLog(uninstall);
        UninstallLog::SetParentComponent("Tools");
        ASSERT_EQ(os::error::Success, os::CreateDirectory(path("src")));
        ASSERT_EQ(os::error::Success, os::CreateDirectory(path("dst")));
    }
    void TearDown() override {
        uninstall.Clear();
        RunState::Reset();
    }

    std::string path(const std::string& name) const { return machine.Path(name); }
    std::string write(const std::string& name, const std::string& bytes) {
        EXPECT_TRUE(TestMachine::WriteFile(path(name), bytes));
        return path(name);
    }
    static std::string read(const std::string& file) { return TestMachine::ReadFile(file); }
    static bool exists(const std::string& file) { return TestMachine::Exists(file); }

    // The action of a line's parameters after the keyword.
    static FileAction make(std::initializer_list<std::string> params) {
        CStdStringList list;
        for (const std::string& param : params) {
            list.Add(param);
        }
        return FileAction(list);
    }
    std::uint32_t progress() {
        std::uint32_t units = 0;
        reporter.GetCurrentUnits(&units);
        return units;
    }
    CStdStringList logged() {
        CStdStringList items;
        uninstall.GetItems(1, "Tools", items);
        return items;
    }
    void age(const std::string& file, int days) {
        os::FileTimes times;
        ASSERT_EQ(os::error::Success, os::GetFileTime(file, times));
        times.lastWrite.ticks -= 10000000ULL * 3600 * 24 * static_cast<std::uint64_t>(days);
        ASSERT_EQ(os::error::Success, os::SetFileTime(file, times));
    }
};

TEST_F(FileActionTest, ReadsItsLine) {
    FileAction plain = make({"copy", "C:\\a.txt", "C:\\b\\", "", "", ""});
    EXPECT_EQ(FileAction::Copy, plain.GetOperation());
    EXPECT_TRUE(plain.GetDoVersionCheck());
    EXPECT_FALSE(plain.GetAllowComma());
    EXPECT_TRUE(plain.GetLogIt());
    EXPECT_FALSE(plain.GetKeepCompressed());

    FileAction unknown = make({"SHRED", "C:\\c.txt", "C:\\b\\"});
    EXPECT_EQ(FileAction::Copy, unknown.GetOperation());
    FileAction options = make({"DelayedCopy", "C:\\a.txt", "C:\\b\\", "True", "notlogit", "false"});
    EXPECT_EQ(FileAction::DelayedCopy, options.GetOperation());
    EXPECT_TRUE(options.GetKeepCompressed());
    EXPECT_FALSE(options.GetLogIt());
    EXPECT_FALSE(options.GetDoVersionCheck());
    FileAction comma = make({"COPY", "C:\\a.txt", "C:\\b\\", "", "", "/allowcomma:true"});
    EXPECT_TRUE(comma.GetAllowComma());
    EXPECT_TRUE(comma.GetDoVersionCheck());
    EXPECT_FALSE(make({"COPY", "C:\\a", "C:\\b", "", "", "/ALLOWCOMMA:FALSE"}).GetAllowComma());
    EXPECT_FALSE(make({"DELETEDIR", "C:\\a", "true"}).GetWipeOutFolder());
    EXPECT_TRUE(make({"DELETEDIR", "C:\\a", ""}).GetWipeOutFolder());

    EXPECT_FALSE(plain.IsSameAction(&unknown));
    FileAction same = make({"COPY", "c:\\A.TXT", "c:\\B\\"});
    EXPECT_TRUE(plain.IsSameAction(&same));
    EXPECT_FALSE(plain.IsSameAction(&options));
}

TEST_F(FileActionTest, CopiesAFileAndRecordsIt) {
    write("src\\a.txt", "alpha");
    FileAction action = make({"COPY", path("src\\a.txt"), path("dst\\")});
    EXPECT_EQ(1u, action.GetUnits());
    ASSERT_TRUE(action.Perform(""));
    EXPECT_TRUE(action.HasReportedUnits());
    EXPECT_EQ(1u, progress());
    EXPECT_EQ("alpha", read(path("dst\\a.txt")));
    EXPECT_EQ(CStdStringList{path("dst\\a.txt")}, logged());
    EXPECT_TRUE(log.Contains(path("dst\\") + " <success.>"));
}

TEST_F(FileActionTest, AMissingSourceFailsButSpendsItsUnit) {
    FileAction action = make({"COPY", path("src\\none.txt"), path("dst\\")});
    EXPECT_EQ(1u, action.GetUnits());
    EXPECT_FALSE(action.Perform(""));
    EXPECT_EQ(1u, progress());
    EXPECT_TRUE(logged().empty());
    EXPECT_TRUE(log.Contains("<failed.>"));
}

TEST_F(FileActionTest, ANewerTargetStaysUnlessTheCheckIsOff) {
    write("src\\lib.dll", peimage::PeImage(peimage::WithFileVersion("1.0")));
    write("dst\\lib.dll", peimage::PeImage(peimage::WithFileVersion("2.0")));
    std::string target = path("dst\\lib.dll");
    ASSERT_TRUE(make({"COPY", path("src\\lib.dll"), target}).Perform(""));
    EXPECT_EQ("2.0", FileOp::GetFileVersion(target));
    EXPECT_TRUE(log.Contains(target + " <success-noCopy.>"));
    EXPECT_EQ(CStdStringList{target}, logged());

    // Same version: the time decides.
    write("src\\t.txt", "new");
    write("dst\\t.txt", "old");
    age(path("src\\t.txt"), 5);
    ASSERT_TRUE(make({"COPY", path("src\\t.txt"), path("dst\\t.txt")}).Perform(""));
    EXPECT_EQ("old", read(path("dst\\t.txt")));

    ASSERT_TRUE(make({"COPY", path("src\\lib.dll"), target, "", "", "FALSE"}).Perform(""));
    EXPECT_EQ("1.0", FileOp::GetFileVersion(target));
}

TEST_F(FileActionTest, ReadOnlyTargetsAreReplacedAndLeftWritable) {
    write("src\\a.txt", "new");
    std::string target = write("dst\\a.txt", "old");
    ASSERT_EQ(os::error::Success, os::SetFileAttributes(target, os::attr::ReadOnly));
    age(target, 2);
    // CopyFile refuses a read-only target; the copy fails and the attribute stays.
    EXPECT_FALSE(make({"COPY", path("src\\a.txt"), target}).Perform(""));
    ASSERT_EQ(os::error::Success, os::SetFileAttributes(path("src\\a.txt"), os::attr::ReadOnly));
    ASSERT_EQ(os::error::Success, os::SetFileAttributes(target, os::attr::Normal));
    ASSERT_TRUE(make({"COPY", path("src\\a.txt"), target}).Perform(""));
    std::uint32_t attributes = 0;
    ASSERT_EQ(os::error::Success, os::GetFileAttributes(target, attributes));
    EXPECT_EQ(0u, attributes & os::attr::ReadOnly);
}

TEST_F(FileActionTest, ACommaInTheTargetFolderNeedsTheOption) {
    write("src\\a.txt", "a");
    EXPECT_FALSE(make({"COPY", path("src\\a.txt"), path("dst\\x,y\\")}).Perform(""));
    EXPECT_FALSE(exists(path("dst\\x,y")));
    ASSERT_TRUE(make({"COPY", path("src\\a.txt"), path("dst\\x,y\\"), "", "", "/ALLOWCOMMA:TRUE"})
                        .Perform(""));
    EXPECT_EQ("a", read(path("dst\\x,y\\a.txt")));
}

TEST_F(FileActionTest, WildcardsCountTheFilesOfBuildTime) {
    write("src\\a.txt", "a");
    write("src\\b.txt", "b");
    write("src\\c.dat", "c");
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("src\\folder.txt")));
    FileAction action = make({"COPY", path("src\\*.txt"), path("dst")});
    EXPECT_EQ(2u, action.GetUnits());
    write("src\\late.txt", "late");
    ASSERT_TRUE(action.Perform(""));
    EXPECT_EQ(2u, action.GetUnits());
    EXPECT_EQ(3u, progress());
    EXPECT_EQ("a", read(path("dst\\a.txt")));
    EXPECT_EQ("late", read(path("dst\\late.txt")));
    EXPECT_FALSE(exists(path("dst\\c.dat")));
    EXPECT_FALSE(exists(path("dst\\folder.txt")));
    EXPECT_EQ(3u, logged().size());

    FileAction none = make({"COPY", path("src\\*.none"), path("dst")});
    EXPECT_EQ(0u, none.GetUnits());
    EXPECT_FALSE(none.Perform(""));
    EXPECT_TRUE(log.Contains("Source path is invalid: " + path("src\\*.none")));
}

TEST_F(FileActionTest, RecursiveCopiesTakeTheTree) {
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("src\\sub")));
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("src\\sub\\deep")));
    write("src\\top.txt", "top");
    write("src\\sub\\mid.dll", "mid");
    write("src\\sub\\deep\\low.txt", "low");
    FileAction all = make({"COPYRECURSIVE", path("src"), path("dst\\all")});
    EXPECT_EQ(3u, all.GetUnits());
    ASSERT_TRUE(all.Perform(""));
    EXPECT_EQ("top", read(path("dst\\all\\top.txt")));
    EXPECT_EQ("mid", read(path("dst\\all\\sub\\mid.dll")));
    EXPECT_EQ("low", read(path("dst\\all\\sub\\deep\\low.txt")));

    FileAction some = make({"COPYRECURSIVE", path("src\\*.txt"), path("dst\\some")});
    EXPECT_EQ(2u, some.GetUnits());
    ASSERT_TRUE(some.Perform(""));
    EXPECT_EQ("top", read(path("dst\\some\\top.txt")));
    EXPECT_EQ("low", read(path("dst\\some\\sub\\deep\\low.txt")));
    EXPECT_FALSE(exists(path("dst\\some\\sub\\mid.dll")));
    EXPECT_FALSE(make({"COPYRECURSIVE", path("nowhere"), path("dst\\x")}).Perform(""));
}

TEST_F(FileActionTest, ATreeCopiedAgainAfterItsFoldersWentAwayIsWholeAndWritable) {
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("src\\sub")));
    write("src\\one.txt", "one");
    write("src\\two.txt", "two");
    write("src\\sub\\ro.txt", "ro");
    ASSERT_EQ(os::error::Success,
              os::SetFileAttributes(path("src\\sub\\ro.txt"), os::attr::ReadOnly));
    FileAction tree = make({"COPYRECURSIVE", path("src"), path("dst\\tree")});
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(tree.Perform("")) << round;
        EXPECT_EQ("one", read(path("dst\\tree\\one.txt")));
        EXPECT_EQ("two", read(path("dst\\tree\\two.txt")));
        std::uint32_t attributes = 0;
        ASSERT_EQ(os::error::Success,
                  os::GetFileAttributes(path("dst\\tree\\sub\\ro.txt"), attributes));
        EXPECT_EQ(0u, attributes & os::attr::ReadOnly);
        EXPECT_EQ(os::error::Success,
                  os::GetFileAttributes(path("dst\\tree\\one.txt"), attributes));
        // The folders the first round made are gone before the second.
        ASSERT_TRUE(FileOp::WipeOutDirectory(path("dst\\tree")));
    }
}

TEST_F(FileActionTest, MultiCopyFillsEverySubfolderOfTheTarget) {
    write("src\\a.txt", "a");
    write("src\\b.txt", "b");
    EXPECT_TRUE(make({"MULTICOPY", path("src"), path("dst")}).Perform(""));
    EXPECT_EQ(0u, progress());
    for (const char* folder : {"dst\\one", "dst\\two"}) {
        ASSERT_EQ(os::error::Success, os::CreateDirectory(path(folder)));
    }
    write("dst\\file.txt", "not a folder");
    FileAction action = make({"MULTICOPY", path("src"), path("dst")});
    EXPECT_EQ(4u, action.GetUnits());
    ASSERT_TRUE(action.Perform(""));
    EXPECT_EQ("a", read(path("dst\\one\\a.txt")));
    EXPECT_EQ("b", read(path("dst\\two\\b.txt")));
}

TEST_F(FileActionTest, DeletingFilesAndFolders) {
    std::string file = write("dst\\a.txt", "a");
    FileAction remove = make({"DELETE", file});
    EXPECT_EQ(1u, remove.GetUnits());
    ASSERT_TRUE(remove.Perform(""));
    EXPECT_FALSE(remove.HasReportedUnits());
    EXPECT_FALSE(exists(file));
    EXPECT_TRUE(make({"DELETE", file}).Perform(""));

    write("dst\\x.log", "1");
    write("dst\\y.log", "2");
    write("dst\\z.txt", "3");
    FileAction wild = make({"DELETEWITHWILDCARD", path("dst\\*.log")});
    EXPECT_EQ(2u, wild.GetUnits());
    ASSERT_TRUE(wild.Perform(""));
    EXPECT_FALSE(exists(path("dst\\x.log")));
    EXPECT_TRUE(exists(path("dst\\z.txt")));
    FileAction noWildcard = make({"DELETEWITHWILDCARD", path("dst\\z.txt")});
    EXPECT_EQ(0u, noWildcard.GetUnits());
    EXPECT_FALSE(noWildcard.Perform(""));
    EXPECT_TRUE(log.Contains("Can't find a wildcard(*) in path: " + path("dst\\z.txt")));
}

TEST_F(FileActionTest, DeleteDirRefusesRootsAndEmptyDefinesAndCanKeepFullFolders) {
    EXPECT_FALSE(make({"DELETEDIR", "C:\\"}).Perform(""));
    EXPECT_FALSE(make({"DELETEDIR", "C:"}).Perform(""));
    EXPECT_TRUE(log.Contains("Attempt to delete root directory failed. Aborting! C:\\"));
    EXPECT_FALSE(make({"DELETEDIR", "C:\\Scratch\\\\dst"}).Perform(""));
    EXPECT_TRUE(log.Contains("Attempt to delete invalid directory failed. Aborting!"));
    EXPECT_TRUE(exists(path("dst")));

    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("dst\\empty")));
    write("dst\\keep.txt", "k");
    FileAction keep = make({"DELETEDIR", path("dst"), "TRUE"});
    EXPECT_EQ(1u, keep.GetUnits());
    EXPECT_TRUE(keep.Perform(""));
    EXPECT_TRUE(exists(path("dst\\keep.txt")));
    EXPECT_FALSE(exists(path("dst\\empty")));
    EXPECT_TRUE(log.Contains("Skip delete dir since '" + path("dst") + "' isn't empty."));

    ASSERT_TRUE(make({"DELETEDIR", path("dst")}).Perform(""));
    EXPECT_FALSE(exists(path("dst")));
}

// A package downloaded to a folder of C: and run from there: the process's current folder is on
// C:, so a bare "C:" names that folder to GetFullPathName, while a listing of "C:" lists the
// whole drive. No spelling of a drive, share or system folder may reach the wipe.
TEST_F(FileActionTest, DeleteDirLeavesDrivesAndSystemFoldersWhateverTheSpelling) {
    for (const char* folder : {"Downloads", "Downloads\\package", "Downloads\\package\\old"}) {
        ASSERT_EQ(os::error::Success, os::CreateDirectory(path(folder)));
    }
    write("Downloads\\package\\setup.isf", "[Install]\r\n");
    ASSERT_EQ(os::error::Success, os::SetCurrentDirectory(path("Downloads\\package")));
    std::string profile;
    ASSERT_EQ(os::error::Success, os::GetEnvironmentVariable("USERPROFILE", profile));
    auto rootEntries = [] {
        std::vector<std::string> names;
        for (FileFinder finder("C:\\*"); !finder.IsEnd(); finder.Next()) {
            names.push_back(finder.GetCurrent());
        }
        return names;
    };
    std::vector<std::string> before = rootEntries();
    ASSERT_GT(before.size(), 3u);

    const std::vector<std::string> targets = {"C:",
                                              "c:",
                                              "c:\\",
                                              "C:/",
                                              "C:\\.",
                                              "C:\\..\\",
                                              "C:\\..\\..",
                                              "C:.",
                                              "C: ",
                                              "C:\\ .",
                                              "\\\\?\\C:\\",
                                              "\\\\.\\C:",
                                              "\\\\server\\share",
                                              "\\\\?\\UNC\\server\\share\\",
                                              "C:\\Windows",
                                              "c:\\WINDOWS\\.",
                                              "C:\\Windows. ",
                                              "C:\\Windows\\System32\\",
                                              "C:\\Windows\\SysWOW64",
                                              "C:\\Program Files",
                                              "C:\\Program Files (x86)..",
                                              "C:\\Scratch\\..\\Users",
                                              profile,
                                              profile + "\\..\\Public",
                                              "C:\\ProgramData",
                                              "..\\..\\..",
                                              "\\",
                                              ".\\..\\..\\..\\Windows"};
    for (const std::string& target : targets) {
        EXPECT_FALSE(make({"DELETEDIR", target}).Perform("")) << target;
        EXPECT_FALSE(make({"DELETEDIR", target, "TRUE"}).Perform("")) << target;
    }
    EXPECT_EQ(before, rootEntries());
    EXPECT_TRUE(exists(path("Downloads\\package\\setup.isf")));
    EXPECT_TRUE(FileOp::IsDirectory(profile));
    EXPECT_TRUE(log.Contains("Attempt to delete root directory failed. Aborting! C:"));
    EXPECT_TRUE(log.Contains("'C:' is a drive's root."));
    EXPECT_TRUE(log.Contains("'C:\\Windows. ' is the Windows folder."));

    // A folder of the package itself, named relative to the current folder, still goes.
    write("Downloads\\package\\old\\x.txt", "x");
    EXPECT_TRUE(make({"DELETEDIR", "old"}).Perform(""));
    EXPECT_FALSE(exists(path("Downloads\\package\\old")));
}

TEST(ProtectedFolderTest, NormalizesAsWindowsResolves) {
    TestMachine machine;
    ASSERT_EQ(os::error::Success, os::SetCurrentDirectory(machine.Scratch()));
    EXPECT_EQ("C:\\", ProtectedFolder::Normalize("c:"));
    EXPECT_EQ("C:\\", ProtectedFolder::Normalize("\\\\?\\c:\\.\\x\\.."));
    EXPECT_EQ("C:\\Windows", ProtectedFolder::Normalize("C:/Windows. /"));
    EXPECT_EQ("C:\\Scratch\\a", ProtectedFolder::Normalize("a"));
    EXPECT_EQ("C:\\Scratch\\a", ProtectedFolder::Normalize("C:a"));
    EXPECT_EQ("C:\\a", ProtectedFolder::Normalize("\\a"));
    EXPECT_EQ("\\\\srv\\share", ProtectedFolder::Normalize("\\\\?\\UNC\\srv\\share\\x\\..\\.."));
    EXPECT_EQ("", ProtectedFolder::WhyProtected("C:\\Program Files\\Maker"));
    EXPECT_EQ("the Windows folder", ProtectedFolder::WhyProtected("C:\\Windows\\..\\Windows. \\"));
    EXPECT_EQ("a user's profile", ProtectedFolder::WhyProtected("C:\\Users\\Someone Else"));
}

TEST_F(FileActionTest, CreateDirMakesTheWholePath) {
    FileAction action = make({"CREATEDIR", path("made\\one\\two")});
    EXPECT_EQ(0u, action.GetUnits());
    ASSERT_TRUE(action.Perform(""));
    EXPECT_TRUE(FileOp::IsDirectory(path("made\\one\\two")));
}

TEST_F(FileActionTest, MergeAndCopyOrMerge) {
    write("src\\add.ini", "[Main]\r\nNew=1\r\nShared=source\r\n[Extra]\r\nX=y\r\n");
    std::string target = write("dst\\conf.ini", "[Main]\r\nOld=1\r\nShared=target\r\n");
    ASSERT_TRUE(make({"MERGE", path("src\\add.ini"), target}).Perform(""));
    std::string merged = read(target);
    for (const char* line : {"Old=1", "New=1", "Shared=source", "[Extra]", "X=y"}) {
        EXPECT_NE(std::string::npos, merged.find(line)) << merged;
    }
    EXPECT_TRUE(logged().empty());
    EXPECT_FALSE(make({"MERGE", path("src\\add.ini"), path("dst\\none.ini")}).Perform(""));

    ASSERT_TRUE(make({"COPYORMERGE", path("src\\add.ini"), path("dst\\fresh.ini")}).Perform(""));
    EXPECT_EQ(read(path("src\\add.ini")), read(path("dst\\fresh.ini")));
    EXPECT_EQ(CStdStringList{path("dst\\fresh.ini")}, logged());
    EXPECT_TRUE(log.Contains("Destination does not exists"));
    ASSERT_TRUE(make({"COPYORMERGE", path("src\\add.ini"), target}).Perform(""));
    EXPECT_TRUE(log.Contains("Destination Exists"));
}

TEST_F(FileActionTest, CompressedSourcesAreExpandedUnlessKeptCompressed) {
    std::string text = "the expanded driver " + std::string(2000, 'q');
    write("src\\drv.dl_", testfiles::LzCompress(text, 'l'));
    ASSERT_TRUE(make({"COPY", path("src\\drv.dl_"), path("dst\\")}).Perform(""));
    EXPECT_EQ(text, read(path("dst\\drv.dll")));
    EXPECT_FALSE(exists(path("dst\\drv.dl_")));
    EXPECT_EQ(CStdStringList{path("dst\\drv.dll")}, logged());

    ASSERT_TRUE(make({"COPY", path("src\\drv.dl_"), path("dst\\kept.dl_"), "TRUE"}).Perform(""));
    EXPECT_EQ(read(path("src\\drv.dl_")), read(path("dst\\kept.dl_")));
}

TEST_F(FileActionTest, NotLogItCopiesWithoutARecord) {
    write("src\\a.txt", "a");
    ASSERT_TRUE(make({"COPY", path("src\\a.txt"), path("dst\\"), "", "NotLogIt"}).Perform(""));
    EXPECT_EQ("a", read(path("dst\\a.txt")));
    EXPECT_TRUE(logged().empty());
}

TEST_F(FileActionTest, DelayedCopyWaitsForTheNextStart) {
    write("src\\svc.exe", "new");
    std::string target = write("dst\\svc.exe", "old");
    age(target, 3);
    ASSERT_TRUE(make({"DELAYEDCOPY", path("src\\svc.exe"), path("dst\\")}).Perform(""));
    EXPECT_EQ("old", read(target));
    std::vector<std::string> pending = simstate::PendingOperations();
    ASSERT_EQ(2u, pending.size());
    EXPECT_EQ("new", read(pending[0]));
    EXPECT_EQ("!" + target, pending[1]);
    EXPECT_EQ(CStdStringList{target}, logged());

    // A compressed source is expanded first; the copy to be moved holds the expanded text.
    write("src\\drv.dl_", testfiles::LzCompress("expanded", 'l'));
    ASSERT_TRUE(make({"DELAYEDCOPY", path("src\\drv.dl_"), path("dst\\")}).Perform(""));
    pending = simstate::PendingOperations();
    ASSERT_EQ(4u, pending.size());
    EXPECT_EQ("expanded", read(pending[2]));
    EXPECT_EQ("!" + path("dst\\drv.dll"), pending[3]);
}

} // namespace
