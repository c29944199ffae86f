// `installcli machine reboot` end to end: a machine left with work for its next start.
#include "CliTest.h"
#include "sim/SimMachine.h"
#include "sim/Text.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using Result = e2e::CliResult;

class MachineRebootTest : public e2e::CliTest {
protected:
    MachineRebootTest() : CliTest("installcli-reboot") {}

    static void put(const fs::path& file, const std::string& text) {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }
    static std::string get(const fs::path& file) {
        std::ifstream in(file, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }

    // Writes the machine's registry with the operations waiting for the start and a RunOnce
    // batch file, as an install leaves them.
    static void prepareRegistry(const std::string& dir,
                                const std::vector<std::pair<std::string, std::string>>& pending,
                                const std::string& runOnceCommand) {
        std::string why;
        auto opened = sim::SimMachine::Open(dir, why);
        ASSERT_TRUE(opened) << why;
        std::u16string list;
        for (const auto& [from, to] : pending) {
            list += sim::Utf8ToUtf16("\\??\\" + from) + u'\0';
            list += (to.empty() ? std::u16string() : sim::Utf8ToUtf16(to)) + u'\0';
        }
        list += u'\0';
        sim::RegValue value;
        value.name = "PendingFileRenameOperations";
        value.type = sim::regtype::MultiString;
        for (char16_t unit : list) {
            value.data.push_back(static_cast<std::uint8_t>(unit & 0xFF));
            value.data.push_back(static_cast<std::uint8_t>(unit >> 8));
        }
        opened->Registry()
                .Create("HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Session Manager")
                ->SetValue(value);
        if (!runOnceCommand.empty()) {
            opened->Registry()
                    .Create("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\"
                            "RunOnce")
                    ->SetValue(sim::RegValue::Text("unsttmp0", runOnceCommand));
        }
        opened->Registry().SetDirty(true);
        opened->Commit();
    }
};

TEST_F(MachineRebootTest, CarriesOutWhatWaitsForTheStartAndEndsThePrograms) {
    std::string dir = machine("xp");
    fs::path c = fs::path(dir) / "drive_c";
    put(c / "Tools" / "app.exe", "old");
    put(c / "Tools" / "LZ1.tmp", "new");
    put(c / "Tools" / "gone.dll", "x");
    put(c / "Temp" / "leftover" / "file.txt", "x");
    put(c / "Temp" / "run.bat",
        "@echo off\r\ndel \"C:\\Temp\\leftover\\file.txt\"\r\nrmdir \"C:\\Temp\\leftover\"\r\n"
        "copy a b\r\ndel \"C:\\Temp\\run.bat\"\r\n");
    put(fs::path(dir) / "faults.ini",
        "[Files]\nC:\\Tools\\app.exe=lock\n[Registry]\nDenyWrite=HKLM\\SOFTWARE\\Policies\n");
    prepareRegistry(
            dir, {{"C:\\Tools\\LZ1.tmp", "!\\??\\C:\\Tools\\app.exe"}, {"C:\\Tools\\gone.dll", ""}},
            "C:\\WINDOWS\\system32\\cmd.exe /c C:\\Temp\\run.bat");
    {
        std::ofstream processes(fs::path(dir) / "processes.ini", std::ios::app);
        processes << "[4000]\nImage=C:\\Tools\\app.exe\nWindow=Tool\n";
    }
    Result before = run("machine show " + dir);
    EXPECT_NE(std::string::npos, before.output.find("At restart: 2 pending file operations"))
            << before.output;
    EXPECT_NE(std::string::npos, before.output.find("Processes:  6")) << before.output;

    Result rebooted = run("machine reboot " + dir);
    ASSERT_EQ(0, rebooted.code) << rebooted.output;
    EXPECT_NE(std::string::npos, rebooted.output.find("replaced C:\\Tools\\app.exe"))
            << rebooted.output;
    EXPECT_NE(std::string::npos, rebooted.output.find("left: copy a b")) << rebooted.output;
    EXPECT_NE(std::string::npos, rebooted.output.find("Restarted " + dir)) << rebooted.output;
    EXPECT_EQ("new", get(c / "Tools" / "app.exe"));
    EXPECT_FALSE(fs::exists(c / "Tools" / "LZ1.tmp"));
    EXPECT_FALSE(fs::exists(c / "Tools" / "gone.dll"));
    EXPECT_FALSE(fs::exists(c / "Temp" / "leftover"));
    EXPECT_FALSE(fs::exists(c / "Temp" / "run.bat"));
    std::string faults = get(fs::path(dir) / "faults.ini");
    EXPECT_EQ(std::string::npos, faults.find("app.exe")) << faults;
    EXPECT_NE(std::string::npos, faults.find("DenyWrite")) << faults;

    Result after = run("machine show " + dir);
    EXPECT_NE(std::string::npos, after.output.find("At restart: 0 pending file operations"))
            << after.output;
    EXPECT_NE(std::string::npos, after.output.find("Processes:  5")) << after.output;
    Result runOnce = run("machine reg " + dir +
                         " HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunOnce");
    EXPECT_EQ(std::string::npos, runOnce.output.find("unsttmp0")) << runOnce.output;
}

TEST_F(MachineRebootTest, Windows9xReadsWinInit) {
    std::string dir = machine("win98");
    fs::path c = fs::path(dir) / "drive_c";
    put(c / "APP" / "OLD.DLL", "old");
    put(c / "APP" / "NEW.TMP", "new");
    put(c / "APP" / "TRASH.TMP", "x");
    put(c / "WINDOWS" / "WININIT.INI",
        "[rename]\r\nC:\\APP\\OLD.DLL=C:\\APP\\NEW.TMP\r\nNUL=C:\\APP\\TRASH.TMP\r\n");
    Result rebooted = run("machine reboot " + dir);
    ASSERT_EQ(0, rebooted.code) << rebooted.output;
    EXPECT_EQ("new", get(c / "APP" / "OLD.DLL"));
    EXPECT_FALSE(fs::exists(c / "APP" / "NEW.TMP"));
    EXPECT_FALSE(fs::exists(c / "APP" / "TRASH.TMP"));
    EXPECT_FALSE(fs::exists(c / "WINDOWS" / "WININIT.INI"));
    EXPECT_TRUE(fs::exists(c / "WINDOWS" / "WININIT.BAK"));
}

TEST_F(MachineRebootTest, AMissingMachineOrFolderIsAnError) {
    Result missing = run("machine reboot " + (root / "nothing").string());
    EXPECT_EQ(1, missing.code);
    EXPECT_NE(std::string::npos, missing.output.find("the folder does not exist"))
            << missing.output;
    Result usage = run("machine reboot");
    EXPECT_EQ(2, usage.code);
}

} // namespace
