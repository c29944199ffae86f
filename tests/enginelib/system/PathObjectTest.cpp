#include "system/PathObject.h"
#include "core/SortedList.h"
#include "os/Process.h"
#include "support/TestMachine.h"
#include "system/FileOp.h"

#include <gtest/gtest.h>

namespace {

TEST(PathObject, SplitsIntoFolderAndName) {
    PathObject file("  C:\\Program Files\\Maker\\setup.exe");
    EXPECT_EQ("C:\\Program Files\\Maker", file.GetDirectory());
    EXPECT_EQ("setup.exe", file.GetName());
    EXPECT_TRUE(file.IsFile());
    EXPECT_EQ("setup", file.GetBaseName());
    EXPECT_EQ("exe", file.GetExtension());
    EXPECT_EQ("C:\\Program Files\\Maker\\setup.exe", file.GetFullPath());

    PathObject root("C:\\boot.ini");
    EXPECT_EQ("C:\\", root.GetDirectory());
    EXPECT_EQ("C:\\boot.ini", root.GetFullPath());

    PathObject share("\\\\server\\share\\dir\\file.txt");
    EXPECT_EQ("\\\\server\\share\\dir", share.GetDirectory());
    EXPECT_EQ("\\\\server\\share\\dir\\file.txt", share.GetFullPath());

    PathObject bare("install.log");
    EXPECT_EQ("", bare.GetDirectory());
    EXPECT_EQ("install.log", bare.GetFullPath());
}

TEST(PathObject, FoldersNormaliseTheirSeparators) {
    PathObject path;
    path.SetDirectory("C:/Windows//Temp\\\\");
    EXPECT_EQ("C:\\Windows\\\\Temp", path.GetDirectory());
    EXPECT_TRUE(path.IsDirectory());
    path.SetDirectory("C:\\");
    EXPECT_EQ("C:\\", path.GetDirectory());
    path.AppendDirectory("\\Program Files");
    EXPECT_EQ("C:\\Program Files", path.GetDirectory());
    path.AppendDirectory("Maker\\");
    EXPECT_EQ("C:\\Program Files\\Maker", path.GetDirectory());
    path.GoUp();
    EXPECT_EQ("C:\\Program Files", path.GetDirectory());
    path.GoUp();
    EXPECT_EQ("C:\\", path.GetDirectory());
    path.GoUp();
    EXPECT_EQ("C:\\", path.GetDirectory());
    PathObject share;
    share.SetDirectory("\\\\server\\share");
    share.GoUp();
    EXPECT_EQ("\\\\server\\share", share.GetDirectory());
}

TEST(PathObject, ComparesFoldingCase) {
    EXPECT_TRUE(PathObject("C:\\A\\b.txt") == PathObject("c:\\a\\B.TXT"));
    SortedList<PathObject> list;
    EXPECT_TRUE(list.Add(PathObject("C:\\b\\x")));
    EXPECT_TRUE(list.Add(PathObject("C:\\a\\y")));
    EXPECT_FALSE(list.Add(PathObject("c:\\A\\Y")));
    EXPECT_EQ("C:\\a\\y", list[0].GetFullPath());
}

TEST(PathObject, ExistsWithAndWithoutWildcards) {
    TestMachine machine;
    ASSERT_TRUE(TestMachine::WriteFile(machine.Path("present.txt"), "x"));
    EXPECT_TRUE(PathObject(machine.Path("present.txt")).Exists());
    EXPECT_TRUE(PathObject(machine.Path("PRESENT.TXT")).Exists());
    EXPECT_TRUE(PathObject(machine.Path("*.txt")).Exists());
    EXPECT_FALSE(PathObject(machine.Path("*.exe")).Exists());
    EXPECT_FALSE(PathObject(machine.Path("absent.txt")).Exists());
    EXPECT_FALSE(PathObject("").Exists());
}

TEST(FileOp, MakePathMakesEveryLevelAndRestoresTheCurrentFolder) {
    TestMachine machine;
    std::string before;
    os::GetCurrentDirectory(before);
    CStdStringList created;
    ASSERT_TRUE(FileOp::MakePath(machine.Path("a\\b\\c"), true, &created));
    EXPECT_TRUE(FileOp::IsDirectory(machine.Path("a\\b\\c")));
    EXPECT_EQ((CStdStringList{machine.Path("a"), machine.Path("a\\b"), machine.Path("a\\b\\c")}),
              created);
    std::string after;
    os::GetCurrentDirectory(after);
    EXPECT_EQ(before, after);
    EXPECT_TRUE(FileOp::MakePath(machine.Path("a\\b"), false));
    EXPECT_FALSE(FileOp::MakePath(machine.Path("a,b\\c"), false));
    EXPECT_FALSE(FileOp::IsDirectory(machine.Path("a,b")));
    ASSERT_TRUE(TestMachine::WriteFile(machine.Path("file"), "x"));
    EXPECT_FALSE(FileOp::MakePath(machine.Path("file\\sub"), false));
    EXPECT_NE(0u, FileOp::GetLastError());
    EXPECT_TRUE(FileOp::IsFile(machine.Path("file")));
}

} // namespace
