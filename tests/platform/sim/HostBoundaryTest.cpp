// The simulated machine keeps to its own folder: links of the host are not followed out of
// their drive, relative paths resolve on the machine's drives, Z: may be confined, what the host
// holds that is no file is refused, and a folder's names and short names are indexed and kept.
#include "os/Files.h"
#include "os/Process.h"
#include "sim/PathMapper.h"
#include "sim/SimMachine.h"
#include "support/TestMachine.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace os;

class HostBoundary : public ::testing::Test {
protected:
    TestMachine machine{"xp"};
    fs::path host = fs::path(machine.HostDir()).parent_path() / "host";
    fs::path driveC = fs::path(machine.HostDir()) / "drive_c";

    void SetUp() override {
        fs::create_directories(host / "keep");
        std::ofstream(host / "keep" / "precious.txt") << "precious";
        std::ofstream(host / "file.txt") << "host file";
    }

    static std::string HostText(const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }

    // Removes a folder through the seam as a recursive delete does: files, then sub folders.
    static void Wipe(const std::string& path) {
        std::vector<FindData> entries;
        if (FindFiles(path + "\\*", entries) == error::Success) {
            for (const FindData& entry : entries) {
                if (entry.fileName == "." || entry.fileName == "..") {
                    continue;
                }
                std::string child = path + "\\" + entry.fileName;
                if ((entry.attributes & attr::Directory) != 0) {
                    Wipe(child);
                } else {
                    DeleteFile(child);
                }
            }
        }
        RemoveDirectory(path);
    }
};

TEST_F(HostBoundary, ALinkToAHostFolderIsRemovedAsALinkAndNeverEntered) {
    fs::create_directories(driveC / "Victim");
    std::ofstream(driveC / "Victim" / "own.txt") << "own";
    fs::create_directory_symlink(host / "keep", driveC / "Victim" / "outside");
    fs::create_symlink(host / "file.txt", driveC / "Victim" / "outside.txt");

    std::uint32_t attributes = 0;
    ASSERT_EQ(error::Success, GetFileAttributes("C:\\Victim\\outside", attributes));
    EXPECT_EQ(attr::ReparsePoint | attr::Directory, attributes);
    std::vector<FindData> found;
    EXPECT_EQ(sim::kLinkLeavesDrive, FindFiles("C:\\Victim\\outside\\*", found));
    EXPECT_EQ(sim::kLinkLeavesDrive, DeleteFile("C:\\Victim\\outside\\precious.txt"));
    EXPECT_EQ(sim::kLinkLeavesDrive,
              CopyFile("C:\\Victim\\own.txt", "C:\\Victim\\outside.txt", false));
    std::FILE* stream = nullptr;
    EXPECT_EQ(sim::kLinkLeavesDrive,
              fsopen("C:\\Victim\\outside.txt", "wb", Share::DenyNone, stream));
    EXPECT_EQ(sim::kLinkLeavesDrive, CopyFile("C:\\Victim\\outside.txt", "C:\\x.txt", false));

    auto start = std::chrono::steady_clock::now();
    Wipe("C:\\Victim");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_FALSE(fs::exists(driveC / "Victim"));
    EXPECT_EQ("precious", HostText(host / "keep" / "precious.txt"));
    EXPECT_EQ("host file", HostText(host / "file.txt"));
}

TEST_F(HostBoundary, ALinkThatStaysOnItsDriveIsFollowed) {
    fs::create_directories(driveC / "Real");
    std::ofstream(driveC / "Real" / "data.txt") << "data";
    fs::create_directory_symlink(driveC / "Real", driveC / "Alias");
    EXPECT_EQ("data", TestMachine::ReadFile("C:\\alias\\DATA.TXT"));
    EXPECT_TRUE(TestMachine::WriteFile("C:\\Alias\\new.txt", "new"));
    EXPECT_EQ("new", HostText(driveC / "Real" / "new.txt"));
    // Removing the link leaves the folder it leads to.
    EXPECT_EQ(error::Success, RemoveDirectory("C:\\Alias"));
    EXPECT_TRUE(fs::exists(driveC / "Real" / "data.txt"));
}

TEST_F(HostBoundary, WhatIsNoFileIsRefusedInsteadOfBlocking) {
    ASSERT_EQ(0, ::mkfifo((driveC / "pipe.isf").c_str(), 0644));
    std::FILE* stream = nullptr;
    EXPECT_EQ(sim::kNotAFile, fsopen("C:\\pipe.isf", "rb", Share::DenyNone, stream));
    EXPECT_EQ(sim::kNotAFile, CopyFile("C:\\pipe.isf", "C:\\copy.isf", false));
    std::string why;
    sim::SimMachine* current = sim::SimMachine::Current(why);
    ASSERT_NE(nullptr, current);
    std::string bytes;
    EXPECT_EQ(sim::kNotAFile, current->ReadFile("C:\\pipe.isf", bytes));
    EXPECT_EQ(error::Success, DeleteFile("C:\\pipe.isf"));
}

TEST_F(HostBoundary, RelativePathsStayOnTheMachineWhateverTheHostsCurrentFolder) {
    fs::path saved = fs::current_path();
    fs::current_path(host);
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
    std::string current;
    ASSERT_EQ(error::Success, GetCurrentDirectory(current));
    EXPECT_EQ("C:\\", current);
    EXPECT_TRUE(TestMachine::WriteFile("bare.dll", "x"));
    EXPECT_EQ(error::Success, CreateDirectory("$UNDEFINED$"));
    EXPECT_TRUE(TestMachine::WriteFile("$UNDEFINED$\\file.dll", "x"));
    fs::current_path(saved);
    EXPECT_TRUE(fs::exists(driveC / "bare.dll"));
    EXPECT_TRUE(fs::exists(driveC / "$UNDEFINED$" / "file.dll"));
    EXPECT_FALSE(fs::exists(host / "bare.dll"));
    EXPECT_FALSE(fs::exists(host / "$UNDEFINED$"));
}

TEST_F(HostBoundary, ZCanBeConfinedToAFolder) {
    std::ofstream(fs::path(machine.HostDir()) / "machine.ini", std::ios::app)
            << "\n[Drives]\nZ=" << host.string() << "\n";
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
    EXPECT_EQ("host file", TestMachine::ReadFile("Z:\\file.txt"));
    EXPECT_FALSE(TestMachine::Exists("Z:\\etc\\passwd"));
    EXPECT_EQ(error::PathNotFound, CopyFile("Z:\\..\\..\\etc\\passwd", "C:\\p", false));
    sim::SimMachine* current = sim::SimMachine::Current(why);
    ASSERT_NE(nullptr, current);
    EXPECT_EQ("Z:\\keep\\precious.txt",
              current->HostToMachine((host / "keep" / "precious.txt").string()).value_or(""));
    EXPECT_FALSE(current->HostToMachine("/etc/passwd").has_value());
}

TEST_F(HostBoundary, ShortNamesAreKeptOnceGiven) {
    // Two long names of one stem: the first keeps ~1 when a second, sorting before it, comes.
    ASSERT_TRUE(TestMachine::WriteFile("C:\\Program Zeta Files.txt", "zeta"));
    std::string first;
    ASSERT_EQ(error::Success, GetShortPathName("C:\\Program Zeta Files.txt", first));
    EXPECT_EQ("C:\\PROGRA~1.TXT", first);
    ASSERT_TRUE(TestMachine::WriteFile("C:\\Program Alpha Files.txt", "alpha"));
    std::string second;
    ASSERT_EQ(error::Success, GetShortPathName("C:\\Program Alpha Files.txt", second));
    EXPECT_EQ("C:\\PROGRA~2.TXT", second);
    // A new reading of the machine (another process) finds the same names.
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
    EXPECT_EQ("zeta", TestMachine::ReadFile("C:\\PROGRA~1.TXT"));
    EXPECT_EQ("alpha", TestMachine::ReadFile("C:\\progra~2.txt"));
    // A renamed file takes a new short name from its new long name.
    ASSERT_EQ(error::Success, MoveFile("C:\\Program Zeta Files.txt", "C:\\Another Name.txt"));
    std::string renamed;
    ASSERT_EQ(error::Success, GetShortPathName("C:\\Another Name.txt", renamed));
    EXPECT_EQ("C:\\ANOTHE~1.TXT", renamed);
    EXPECT_FALSE(TestMachine::Exists("C:\\PROGRA~1.TXT"));
}

TEST_F(HostBoundary, LookupsInALargeFolderDoNotReadItEachTime) {
    fs::path big = driveC / "Big";
    fs::create_directories(big);
    for (int i = 0; i < 2000; ++i) {
        std::ofstream(big / ("entry number " + std::to_string(i) + ".dat"));
    }
    auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 3000; ++i) {
        std::uint32_t attributes = 0;
        GetFileAttributes("C:\\BIG\\missing " + std::to_string(i) + ".dll", attributes);
        GetFileAttributes("C:\\Big\\ENTRY NUMBER " + std::to_string(i % 2000) + ".DAT", attributes);
    }
    auto spent = std::chrono::steady_clock::now() - start;
    EXPECT_LT(spent, std::chrono::milliseconds(1500))
            << std::chrono::duration_cast<std::chrono::milliseconds>(spent).count() << " ms";
    // A change made from outside is seen.
    std::ofstream(big / "Outside.txt") << "x";
    EXPECT_TRUE(TestMachine::Exists("C:\\Big\\OUTSIDE.TXT"));
}

} // namespace
