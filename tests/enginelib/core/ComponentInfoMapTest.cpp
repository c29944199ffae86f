#include "core/ComponentInfoMap.h"

#include "core/RunState.h"
#include "enginelib/script/CifTestSupport.h"
#include "os/Files.h"
#include "script/SystemPath.h"
#include "support/SuiteLog.h"
#include "uninstall/UninstallLog.h"

#include <gtest/gtest.h>

namespace {

// A package folder with its Config folder, as the host's queries see it before a run.
class ComponentInfoMapTest : public ::testing::Test {
protected:
    TestMachine machine;
    std::string config = machine.Path("pkg\\Config");
    UninstallLog& log = UninstallLog::Global();

    void SetUp() override {
        RunState::Reset();
        os::CreateDirectory(machine.Path("pkg"));
        os::CreateDirectory(config);
        SystemPath::SetApplicationDirectoryOverride(machine.Path("pkg"));
        StartSuiteLog(log);
    }

    void TearDown() override {
        SystemPath::SetApplicationDirectoryOverride("");
        log.Clear();
        RunState::Reset();
    }

    void write(const std::string& name, const std::string& text) {
        ASSERT_TRUE(TestMachine::WriteFile(config + "\\" + name, text));
    }
};

TEST_F(ComponentInfoMapTest, EachMappedComponentTellsItsCifAndWhetherItIsInstalled) {
    log.AddComponent("Core", UninstallLog::kRoot, false);
    log.SetSpecial("Core", "Version", "2.0");
    ASSERT_TRUE(log.Commit());
    log.Clear();
    write("install.map", "[Components]\nCore=Core.cif\nTools=Tools.cif\nBroken=Broken.cif\n"
                         "Lost=Lost.cif\nRetired=\n");
    write("Core.cif", "[Core]\nSourceLocation=C:\\Media\nAdminRights=TRUE\nDiskSpace=1024\n"
                      "Behavior=Silent\nPlatform=XP, WIN7\n");
    write("Tools.cif", "[Tools]\nAdminRights=yes\n"
                       "[Tools_ExtReq]\n1,NUM:EQ,2\nError:MSG_LOW_MEMORY\n");
    write("Broken.cif", "[Broken]\n[Broken_ExtReq]\n1,NUM:SAME,1\n");

    LogCapture capture(machine, 0);
    ComponentInfoMap map;
    ASSERT_TRUE(map.creatingMap());
    EXPECT_EQ(4u, map.Size());
    EXPECT_EQ(nullptr, map.Find("Lost"));
    EXPECT_EQ(nullptr, map.Find("Retired"));
    EXPECT_TRUE(capture.Has("file " + config + "\\Lost.cif was not found for Lost"));

    const ComponentInfo* core = map.Find("core");
    ASSERT_NE(nullptr, core);
    EXPECT_EQ("C:\\Media", core->GetSourceLocation());
    EXPECT_TRUE(core->NeedsAdminRights());
    EXPECT_EQ(1024, core->GetDiskSpace());
    EXPECT_EQ("Silent", core->GetBehavior());
    EXPECT_EQ((CStdStringList{"XP", "WIN7", "FUTURE_OS"}), core->GetPlatform());
    EXPECT_TRUE(core->RequirementsSatisfied());
    EXPECT_TRUE(core->IsInstalled());
    EXPECT_EQ("2.0", core->GetInstalledVersion());

    const ComponentInfo* tools = map.Find("Tools");
    ASSERT_NE(nullptr, tools);
    EXPECT_FALSE(tools->NeedsAdminRights());
    EXPECT_TRUE(tools->GetPlatform().empty());
    EXPECT_TRUE(tools->RequirementsValid());
    EXPECT_FALSE(tools->RequirementsSatisfied());
    EXPECT_EQ("MSG_LOW_MEMORY", tools->GetRequirementMessage());
    EXPECT_FALSE(tools->IsInstalled());

    const ComponentInfo* broken = map.Find("Broken");
    ASSERT_NE(nullptr, broken);
    EXPECT_FALSE(broken->RequirementsValid());
    EXPECT_EQ("External requirements invalid for component Broken",
              broken->GetRequirementMessage());

    const ComponentInfo* drivers = map.Find(ComponentInfoMap::kDrivers);
    ASSERT_NE(nullptr, drivers);
    EXPECT_EQ("", drivers->GetCifPath());
}

TEST_F(ComponentInfoMapTest, AMissingOrEmptyMapGivesNoInformation) {
    LogCapture capture(machine, 0);
    ComponentInfoMap map;
    EXPECT_FALSE(map.creatingMap());
    EXPECT_TRUE(capture.Has("Map file does not exist: File = " + config + "\\install.map"));
    write("install.map", "[Components]\n");
    EXPECT_FALSE(map.creatingMap());
    EXPECT_TRUE(capture.Has("Missing 'Components' section in map file : File = " + config +
                            "\\install.map"));
    EXPECT_EQ(0u, map.Size());
}

} // namespace
