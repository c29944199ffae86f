// A restart of the simulated machine carries out what the engine left for the next start.
#include "sim/MachineRestart.h"

#include "os/Files.h"
#include "os/ProcessStatus.h"
#include "sim/MachineCall.h"
#include "sim/MachinePreset.h"
#include "support/SimMachineState.h"
#include "support/TestMachine.h"
#include "system/FileOp.h"
#include "system/Registry.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace {

const char* const kRunOnce = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunOnce";

class MachineRestartTest : public ::testing::Test {
protected:
    explicit MachineRestartTest(const std::string& preset = "xp") : machine(preset) {}

    std::string path(const std::string& name) const { return machine.Path(name); }
    std::string write(const std::string& name, const std::string& bytes) {
        EXPECT_TRUE(TestMachine::WriteFile(path(name), bytes));
        return path(name);
    }
    static std::string read(const std::string& file) { return TestMachine::ReadFile(file); }
    static bool exists(const std::string& file) { return TestMachine::Exists(file); }

    // Restarts the machine from its files, as `installcli machine reboot` does, and makes it
    // the machine of the process again.
    std::vector<std::string> restart() {
        sim::SimMachine::Release();
        std::string why;
        auto opened = sim::SimMachine::Open(machine.HostDir(), why);
        EXPECT_TRUE(opened) << why;
        std::vector<std::string> report;
        EXPECT_TRUE(sim::MachineRestart::Run(*opened, report, why)) << why;
        opened.reset();
        EXPECT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
        return report;
    }
    static bool reported(const std::vector<std::string>& report, const std::string& text) {
        return std::any_of(report.begin(), report.end(), [&text](const std::string& line) {
            return line.find(text) != std::string::npos;
        });
    }

    TestMachine machine;
};

class MachineRestartWin98Test : public MachineRestartTest {
protected:
    MachineRestartWin98Test() : MachineRestartTest("win98") {}
};

TEST_F(MachineRestartTest, PendingOperationsAreCarriedOutInTheirOrder) {
    write("a.txt", "a");
    write("new.txt", "new");
    write("old.txt", "old");
    write("c.txt", "c");
    write("d.txt", "d");
    write("del.txt", "x");
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("empty")));
    using os::movefile::DelayUntilReboot;
    using os::movefile::ReplaceExisting;
    ASSERT_EQ(os::error::Success, os::MoveFileEx(path("a.txt"), path("b.txt"), DelayUntilReboot));
    ASSERT_EQ(os::error::Success,
              os::MoveFileEx(path("new.txt"), path("old.txt"), DelayUntilReboot | ReplaceExisting));
    ASSERT_EQ(os::error::Success, os::MoveFileEx(path("c.txt"), path("d.txt"), DelayUntilReboot));
    ASSERT_EQ(os::error::Success, os::MoveFileEx(path("del.txt"), "", DelayUntilReboot));
    ASSERT_EQ(os::error::Success, os::MoveFileEx(path("empty\\"), "", DelayUntilReboot));
    // b.txt appears only at the start: the move of a.txt waits until then.
    EXPECT_FALSE(exists(path("b.txt")));

    std::vector<std::string> report = restart();
    EXPECT_EQ("a", read(path("b.txt")));
    EXPECT_FALSE(exists(path("a.txt")));
    EXPECT_EQ("new", read(path("old.txt")));
    EXPECT_FALSE(exists(path("new.txt")));
    // Without "replace" an existing target stays, and so does the source.
    EXPECT_EQ("d", read(path("d.txt")));
    EXPECT_EQ("c", read(path("c.txt")));
    EXPECT_TRUE(reported(report, "target exists, left: " + path("c.txt")));
    EXPECT_FALSE(exists(path("del.txt")));
    EXPECT_FALSE(exists(path("empty")));
    EXPECT_TRUE(simstate::PendingOperations().empty());
    // A second start has nothing left to do.
    EXPECT_FALSE(reported(restart(), "renamed"));
}

TEST_F(MachineRestartTest, AFileInUseIsReplacedAndTheProgramsAndLocksEnd) {
    std::string dest = write("app.exe", "old");
    std::string source = write("update.exe", "new");
    simstate::LockFile(machine, dest, "lock");
    {
        std::ofstream faults(machine.HostDir() + "/faults.ini", std::ios::app);
        faults << "[Registry]\n; kept across a restart\nDenyWrite=HKLM\\SOFTWARE\\Policies\n";
    }
    std::string why;
    sim::SimMachine::Activate(machine.HostDir(), why);
    {
        sim::MachineCall call;
        sim::SimProcess process;
        process.image = "C:\\Program Files\\Tool\\tool.exe";
        call->Processes().Add(process);
        call->ProcessesChanged();
    }
    ASSERT_TRUE(FileOp::Copy(source, dest, 0));
    EXPECT_TRUE(FileOp::GetRunningProcessId("tool.exe") != 0);

    std::vector<std::string> report = restart();
    EXPECT_EQ("new", read(dest));
    EXPECT_TRUE(reported(report, "replaced " + dest));
    EXPECT_TRUE(reported(report, "file locks of faults.ini ended: 1"));
    std::string faults;
    {
        std::ifstream in(machine.HostDir() + "/faults.ini");
        faults.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    EXPECT_EQ(std::string::npos, faults.find("[Files]"));
    EXPECT_NE(std::string::npos, faults.find("; kept across a restart"));
    EXPECT_NE(std::string::npos, faults.find("DenyWrite=HKLM\\SOFTWARE\\Policies"));
    // The file is free again: it can be written.
    EXPECT_EQ(os::error::Success, os::CopyFile(source, dest, false));

    EXPECT_EQ(0u, FileOp::GetRunningProcessId("tool.exe"));
    std::vector<std::uint32_t> ids;
    ASSERT_EQ(os::error::Success, os::EnumProcesses(ids));
    sim::MachineCall call;
    EXPECT_EQ(sim::MachinePreset::StartupProcesses(call->Identity()).Processes().size(),
              ids.size());
}

TEST_F(MachineRestartTest, RunOnceProgramsAreLeftAndReported) {
    Registry registry;
    ASSERT_TRUE(registry.WriteValue("HKLM", kRunOnce, "Setup",
                                    RegistryValue::String("C:\\setup.exe /finish")));
    std::vector<std::string> report = restart();
    EXPECT_TRUE(reported(report, "RunOnce \"Setup\" not run (a program): C:\\setup.exe /finish"));
    EXPECT_TRUE(registry.DoesValueExist("HKLM", kRunOnce, "Setup"));
}

TEST_F(MachineRestartWin98Test, WinInitAndTheEnginesBatchFileRunAtTheStart) {
    std::string dest = write("busy.dll", "old");
    std::string source = write("new.dll", "new");
    simstate::LockFile(machine, dest, "lock");
    ASSERT_TRUE(FileOp::Copy(source, dest, 0));
    std::string gone = write("gone.tmp", "x");
    ASSERT_TRUE(FileOp::deleteFile(gone, 2));
    ASSERT_TRUE(FileOp::CommitWinInitFile());

    // Folders go through the batch file: one that will be empty, one that will not.
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("folder")));
    ASSERT_EQ(os::error::Success, os::CreateDirectory(path("kept")));
    std::string inside = write("folder\\inside.txt", "x");
    write("kept\\other.txt", "x");
    ASSERT_TRUE(FileOp::addToRebootBatFile(inside));
    ASSERT_TRUE(FileOp::addToRebootBatFile(path("folder")));
    ASSERT_TRUE(FileOp::addToRebootBatFile(path("kept")));
    Registry registry;
    ASSERT_TRUE(registry.WriteValue("HKLM", kRunOnce, "Other",
                                    RegistryValue::String("C:\\WINDOWS\\OTHER.EXE")));

    std::vector<std::string> report = restart();
    EXPECT_EQ("new", read(dest));
    EXPECT_FALSE(exists(gone));
    EXPECT_TRUE(exists("C:\\WINDOWS\\WININIT.BAK"));
    EXPECT_FALSE(exists("C:\\WINDOWS\\WININIT.INI"));
    EXPECT_FALSE(exists(path("folder")));
    EXPECT_TRUE(exists(path("kept\\other.txt")));
    EXPECT_TRUE(reported(report, "folder not empty, left: " + path("kept")));
    EXPECT_FALSE(exists("C:\\WINDOWS\\TEMP\\unsttmp0.bat"));
    EXPECT_FALSE(registry.DoesValueExist("HKLM", kRunOnce, "unsttmp0"));
    EXPECT_TRUE(registry.DoesValueExist("HKLM", kRunOnce, "Other"));
}

} // namespace
