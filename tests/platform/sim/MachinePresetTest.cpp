#include "sim/MachinePreset.h"
#include "sim/IniText.h"
#include "sim/SimMachine.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace sim;
namespace fs = std::filesystem;

class MachinePresetTest : public ::testing::TestWithParam<std::string> {
protected:
    std::string dir =
            (fs::temp_directory_path() / ("preset-" + std::to_string(::getpid()))).string();
    void TearDown() override { fs::remove_all(dir); }
};

TEST_P(MachinePresetTest, EveryPresetMakesALoadableMachine) {
    std::string why;
    ASSERT_TRUE(MachinePreset::Create(dir + "/m", GetParam(), -1, why)) << why;
    auto machine = SimMachine::Open(dir + "/m", why);
    ASSERT_TRUE(machine) << why;
    const MachineIdentity& id = machine->Identity();
    EXPECT_EQ(GetParam(), id.preset);
    HostLocation windows;
    ASSERT_EQ(0u, machine->Locate(id.windowsDirectory, windows));
    EXPECT_TRUE(windows.isDirectory);
    HostLocation system;
    ASSERT_EQ(0u, machine->Locate(id.SystemDirectory(), system));
    EXPECT_TRUE(system.isDirectory);
    auto temp = machine->Env().Get("TEMP");
    ASSERT_TRUE(temp);
    HostLocation tempFolder;
    ASSERT_EQ(0u, machine->Locate(*temp, tempFolder));
    EXPECT_TRUE(tempFolder.isDirectory);
    const RegKey* current = machine->Registry().Find(
            "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion");
    ASSERT_NE(nullptr, current);
    ASSERT_NE(nullptr, current->Value("ProgramFilesDir"));
    HostLocation programFiles;
    ASSERT_EQ(0u, machine->Locate(current->Value("ProgramFilesDir")->AsText(), programFiles));
    EXPECT_TRUE(programFiles.isDirectory);
    const RegKey* shell = machine->Registry().Find(
            machine->CurrentUserKey() +
            "\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders");
    ASSERT_NE(nullptr, shell);
    ASSERT_NE(nullptr, shell->Value("Desktop"));
    EXPECT_EQ(id.Is64Bit(), GetParam().find("x64") != std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(AllPresets, MachinePresetTest, ::testing::ValuesIn(MachinePreset::Names()),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(MachinePreset, ServicePacksAndLocalesAreChecked) {
    std::string dir = (fs::temp_directory_path() / ("sp-" + std::to_string(::getpid()))).string();
    std::string why;
    EXPECT_FALSE(MachinePreset::Create(dir, "xp", 4, why));
    EXPECT_NE(std::string::npos, why.find("0 to 3"));
    EXPECT_FALSE(MachinePreset::Create(dir, "win12", -1, why));
    MachinePreset::Options japanese;
    japanese.lcid = 0x0411;
    japanese.servicePack = 2;
    ASSERT_TRUE(MachinePreset::Create(dir, "xp", japanese, why)) << why;
    EXPECT_FALSE(MachinePreset::Create(dir, "xp", japanese, why)) << "a folder that is not empty";
    auto machine = SimMachine::Open(dir, why);
    ASSERT_TRUE(machine);
    EXPECT_EQ(932u, machine->Identity().ansiCodePage);
    EXPECT_EQ("Service Pack 2", machine->Identity().csdVersion);
    fs::remove_all(dir);
}

TEST(SimMachine, TheDefaultMachineIsMadeOnFirstUse) {
    std::string home =
            (fs::temp_directory_path() / ("home-" + std::to_string(::getpid()))).string();
    SimMachine::Release();
    ::setenv("XDG_DATA_HOME", home.c_str(), 1);
    ::unsetenv("ENGINE_MACHINE");
    EXPECT_EQ(home + "/installcli/machine", SimMachine::DefaultDirectory());
    std::string why;
    SimMachine* machine = SimMachine::Current(why);
    ASSERT_NE(nullptr, machine) << why;
    EXPECT_EQ("win7-x64", machine->Identity().preset);
    SimMachine::Release();
    ::setenv("ENGINE_MACHINE", (home + "/absent").c_str(), 1);
    EXPECT_EQ(nullptr, SimMachine::Current(why));
    EXPECT_NE(std::string::npos, why.find("does not exist"));
    ::unsetenv("ENGINE_MACHINE");
    SimMachine::Release();
    fs::remove_all(home);
}

TEST(SimMachine, UnreadableStateIsReportedNotCrashedOn) {
    std::string dir =
            (fs::temp_directory_path() / ("broken-" + std::to_string(::getpid()))).string();
    std::string why;
    ASSERT_TRUE(MachinePreset::Create(dir, "win7", -1, why));
    fs::remove(dir + "/registry.reg");
    EXPECT_FALSE(SimMachine::Open(dir, why));
    EXPECT_NE(std::string::npos, why.find("registry.reg"));
    std::ofstream(dir + "/registry.reg") << "garbage";
    EXPECT_FALSE(SimMachine::Open(dir, why));
    fs::remove_all(dir);
}

} // namespace
