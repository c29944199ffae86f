// Archives made by the zip tool (and, for names that tool will not store, by Python's zipfile)
// in the simulated machine's folder, read back through the engine's ZIP reader.
#include "system/Zip.h"

#include "os/Files.h"
#include "os/Time.h"
#include "support/LogCapture.h"
#include "support/TestMachine.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class ZipTest : public ::testing::Test {
protected:
    TestMachine machine;
    LogCapture log{machine.Path("debug.log")};
    // The scratch folder on the host: C:\<scratch> below drive_c.
    fs::path host = fs::path(machine.HostDir()) / "drive_c" / machine.Scratch().substr(3);

    void hostFile(const std::string& name, const std::string& bytes) {
        fs::create_directories((host / name).parent_path());
        std::ofstream(host / name, std::ios::binary) << bytes;
    }
    // Runs a shell command in the scratch folder; a failed command fails the test.
    void shell(const std::string& command) {
        std::string line = "cd '" + host.string() + "' && " + command + " >/dev/null";
        ASSERT_EQ(0, std::system(line.c_str())) << command;
    }
    // An archive of Python's zipfile with members of any name.
    void python(const std::string& archive, const std::string& members) {
        shell("python3 -c \"import zipfile\nwith zipfile.ZipFile('" + archive +
              "', 'w', zipfile.ZIP_DEFLATED) as z:\n" + members + "\"");
    }
    std::string path(const std::string& name) const { return machine.Path(name); }
    static std::string read(const std::string& file) { return TestMachine::ReadFile(file); }
};

TEST_F(ZipTest, ExtractsEveryMemberWithItsStoredTime) {
    hostFile("src/readme.txt", "read me");
    hostFile("src/bin/tool.exe", std::string(100000, 'x') + "end");
    shell("cd src && touch -t 200501021530.10 readme.txt && zip -q -r -X ../suite.zip readme.txt "
          "bin");
    Zip zip(path("suite.zip"));
    ASSERT_TRUE(zip.doOp(Zip::ListAndExtract, path("out")));
    EXPECT_EQ((CStdStringList{"readme.txt", "bin\\", "bin\\tool.exe"}), zip.GetList());
    EXPECT_EQ("read me", read(path("out\\readme.txt")));
    EXPECT_EQ(std::string(100000, 'x') + "end", read(path("out\\bin\\tool.exe")));

    os::SystemTime stored;
    stored.year = 2005;
    stored.month = 1;
    stored.day = 2;
    stored.hour = 15;
    stored.minute = 30;
    stored.second = 10;
    os::FileTime expected;
    ASSERT_EQ(os::error::Success, os::SystemTimeToFileTime(stored, expected));
    os::FileTimes times;
    ASSERT_EQ(os::error::Success, os::GetFileTime(path("out\\readme.txt"), times));
    EXPECT_EQ(expected.ticks, times.lastWrite.ticks);

    CStdStr first;
    ASSERT_TRUE(Zip::FirstMemberName(path("suite.zip"), first));
    EXPECT_EQ("readme.txt", first);

    Zip listing(path("suite.zip"));
    ASSERT_TRUE(listing.doOp(Zip::List, path("elsewhere")));
    EXPECT_FALSE(TestMachine::Exists(path("elsewhere")));
}

TEST_F(ZipTest, NamesThatLeaveTheTargetAreRefusedAndTheOthersExtracted) {
    python("slip.zip", "  z.writestr('../../evil.dll', 'evil')\n"
                       "  z.writestr('..\\\\\\\\up.dll', 'evil')\n"
                       "  z.writestr('ok/../../out.dll', 'evil')\n"
                       "  z.writestr('/rooted.dll', 'evil')\n"
                       "  z.writestr('C:/drive.dll', 'evil')\n"
                       "  z.writestr('good/fine.txt', 'fine')\n");
    Zip zip(path("slip.zip"));
    EXPECT_FALSE(zip.doOp(Zip::Extract, path("target\\inner")));
    EXPECT_EQ("fine", read(path("target\\inner\\good\\fine.txt")));
    EXPECT_EQ((CStdStringList{path("target\\inner\\good\\fine.txt")}), zip.GetExtracted());
    for (const char* name : {"evil.dll", "up.dll", "out.dll", "rooted.dll", "drive.dll"}) {
        EXPECT_FALSE(TestMachine::Exists(path(name))) << name;
        EXPECT_FALSE(TestMachine::Exists(path(std::string("target\\") + name))) << name;
        EXPECT_FALSE(TestMachine::Exists(std::string("C:\\") + name)) << name;
    }
    EXPECT_TRUE(log.Contains("refused member ..\\..\\evil.dll of " + path("slip.zip") +
                             ": its name leaves the target folder"));

    EXPECT_TRUE(Zip::IsSafeMemberName("a\\b..c\\d"));
    EXPECT_FALSE(Zip::IsSafeMemberName("a\\.. \\d"));
    EXPECT_FALSE(Zip::IsSafeMemberName("a\\...\\d"));
    EXPECT_FALSE(Zip::IsSafeMemberName("file.txt:stream"));
}

TEST_F(ZipTest, BrokenArchivesFailWithoutLeavingFiles) {
    hostFile("a.txt", std::string(5000, 'a'));
    hostFile("b.txt", "second member");
    shell("zip -q -X -0 stored.zip a.txt b.txt && zip -q -X -P secret locked.zip a.txt b.txt");

    // A byte of the first member changed: its CRC fails, the second member is still taken.
    std::string stored = read(path("stored.zip"));
    size_t at = stored.find(std::string(100, 'a'));
    ASSERT_NE(std::string::npos, at);
    stored[at + 50] = 'b';
    ASSERT_TRUE(TestMachine::WriteFile(path("badcrc.zip"), stored));
    Zip badCrc(path("badcrc.zip"));
    EXPECT_FALSE(badCrc.doOp(Zip::Extract, path("crc")));
    EXPECT_FALSE(TestMachine::Exists(path("crc\\a.txt")));
    EXPECT_EQ("second member", read(path("crc\\b.txt")));
    EXPECT_TRUE(log.Contains("could not extract member a.txt of " + path("badcrc.zip")));

    Zip locked(path("locked.zip"));
    EXPECT_FALSE(locked.doOp(Zip::Extract, path("locked")));
    EXPECT_FALSE(TestMachine::Exists(path("locked\\a.txt")));
    EXPECT_TRUE(log.Contains("member a.txt of " + path("locked.zip") + " is encrypted"));

    ASSERT_TRUE(TestMachine::WriteFile(path("cut.zip"), stored.substr(0, stored.size() / 2)));
    Zip cut(path("cut.zip"));
    EXPECT_FALSE(cut.doOp(Zip::ListAndExtract, path("cut")));
    EXPECT_TRUE(log.Contains("could not open zip file " + path("cut.zip")));
    CStdStr name;
    EXPECT_FALSE(Zip::FirstMemberName(path("cut.zip"), name));
    EXPECT_FALSE(Zip(path("absent.zip")).doOp(Zip::List, path("x")));
}

} // namespace
