#include "system/FileOp.h"

#include "core/RebootAlert.h"
#include "os/Files.h"
#include "os/ProcessStatus.h"
#include "script/SystemPath.h"
#include "support/LogCapture.h"
#include "support/SimMachineState.h"
#include "support/TestMachine.h"
#include "system/Registry.h"
#include "tools/VersionedImage.h"

#include <gtest/gtest.h>

namespace {

class FileOpTest : public ::testing::Test {
protected:
    explicit FileOpTest(const std::string& preset = "win7-x64") : machine(preset) {}

    void SetUp() override {
        FileOp::SetZombieMode(false);
        RebootAlert::Clear();
    }
    void TearDown() override {
        FileOp::RemoveZombieFiles(false);
        FileOp::CommitWinInitFile();
        RebootAlert::Clear();
    }

    std::string path(const std::string& name) const { return machine.Path(name); }
    std::string write(const std::string& name, const std::string& bytes) {
        EXPECT_TRUE(TestMachine::WriteFile(path(name), bytes));
        return path(name);
    }
    std::string versioned(const std::string& name, const std::string& version,
                          const std::string& padding = "") {
        peimage::VersionSpec resource = peimage::WithFileVersion(version);
        resource.tables[0].strings.push_back({"Comments", padding});
        return write(name, peimage::PeImage(resource));
    }
    // Moves the last write time of a file by whole days.
    void age(const std::string& file, int days) {
        os::FileTimes times;
        ASSERT_EQ(os::error::Success, os::GetFileTime(file, times));
        times.lastWrite.ticks -= 10000000ULL * 3600 * 24 * static_cast<std::uint64_t>(days);
        ASSERT_EQ(os::error::Success, os::SetFileTime(file, times));
    }
    static std::string read(const std::string& file) { return TestMachine::ReadFile(file); }
    static bool exists(const std::string& file) { return TestMachine::Exists(file); }

    TestMachine machine;
    LogCapture log{machine.Path("debug.log")};
};

class FileOpWin98Test : public FileOpTest {
protected:
    FileOpWin98Test() : FileOpTest("win98") {}
};

TEST_F(FileOpTest, PathsBeyondMaxPathFailWithTheCodeWindowsGives) {
    std::string source = write("short.txt", "short");
    std::string deep = path(std::string(100, 'a') + "\\" + std::string(100, 'b'));
    std::string tooLong = deep + "\\" + std::string(100, 'c') + ".txt";
    ASSERT_GT(tooLong.size(), 260u);
    // The folders up to MAX_PATH less 12 are made, the rest refused; the copy fails with 206.
    EXPECT_FALSE(FileOp::MakePath(tooLong, false));
    EXPECT_TRUE(exists(deep));
    EXPECT_FALSE(FileOp::Copy(source, tooLong, 0));
    EXPECT_EQ(206u, FileOp::GetLastError());
    EXPECT_TRUE(log.Contains("CopyFile failed-ErrCode:206"));
    EXPECT_FALSE(exists(tooLong));
    // What fits is copied.
    EXPECT_TRUE(FileOp::MakePath(deep, false));
    EXPECT_TRUE(FileOp::Copy(source, deep + "\\fits.txt", 0));
    EXPECT_EQ("short", read(deep + "\\fits.txt"));
}

TEST_F(FileOpTest, VersionsAreTheFileVersionTextOfTheFirstTranslation) {
    EXPECT_EQ("5.1.2600.5512 (xpsp.080413-2111)",
              FileOp::GetFileVersion(versioned("a.dll", "5.1.2600.5512 (xpsp.080413-2111)")));
    EXPECT_EQ("", FileOp::GetFileVersion(write("plain.dll", "no resource here")));
    EXPECT_TRUE(log.Contains("GetFileVersionInfoSize is zero "));
    EXPECT_EQ("", FileOp::GetFileVersion(path("missing.dll")));

    // The table's name is the translation with its halves swapped: language, then code page.
    peimage::VersionSpec german;
    german.translations = {{0x0407, 0x04E4}};
    german.tables.push_back({"040704e4", {{"FileVersion", "2.1"}}});
    EXPECT_EQ("2.1", FileOp::GetFileVersion(write("de.dll", peimage::PeImage(german))));

    // A translation without its string table.
    peimage::VersionSpec orphan = german;
    orphan.tables[0].key = "040904b0";
    EXPECT_EQ("", FileOp::GetFileVersion(write("orphan.dll", peimage::PeImage(orphan))));
    EXPECT_TRUE(log.Contains("FAILED TO READ VERSION from Secion: \\StringFileInfo\\040704e4"
                             "\\FileVersion"));
    peimage::VersionSpec untranslated = peimage::WithFileVersion("3.0");
    untranslated.translations.clear();
    EXPECT_EQ("", FileOp::GetFileVersion(write("none.dll", peimage::PeImage(untranslated))));
    EXPECT_TRUE(log.Contains("FAILED TO VerQueryValue from File: " + path("none.dll")));
}

TEST_F(FileOpTest, VersionsCompareNumberByNumberFromTheLeft) {
    struct Case {
        const char* source;
        const char* dest;
        int expected;
    };
    const Case cases[] = {
            {"2.0", "1.9", 1},        {"1.10", "1.9", 1},    {"1.0", "1.0.1", -1},
            {"1.0.1", "1.0", 1},      {"4.0.0", "4.0.0", 0}, {"6.1 (win7)", "6.1", 0},
            {"1.2.3.4", "1.2.4", -1},
    };
    for (const Case& c : cases) {
        std::string source = versioned("s.dll", c.source);
        std::string dest = versioned("d.dll", c.dest);
        EXPECT_EQ(c.expected, FileOp::IsNewerVersion(source, dest)) << c.source << " " << c.dest;
    }
    std::string plain = write("plain.txt", "text");
    EXPECT_EQ(-1, FileOp::IsNewerVersion(plain, versioned("v.dll", "1.0")));
    EXPECT_EQ(1, FileOp::IsNewerVersion(path("v.dll"), plain));
    EXPECT_EQ(0, FileOp::IsNewerVersion(plain, write("plain2.txt", "other")));
    EXPECT_TRUE(log.Contains("Source version< Dest Version"));
    EXPECT_TRUE(log.Contains("Source version==Dest Version"));
}

TEST_F(FileOpTest, TimesCompareTheLastWriteAndAMissingFileIsEqual) {
    std::string older = write("older.txt", "1");
    std::string newer = write("newer.txt", "2");
    age(older, 3);
    EXPECT_EQ(-1, FileOp::IsNewerTime(older, newer));
    EXPECT_EQ(1, FileOp::IsNewerTime(newer, older));
    EXPECT_EQ(0, FileOp::IsNewerTime(newer, newer));
    EXPECT_EQ(0, FileOp::IsNewerTime(newer, path("missing.txt")));
    EXPECT_TRUE(log.Contains("could not get file time for " + path("missing.txt")));
}

TEST_F(FileOpTest, AnyDifferenceOfVersionOrTimeMakesFilesDifferent) {
    std::string source = versioned("src.dll", "1.0");
    std::string dest = versioned("dst.dll", "2.0");
    EXPECT_TRUE(FileOp::areFilesDifferent(source, dest, 0));
    EXPECT_TRUE(FileOp::areFilesDifferent(source, path("none.dll"), 3));
    // An older source is different too, and would overwrite.
    EXPECT_TRUE(FileOp::areFilesDifferent(source, dest, 1));
    // Same version: times do not count under flag 1 alone.
    std::string same = versioned("same.dll", "1.0", "other bytes");
    age(same, 10);
    EXPECT_FALSE(FileOp::areFilesDifferent(source, same, 1));
    EXPECT_TRUE(FileOp::areFilesDifferent(source, same, 3));
    EXPECT_TRUE(FileOp::areFilesDifferent(source, same, 2));
}

TEST_F(FileOpTest, CopyReplacesOnAnyDifferenceAndSkipsEqualVersions) {
    std::string source = versioned("src.dll", "1.0");
    std::string dest = versioned("dst.dll", "2.0");
    ASSERT_TRUE(FileOp::Copy(source, dest, 3));
    EXPECT_EQ("1.0", FileOp::GetFileVersion(dest));

    std::string same = versioned("same.dll", "1.0", "kept");
    std::string before = read(same);
    EXPECT_TRUE(FileOp::Copy(source, same, 1));
    EXPECT_EQ(before, read(same));

    EXPECT_FALSE(FileOp::Copy(path("missing.dll"), path("x.dll"), 0));
    EXPECT_TRUE(log.Contains("CopyFile failed-ErrCode:2"));
    EXPECT_EQ(2u, FileOp::GetLastError());
}

TEST_F(FileOpTest, ALockedDestinationIsReplacedAtTheNextStart) {
    std::string source = write("new.txt", "new");
    std::string dest = write("busy.txt", "old");
    simstate::LockFile(machine, dest, "lock");

    ASSERT_TRUE(FileOp::Copy(source, dest, 0));
    std::vector<std::string> pending = simstate::PendingOperations();
    ASSERT_EQ(2u, pending.size());
    EXPECT_EQ("new", read(pending[0]));
    EXPECT_EQ(PathObject(dest).GetDirectory(), PathObject(pending[0]).GetDirectory());
    EXPECT_EQ("!" + dest, pending[1]);
    EXPECT_EQ(1, RebootAlert::Get());
    simstate::UnlockAll(machine);
    EXPECT_EQ("old", read(dest));
    EXPECT_TRUE(log.Contains("Destination file " + dest + " is in use.  Trying to rename it..."));
    EXPECT_TRUE(log.Contains("Reboot Required: To replace locked file."));
}

TEST_F(FileOpTest, ASharingViolationIsAFileInUseOnlyWithFlag4) {
    std::string source = write("new.txt", "new");
    std::string dest = write("open.txt", "old");
    simstate::LockFile(machine, dest, "sharing");
    EXPECT_FALSE(FileOp::Copy(source, dest, 0));
    EXPECT_TRUE(log.Contains("CopyFile failed-ErrCode:32"));
    EXPECT_TRUE(simstate::PendingOperations().empty());
    EXPECT_TRUE(FileOp::Copy(source, dest, 4));
    EXPECT_EQ(2u, simstate::PendingOperations().size());
}

TEST_F(FileOpTest, ARunningProgramIsRenamedAsideAndItsOldFileDeletedAtTheStart) {
    std::string source = write("new.exe", "new");
    std::string dest = write("app.exe", "old");
    simstate::LockFile(machine, dest, "image");
    ASSERT_TRUE(FileOp::Copy(source, dest, 4));
    EXPECT_EQ("new", read(dest));
    // The renamed program cannot be deleted while it runs: it goes at the next start.
    std::vector<std::string> pending = simstate::PendingOperations();
    ASSERT_EQ(2u, pending.size());
    EXPECT_EQ("old", read(pending[0]));
    EXPECT_EQ("", pending[1]);
    EXPECT_EQ(1, RebootAlert::Get());
}

TEST_F(FileOpTest, AFailedSecondCopyPutsTheOldFileBack) {
    // A source held by another program fails with 32 too, which flag 4 takes for the target.
    std::string source = write("held.txt", "new");
    std::string dest = write("dest.txt", "old");
    simstate::LockFile(machine, source, "sharing");
    EXPECT_FALSE(FileOp::Copy(source, dest, 4));
    EXPECT_TRUE(log.Contains("second CopyFile try failed with code 32"));
    EXPECT_EQ("old", read(dest));
    std::vector<os::FindData> found;
    EXPECT_EQ(os::error::FileNotFound, os::FindFiles(path("LZ*.tmp"), found));
}

TEST_F(FileOpTest, Flag8GivesUpOnAFileInUseThatIsTheSame) {
    std::string source = versioned("src.dll", "1.0");
    std::string dest = path("dst.dll");
    ASSERT_EQ(os::error::Success, os::CopyFile(source, dest, false));
    // A library in use can be read, though not written.
    simstate::LockFile(machine, dest, "image");
    EXPECT_FALSE(FileOp::Copy(source, dest, 12));
    EXPECT_TRUE(simstate::PendingOperations().empty());
    EXPECT_FALSE(log.Contains("is in use"));
}

TEST_F(FileOpTest, CopyOnRebootLeavesTheTargetAloneUntilTheStart) {
    std::string source = write("new.txt", "new");
    std::string dest = write("cur.txt", "old");
    age(dest, 2);
    ASSERT_TRUE(FileOp::CopyOnReboot(source, dest, 3));
    EXPECT_EQ("old", read(dest));
    std::vector<std::string> pending = simstate::PendingOperations();
    ASSERT_EQ(2u, pending.size());
    EXPECT_EQ("new", read(pending[0]));
    EXPECT_EQ("!" + dest, pending[1]);
    // Nothing to do for a target that is the same.
    std::string same = path("same.txt");
    ASSERT_EQ(os::error::Success, os::CopyFile(source, same, false));
    EXPECT_TRUE(FileOp::CopyOnReboot(source, same, 3));
    EXPECT_EQ(2u, simstate::PendingOperations().size());
    EXPECT_FALSE(FileOp::CopyOnReboot(path("missing.txt"), dest, 0));
    EXPECT_TRUE(log.Contains("CopyFile (" + path("missing.txt") + ") Failed-ErrCode:2"));
}

TEST_F(FileOpTest, DeletingFiles) {
    std::string readOnly = write("ro.txt", "x");
    ASSERT_EQ(os::error::Success, os::SetFileAttributes(readOnly, os::attr::ReadOnly));
    EXPECT_TRUE(FileOp::deleteFile(readOnly, 0));
    EXPECT_FALSE(exists(readOnly));

    EXPECT_TRUE(FileOp::deleteFile(path("missing.txt"), 0));
    EXPECT_TRUE(simstate::PendingOperations().empty());
    EXPECT_EQ(0, RebootAlert::Get());

    // Flag 1 sends even a missing file to the next start; flag 2 does not try now.
    EXPECT_TRUE(FileOp::deleteFile(path("missing.txt"), 1));
    std::string kept = write("kept.txt", "x");
    EXPECT_TRUE(FileOp::deleteFile(kept, 2));
    EXPECT_TRUE(exists(kept));
    std::vector<std::string> pending = simstate::PendingOperations();
    ASSERT_EQ(4u, pending.size());
    EXPECT_EQ(path("missing.txt"), pending[0]);
    EXPECT_EQ(kept, pending[2]);
    EXPECT_EQ("", pending[3]);
}

TEST_F(FileOpTest, ZombieModeKeepsWhatCannotGoForLater) {
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("z")));
    std::string busy = write("z\\busy.exe", "x");
    simstate::LockFile(machine, busy, "image");
    FileOp::SetZombieMode(true);
    EXPECT_TRUE(FileOp::Remove(busy, 0));
    EXPECT_TRUE(FileOp::Remove(path("z"), 0));
    EXPECT_TRUE(log.Contains("Adding " + busy + " to zombi list"));
    EXPECT_TRUE(log.Contains("adding " + path("z") + " to zombi list (it's not empty)"));
    ASSERT_EQ(2u, FileOp::GetZombieList().Size());
    EXPECT_TRUE(simstate::PendingOperations().empty());

    // Still held: it stays on the list while zombie mode is kept.
    EXPECT_FALSE(FileOp::RemoveZombieFiles(true));
    EXPECT_EQ(2u, FileOp::GetZombieList().Size());

    // The program ended: the file goes first, then its folder.
    simstate::UnlockAll(machine);
    EXPECT_TRUE(FileOp::RemoveZombieFiles(false));
    EXPECT_FALSE(exists(busy));
    EXPECT_FALSE(exists(path("z")));
    EXPECT_TRUE(FileOp::IsZombieModeEnabled());
    EXPECT_TRUE(log.Contains("FileOp::RemoveZombiFiles(): done."));
}

TEST_F(FileOpTest, DeletingFolders) {
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("empty")));
    EXPECT_TRUE(FileOp::deleteDir(path("empty")));
    EXPECT_FALSE(exists(path("empty")));

    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("full")));
    write("full\\f.txt", "x");
    EXPECT_TRUE(FileOp::deleteDir(path("full")));
    EXPECT_TRUE(log.Contains("FileOp::deleteDir(): " + path("full") + " was not empty"));
    std::vector<std::string> pending = simstate::PendingOperations();
    ASSERT_EQ(2u, pending.size());
    EXPECT_EQ(path("full"), pending[0].substr(0, pending[0].find_last_not_of('\\') + 1));

    EXPECT_TRUE(FileOp::Remove(path("nothing"), 0));
    EXPECT_TRUE(log.Contains("nothin' from nothin' leaves nothin'!"));
}

TEST_F(FileOpTest, RemoveEmptyDirKeepsFoldersThatHoldFiles) {
    for (const char* folder : {"t", "t\\a", "t\\a\\deep", "t\\b", "t\\b\\c"}) {
        ASSERT_EQ(os::error::Success, os::CreateDirectory(path(folder)));
    }
    write("t\\b\\c\\file.txt", "x");
    EXPECT_FALSE(FileOp::RemoveEmptyDir(path("t"), true));
    EXPECT_FALSE(exists(path("t\\a")));
    EXPECT_TRUE(exists(path("t\\b\\c\\file.txt")));
    EXPECT_TRUE(log.Contains("Remove not called as fileExists=true,for Directory: " + path("t")));

    ASSERT_EQ(os::error::Success, os::DeleteFile(path("t\\b\\c\\file.txt")));
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("t\\a")));
    // Without recursion a subfolder is content.
    EXPECT_FALSE(FileOp::RemoveEmptyDir(path("t"), false));
    EXPECT_TRUE(FileOp::RemoveEmptyDir(path("t"), true));
    EXPECT_FALSE(exists(path("t")));
    EXPECT_FALSE(FileOp::RemoveEmptyDir(write("f.txt", "x"), true));
    EXPECT_TRUE(log.Contains("Parameter must be a directory!  Passed: " + path("f.txt")));
}

TEST_F(FileOpTest, WipeOutDirectoryTakesEverything) {
    for (const char* folder : {"w", "w\\sub", "w\\sub\\deeper"}) {
        ASSERT_EQ(os::error::Success, os::CreateDirectory(path(folder)));
    }
    write("w\\a.txt", "a");
    std::string readOnly = write("w\\sub\\deeper\\ro.txt", "r");
    ASSERT_EQ(os::error::Success, os::SetFileAttributes(readOnly, os::attr::ReadOnly));
    EXPECT_TRUE(FileOp::WipeOutDirectory(path("w")));
    EXPECT_FALSE(exists(path("w")));
    EXPECT_FALSE(FileOp::WipeOutDirectory(path("w")));
    EXPECT_TRUE(log.Contains("the parameter must be a directory!  Passed: " + path("w")));
}

TEST_F(FileOpTest, PathsAndTemporaryNames) {
    std::string temp = FileOp::GetTempFileName(path("sub\\..\\target.dll"));
    ASSERT_FALSE(temp.empty());
    EXPECT_EQ(0, PathObject(temp).GetName().Find("LZ"));
    EXPECT_TRUE(exists(temp));
    EXPECT_EQ("", FileOp::GetTempFileName(path("no-folder\\x.dll")));
    EXPECT_TRUE(log.Contains("GetTempFileName in directory " + path("no-folder") + " failed"));

    EXPECT_FALSE(FileOp::createPath(path("a,b\\c\\file.txt"), false));
    EXPECT_FALSE(exists(path("a,b")));
    EXPECT_TRUE(log.Contains("could not create path " + path("a,b\\c\\file.txt") + "."));
    EXPECT_TRUE(FileOp::createPath(path("a,b\\c\\file.txt"), true));
    EXPECT_TRUE(FileOp::IsDirectory(path("a,b\\c")));
    EXPECT_FALSE(exists(path("a,b\\c\\file.txt")));
}

TEST_F(FileOpTest, RunningProgramsAreFoundAndEnded) {
    std::uint32_t explorer = FileOp::GetRunningProcessId("EXPLORER.EXE");
    ASSERT_NE(0u, explorer);
    EXPECT_TRUE(log.Contains("Return Process:" + std::to_string(explorer) + " for EXPLORER.EXE"));
    EXPECT_EQ(0u, FileOp::GetRunningProcessId("notrunning.exe"));
    EXPECT_TRUE(FileOp::TerminateProcess(explorer));
    EXPECT_EQ(0u, FileOp::GetRunningProcessId("explorer.exe"));
    EXPECT_FALSE(FileOp::TerminateProcess(explorer));
    EXPECT_TRUE(log.Contains("TerminateProcess failed,Win32ErrCode: 87 "));
}

TEST_F(FileOpWin98Test, FilesAreReplacedThroughWinInitAndFoldersThroughABatchFile) {
    std::string source = write("new.txt", "new");
    std::string dest = write("busy.txt", "old");
    simstate::LockFile(machine, dest, "lock");
    ASSERT_TRUE(FileOp::Copy(source, dest, 0));
    ASSERT_EQ(1u, FileOp::GetWinInitLines().size());
    // Short names on both sides, the target first.
    std::string line = FileOp::GetWinInitLines()[0];
    std::string shortDest;
    ASSERT_EQ(os::error::Success, os::GetShortPathName(dest, shortDest));
    ASSERT_EQ(shortDest + "=", line.substr(0, shortDest.size() + 1));
    std::string temp = line.substr(shortDest.size() + 1);
    EXPECT_EQ("new", read(temp));
    EXPECT_EQ(std::string::npos, temp.find_first_of("abcdefghijklmnopqrstuvwxyz")) << temp;
    EXPECT_TRUE(log.Contains("Reboot Required: To replace file on reboot. (wininit.ini change)"));
    std::string gone = write("gone.txt", "x");
    EXPECT_TRUE(FileOp::deleteFile(gone, 2));
    std::string shortGone;
    ASSERT_EQ(os::error::Success, os::GetShortPathName(gone, shortGone));
    EXPECT_EQ("NUL=" + shortGone, FileOp::GetWinInitLines()[1]);

    // An existing WININIT.INI keeps its other sections; the lines go at the head of [Rename].
    std::string wininit = "C:\\WINDOWS\\WININIT.INI";
    ASSERT_TRUE(TestMachine::WriteFile(wininit, "[Other]\r\nkey=value\r\n[Rename]\r\n"
                                                "NUL=C:\\OLD.TMP\r\n"));
    ASSERT_TRUE(FileOp::CommitWinInitFile());
    EXPECT_TRUE(FileOp::GetWinInitLines().empty());
    EXPECT_EQ("[Other]\r\nkey=value\r\n[Rename]\r\n" + line + "\r\nNUL=" + shortGone +
                      "\r\nNUL=C:\\OLD.TMP\r\n",
              read(wininit));

    // Folders: a batch file run once at the start, which deletes itself last.
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("dir1")));
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("dir2")));
    write("dir2\\f.txt", "x");
    EXPECT_TRUE(FileOp::deleteDir(path("dir1")));
    EXPECT_FALSE(exists(path("dir1")));
    EXPECT_TRUE(FileOp::deleteDir(path("dir2")));
    EXPECT_TRUE(FileOp::addToRebootBatFile(path("dir2\\f.txt")));
    std::string batch = "C:\\WINDOWS\\TEMP\\unsttmp0.bat";
    EXPECT_EQ("rmdir \"" + path("dir2") + "\"\r\ndel \"" + path("dir2\\f.txt") + "\"\r\ndel \"" +
                      batch + "\"\r\n",
              read(batch));
    std::string shortBatch;
    ASSERT_EQ(os::error::Success, os::GetShortPathName(batch, shortBatch));
    Registry registry;
    EXPECT_EQ("C:\\WINDOWS\\command.com " + shortBatch,
              registry.ReadStringValue(
                      "HKLM", "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunOnce", "unsttmp0"));
}

TEST_F(FileOpWin98Test, WithoutPsapiNoProgramIsFound) {
    EXPECT_EQ(0u, FileOp::GetRunningProcessId("explorer.exe"));
    EXPECT_TRUE(log.Contains("Could not load PSPAPI.DLL"));
}

} // namespace
