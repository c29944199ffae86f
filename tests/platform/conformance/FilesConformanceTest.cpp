// The files and folders group of the seam answers as Windows does. These run natively against
// the simulated machine and under Wine against the real API.
#include "os/Files.h"
#include "os/Process.h"
#include "support/TestMachine.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using namespace os;

class FilesConformance : public ::testing::Test {
protected:
    TestMachine machine;

    std::string path(const std::string& name) const { return machine.Path(name); }

    std::vector<std::string> names(const std::string& pattern) const {
        std::vector<FindData> found;
        FindFiles(pattern, found);
        std::vector<std::string> result;
        for (const FindData& entry : found) {
            result.push_back(entry.fileName);
        }
        std::sort(result.begin(), result.end());
        return result;
    }
};

TEST_F(FilesConformance, MissingFileAndMissingFolderGiveDifferentCodes) {
    std::uint32_t attributes = 0;
    EXPECT_EQ(error::FileNotFound, GetFileAttributes(path("nothing.txt"), attributes));
    EXPECT_EQ(error::PathNotFound, GetFileAttributes(path("no-folder\\nothing.txt"), attributes));
}

TEST_F(FilesConformance, NamesCompareWithoutRegardToCase) {
    ASSERT_TRUE(TestMachine::WriteFile(path("MixedCase.TXT"), "data"));
    std::uint32_t attributes = 0;
    EXPECT_EQ(error::Success, GetFileAttributes(path("mixedcase.txt"), attributes));
    EXPECT_EQ(0u, attributes & attr::Directory);
    EXPECT_EQ("data", TestMachine::ReadFile(path("MIXEDCASE.txt")));
}

TEST_F(FilesConformance, CreateAndRemoveDirectory) {
    EXPECT_EQ(error::Success, CreateDirectory(path("sub")));
    EXPECT_EQ(error::AlreadyExists, CreateDirectory(path("sub")));
    EXPECT_EQ(error::PathNotFound, CreateDirectory(path("missing\\sub")));
    ASSERT_TRUE(TestMachine::WriteFile(path("sub\\file.txt"), "x"));
    EXPECT_EQ(error::DirNotEmpty, RemoveDirectory(path("sub")));
    EXPECT_EQ(error::Success, DeleteFile(path("sub\\file.txt")));
    EXPECT_EQ(error::Success, RemoveDirectory(path("sub")));
    EXPECT_EQ(error::FileNotFound, RemoveDirectory(path("sub")));
}

TEST_F(FilesConformance, DeleteRefusesReadOnlyFilesUntilTheAttributeGoes) {
    ASSERT_TRUE(TestMachine::WriteFile(path("locked.txt"), "x"));
    ASSERT_EQ(error::Success, SetFileAttributes(path("locked.txt"), attr::ReadOnly));
    std::uint32_t attributes = 0;
    ASSERT_EQ(error::Success, GetFileAttributes(path("locked.txt"), attributes));
    EXPECT_NE(0u, attributes & attr::ReadOnly);
    EXPECT_EQ(error::AccessDenied, DeleteFile(path("locked.txt")));
    ASSERT_EQ(error::Success, SetFileAttributes(path("locked.txt"), attr::Normal));
    EXPECT_EQ(error::Success, DeleteFile(path("locked.txt")));
    EXPECT_EQ(error::FileNotFound, DeleteFile(path("locked.txt")));
}

TEST_F(FilesConformance, CopyFileFollowsItsFlagAndKeepsTheWriteTime) {
    ASSERT_TRUE(TestMachine::WriteFile(path("a.txt"), "first"));
    ASSERT_TRUE(TestMachine::WriteFile(path("b.txt"), "second"));
    EXPECT_EQ(error::FileNotFound, CopyFile(path("none.txt"), path("c.txt"), false));
    EXPECT_EQ(error::FileExists, CopyFile(path("a.txt"), path("b.txt"), true));
    EXPECT_EQ("second", TestMachine::ReadFile(path("b.txt")));
    EXPECT_EQ(error::Success, CopyFile(path("a.txt"), path("b.txt"), false));
    EXPECT_EQ("first", TestMachine::ReadFile(path("b.txt")));
    EXPECT_EQ(error::PathNotFound, CopyFile(path("a.txt"), path("missing\\b.txt"), false));

    FileTimes times;
    ASSERT_EQ(error::Success, GetFileTime(path("a.txt"), times));
    times.lastWrite.ticks -= 10000000ULL * 3600 * 24 * 30; // a month earlier
    ASSERT_EQ(error::Success, SetFileTime(path("a.txt"), times));
    ASSERT_EQ(error::Success, CopyFile(path("a.txt"), path("c.txt"), false));
    FileTimes copied;
    ASSERT_EQ(error::Success, GetFileTime(path("c.txt"), copied));
    EXPECT_EQ(times.lastWrite.ticks / 10000000, copied.lastWrite.ticks / 10000000);
}

TEST_F(FilesConformance, MoveFileRefusesAnExistingTargetUnlessAskedToReplace) {
    ASSERT_TRUE(TestMachine::WriteFile(path("from.txt"), "new"));
    ASSERT_TRUE(TestMachine::WriteFile(path("to.txt"), "old"));
    EXPECT_EQ(error::AlreadyExists, MoveFile(path("from.txt"), path("to.txt")));
    EXPECT_EQ(error::Success,
              MoveFileEx(path("from.txt"), path("to.txt"), movefile::ReplaceExisting));
    EXPECT_EQ("new", TestMachine::ReadFile(path("to.txt")));
    EXPECT_FALSE(TestMachine::Exists(path("from.txt")));
    EXPECT_EQ(error::FileNotFound, MoveFile(path("from.txt"), path("other.txt")));
}

TEST_F(FilesConformance, FindFilesMatchesPatternsAndListsTheDotEntries) {
    ASSERT_EQ(error::Success, CreateDirectory(path("find")));
    ASSERT_TRUE(TestMachine::WriteFile(path("find\\One.TXT"), "1"));
    ASSERT_TRUE(TestMachine::WriteFile(path("find\\two.txt"), "2"));
    ASSERT_TRUE(TestMachine::WriteFile(path("find\\three.dat"), "3"));
    std::vector<std::string> all = names(path("find\\*"));
    EXPECT_EQ((std::vector<std::string>{".", "..", "One.TXT", "three.dat", "two.txt"}), all);
    EXPECT_EQ((std::vector<std::string>{"One.TXT", "two.txt"}), names(path("find\\*.txt")));
    EXPECT_EQ((std::vector<std::string>{"three.dat"}), names(path("find\\t?ree.*")));
    std::vector<FindData> found;
    EXPECT_EQ(error::FileNotFound, FindFiles(path("find\\*.exe"), found));
    EXPECT_EQ(error::PathNotFound, FindFiles(path("nowhere\\*"), found));
}

TEST_F(FilesConformance, TempFileNamesAreNewEmptyFiles) {
    std::string first;
    std::string second;
    ASSERT_EQ(error::Success, GetTempFileName(machine.Scratch(), "qor", first));
    ASSERT_EQ(error::Success, GetTempFileName(machine.Scratch(), "qor", second));
    EXPECT_NE(first, second);
    EXPECT_TRUE(TestMachine::Exists(first));
    std::uint64_t size = 1;
    ASSERT_EQ(error::Success, GetFileSize(first, size));
    EXPECT_EQ(0u, size);
    EXPECT_EQ(0u, first.rfind(machine.Scratch(), 0));
}

TEST_F(FilesConformance, StreamsOpenOnlyWhereTheFolderExists) {
    std::FILE* stream = nullptr;
    EXPECT_EQ(error::PathNotFound, fsopen(path("missing\\x.txt"), "wb", Share::DenyNone, stream));
    EXPECT_EQ(error::FileNotFound, fsopen(path("x.txt"), "rb", Share::DenyNone, stream));
    ASSERT_EQ(error::Success, fsopen(path("x.txt"), "ab", Share::DenyNone, stream));
    std::fputs("line", stream);
    std::fclose(stream);
    EXPECT_EQ("line", TestMachine::ReadFile(path("x.txt")));
}

TEST_F(FilesConformance, FullPathNamesFollowTheCurrentFolder) {
    std::string saved;
    ASSERT_EQ(error::Success, GetCurrentDirectory(saved));
    ASSERT_EQ(error::Success, SetCurrentDirectory(machine.Scratch()));
    std::string full;
    ASSERT_EQ(error::Success, GetFullPathName("a\\..\\b.txt", full));
    EXPECT_EQ(machine.Path("b.txt"), full);
    EXPECT_EQ(error::FileNotFound, SetCurrentDirectory(path("absent")));
    ASSERT_EQ(error::Success, SetCurrentDirectory(saved));
}

TEST_F(FilesConformance, ShortNamesLeadToTheSameFile) {
    ASSERT_TRUE(TestMachine::WriteFile(path("A Long File Name.text"), "long"));
    std::string shortPath;
    ASSERT_EQ(error::Success, GetShortPathName(path("A Long File Name.text"), shortPath));
    std::string name = shortPath.substr(shortPath.rfind('\\') + 1);
    EXPECT_LE(name.size(), 12u);
    EXPECT_NE(std::string::npos, name.find('~'));
    EXPECT_EQ("long", TestMachine::ReadFile(shortPath));
    EXPECT_EQ(error::FileNotFound, GetShortPathName(path("absent.txt"), shortPath));
}

TEST_F(FilesConformance, ShortNamesOfOneStemStayWithTheirFiles) {
    // Two long names of one stem whose upper and lower case sort apart: each short name leads to
    // its own file, and giving the second its name does not change the first's.
    ASSERT_TRUE(TestMachine::WriteFile(path("abcdefg one.txt"), "one"));
    std::string first;
    ASSERT_EQ(error::Success, GetShortPathName(path("abcdefg one.txt"), first));
    ASSERT_TRUE(TestMachine::WriteFile(path("ABCDEFG Two.txt"), "two"));
    std::string second;
    ASSERT_EQ(error::Success, GetShortPathName(path("ABCDEFG Two.txt"), second));
    std::string again;
    ASSERT_EQ(error::Success, GetShortPathName(path("abcdefg one.txt"), again));
    EXPECT_EQ(first, again);
    EXPECT_NE(first, second);
    EXPECT_EQ("one", TestMachine::ReadFile(first));
    EXPECT_EQ("two", TestMachine::ReadFile(second));
    std::string longPath;
    ASSERT_EQ(error::Success, GetLongPathName(second, longPath));
    EXPECT_EQ(path("ABCDEFG Two.txt"), longPath);
    // The alternate name that a search gives is the same short name.
    std::vector<FindData> found;
    ASSERT_EQ(error::Success, FindFiles(path("*Two.txt"), found));
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ(second.substr(second.rfind('\\') + 1), found[0].alternateFileName);
    // An 8.3 name is its own short name.
    ASSERT_TRUE(TestMachine::WriteFile(path("plain.txt"), "p"));
    std::string plain;
    ASSERT_EQ(error::Success, GetShortPathName(path("plain.txt"), plain));
    EXPECT_EQ("plain.txt", plain.substr(plain.rfind('\\') + 1));
}

// Under Wine, run as root here, the read-only bit is the host's write permission, which root
// does not heed, and a hidden or system file is written over like any other; those answers are
// Windows' and checked on the simulated machine only (see docs/platform-seam.md).
TEST_F(FilesConformance, HiddenAndReadOnlyFilesRefuseToBeWrittenOver) {
    const bool windowsRules = machine.IsSimulated();
    auto refused = [windowsRules](Error answer) {
        return windowsRules ? answer == error::AccessDenied : true;
    };
    std::string source = machine.WriteScratch("source.txt", "new");
    std::string hidden = machine.WriteScratch("hidden.txt", "old");
    std::string readOnly = machine.WriteScratch("readonly.txt", "old");
    std::string system = machine.WriteScratch("system.txt", "old");
    ASSERT_EQ(error::Success, SetFileAttributes(hidden, attr::Hidden));
    ASSERT_EQ(error::Success, SetFileAttributes(readOnly, attr::ReadOnly));
    ASSERT_EQ(error::Success, SetFileAttributes(system, attr::System));
    EXPECT_EQ(error::FileExists, CopyFile(source, hidden, true));
    EXPECT_TRUE(refused(CopyFile(source, hidden, false)));
    EXPECT_TRUE(refused(CopyFile(source, readOnly, false)));
    EXPECT_TRUE(refused(CopyFile(source, system, false)));
    if (windowsRules) {
        EXPECT_EQ("old", TestMachine::ReadFile(hidden));
        EXPECT_EQ("old", TestMachine::ReadFile(readOnly));
    }
    // A copy that is hidden itself may replace a hidden file.
    std::string hiddenSource = machine.WriteScratch("hidden-source.txt", "hidden new");
    ASSERT_EQ(error::Success, SetFileAttributes(hiddenSource, attr::Hidden));
    EXPECT_EQ(error::Success, CopyFile(hiddenSource, hidden, false));
    EXPECT_EQ("hidden new", TestMachine::ReadFile(hidden));
    // Writing anew through the C runtime is refused too; appending is not.
    std::FILE* stream = nullptr;
    Error rewrite = fsopen(system, "wb", Share::DenyNone, stream);
    if (stream != nullptr) {
        std::fclose(stream);
    }
    EXPECT_TRUE(refused(rewrite));
    ASSERT_EQ(error::Success, fsopen(system, "ab", Share::DenyNone, stream));
    std::fclose(stream);
    // A move may replace a system file but not a read-only one; a read-only file is not deleted.
    EXPECT_TRUE(refused(MoveFileEx(source, readOnly, movefile::ReplaceExisting)));
    std::string mover = machine.WriteScratch("mover.txt", "moved");
    EXPECT_EQ(error::Success, MoveFileEx(mover, system, movefile::ReplaceExisting));
    EXPECT_EQ("moved", TestMachine::ReadFile(system));
    if (windowsRules) {
        EXPECT_EQ(error::AccessDenied, DeleteFile(readOnly));
    }
    EXPECT_EQ(error::Success, DeleteFile(hidden));
    SetFileAttributes(readOnly, attr::Normal);
}

TEST_F(FilesConformance, PathsLongerThanMaxPathAreRefused) {
    std::string deep = machine.Scratch();
    std::string name(60, 'd');
    while (deep.size() + name.size() + 1 < 240) {
        deep += "\\" + name.substr(0, std::min<size_t>(name.size(), 240 - deep.size() - 1));
        ASSERT_EQ(error::Success, CreateDirectory(deep)) << deep;
    }
    std::string tooLong = deep + "\\" + std::string(300 - deep.size(), 'x');
    std::uint32_t attributes = 0;
    EXPECT_EQ(206u, GetFileAttributes(tooLong, attributes));
    EXPECT_EQ(206u, CreateDirectory(tooLong));
    // Wine opens, copies to and makes folders of long paths that Windows refuses in the A
    // functions; those are checked on the simulated machine only.
    if (machine.IsSimulated()) {
        EXPECT_FALSE(TestMachine::WriteFile(tooLong, "x"));
        EXPECT_EQ(206u, CopyFile(machine.WriteScratch("short.txt", "s"), tooLong, false));
        // A folder must leave room for an 8.3 name: 248 characters are too many.
        std::string folder = deep + "\\" + std::string(248 - deep.size() - 1, 'f');
        ASSERT_EQ(248u, folder.size());
        EXPECT_EQ(206u, CreateDirectory(folder));
    }
    // A file up to 259 characters is fine.
    std::string longest = deep + "\\" + std::string(259 - deep.size() - 1, 'y');
    ASSERT_EQ(259u, longest.size());
    EXPECT_TRUE(TestMachine::WriteFile(longest, "fits"));
    EXPECT_EQ("fits", TestMachine::ReadFile(longest));
    EXPECT_EQ(error::Success, DeleteFile(longest));
}

TEST_F(FilesConformance, DeviceNamesAreNoFilesInAnyFolder) {
    ASSERT_EQ(error::Success, CreateDirectory(path("dev")));
    for (const char* name : {"nul", "NUL.txt", "nul.tar.gz"}) {
        std::FILE* stream = nullptr;
        ASSERT_EQ(error::Success, fsopen(path("dev\\") + name, "wb", Share::DenyNone, stream))
                << name;
        std::fputs("gone", stream);
        std::fclose(stream);
    }
    for (const char* name : {"con", "AUX", "prn.log", "Com1", "lpt9.txt", "nul"}) {
        // Wine answers CreateDirectory of some device names with success and makes nothing.
        Error made = CreateDirectory(path("dev\\") + name);
        if (machine.IsSimulated()) {
            EXPECT_EQ(error::AccessDenied, made) << name;
        }
        EXPECT_NE(error::Success, DeleteFile(path("dev\\") + name)) << name;
    }
    std::string source = machine.WriteScratch("copied.txt", "data");
    EXPECT_EQ(error::Success, CopyFile(source, path("dev\\nul"), false));
    // Nothing of the above became a file or folder.
    EXPECT_EQ((std::vector<std::string>{".", ".."}), names(path("dev\\*")));
    // COM0 and LPT0, and names that only begin like a device, are ordinary names.
    EXPECT_TRUE(TestMachine::WriteFile(path("dev\\com0.txt"), "x"));
    EXPECT_TRUE(TestMachine::WriteFile(path("dev\\nullable.txt"), "x"));
    EXPECT_EQ((std::vector<std::string>{".", "..", "com0.txt", "nullable.txt"}),
              names(path("dev\\*")));
}

} // namespace
