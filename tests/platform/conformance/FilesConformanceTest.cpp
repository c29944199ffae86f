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

} // namespace
