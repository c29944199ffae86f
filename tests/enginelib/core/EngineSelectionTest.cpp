#include "EnginePackageSupport.h"
#include "components/CustomFactory.h"
#include "core/InstallMap.h"
#include "system/FileOp.h"

#include <gtest/gtest.h>

namespace {

// A package whose tools require the core, have two sub components and a group member, and
// whose profiles are instances of a mold; one component requires a component that the
// package lacks.
class EngineSelectionTest : public EnginePackageTest {
protected:
    void SetUp() override {
        EnginePackageTest::SetUp();
        writeConfig("install.map", "[Components]\nCore=Core.cif\nTools=Tools.cif\n"
                                   "Monitor=Tools.cif\nHelp=Tools.cif\nManuals=Manuals.cif\n"
                                   "Profiles=Profiles.cif\nProfile=Profiles.cif\n"
                                   "Broken=Broken.cif\nUninstaller=Uninstall.cif\n");
        writeConfig("Core.cif", "[Core]\nVersion=2.0\n");
        writeConfig("Tools.cif", "[Tools]\nRequires=Core\nSubComponents=Monitor,Help\n"
                                 "GroupComponents=Manuals\n[Monitor]\n[Help]\n");
        writeConfig("Manuals.cif", "[Manuals]\n");
        writeConfig("Profiles.cif", "[Profiles]\nTemplates=Profile\n[Profile]\n");
        writeConfig("Broken.cif", "[Broken]\nRequires=Core,Ghost\n");
        writeConfig("Uninstall.cif", "[Uninstall]\nVersion=1.0\n[Uninstaller]\n");
    }

    static std::vector<std::string> ChildNames(GenericComponent* parent) {
        std::vector<std::string> names;
        for (size_t index = 0; parent != nullptr && index < parent->ChildCount(); ++index) {
            CStdStr name;
            parent->GetChild(index)->GetName(name);
            names.push_back(name);
        }
        return names;
    }
};

TEST_F(EngineSelectionTest, ComponentsFollowTheScriptWithRequiredOnesBeforeAndGroupsBehind) {
    auto engine = start("[Install]\nProfiles=1\nTools=1\nBroken=1\nManuals=0\n"
                        "[Tools]\nHelp=1\nMonitor=0\nManuals=1\n"
                        "[Profiles]\nProfile=Office\nProfile=Home\n");
    engine->getInstallObjects(engine->GetScript()->FindSection("Install"), false, false);
    EXPECT_EQ((std::vector<std::string>{"Profiles", "Core", "Tools", "Manuals", "Uninstaller"}),
              Names(*engine));

    GenericComponent* tools = Component(*engine, "Tools");
    EXPECT_EQ((std::vector<std::string>{"Help"}), ChildNames(tools));
    GenericComponent* core = Component(*engine, "Core");
    CStdStr parent;
    core->GetParentName(parent);
    EXPECT_EQ("Tools", parent);

    GenericComponent* profiles = Component(*engine, "Profiles");
    EXPECT_EQ((std::vector<std::string>{"Office", "Home"}), ChildNames(profiles));
    auto* office = dynamic_cast<GenericComponent*>(profiles->Find("Office", false));
    ASSERT_NE(nullptr, office);
    EXPECT_EQ("Profiles.Profile#Office", office->GetTemplateMold());

    // What is made already is handed out again, whatever the case of the name.
    CustomFactory factory(engine->GetScript());
    EXPECT_EQ(tools, engine->makeCustomComponent("tools", &factory, 1, false, nullptr, ""));
    EXPECT_EQ(tools->Find("Help", false),
              engine->makeCustomComponent("TOOLS.help", &factory, 1, false, nullptr, ""));
    EXPECT_EQ(5u, engine->GetComponents().size());

    std::string text = runLog();
    EXPECT_NE(std::string::npos, text.find("cif does not exist for component Ghost"));
    EXPECT_NE(std::string::npos,
              text.find("Unable to create required component Ghost for component Broken"));
    EXPECT_NE(std::string::npos, text.find("Failed to create component Broken"));
}

TEST_F(EngineSelectionTest, SelectionTwoTakesEverySubComponentAndAnInstanceFindsItsMold) {
    auto engine = start("[Install]\nTools=2\n");
    CustomFactory factory(engine->GetScript());
    GenericComponent* tools = dynamic_cast<GenericComponent*>(
            engine->makeCustomComponent("Tools", &factory, 2, false, nullptr, ""));
    ASSERT_NE(nullptr, tools);
    EXPECT_EQ((std::vector<std::string>{"Monitor", "Help"}), ChildNames(tools));
    // A group member needs its key in the component's section of the script.
    EXPECT_EQ((std::vector<std::string>{"Core", "Tools"}), Names(*engine));

    // install.map knows the mold, not the instance; the parent is made on the way.
    auto* office = dynamic_cast<GenericComponent*>(engine->makeCustomComponent(
            "Profiles.Profile#Office", &factory, 0, false, nullptr, ""));
    ASSERT_NE(nullptr, office);
    EXPECT_EQ("Office", office->Name());
    EXPECT_EQ("Profiles.Profile#Office", office->GetTemplateMold());
    GenericComponent* profiles = Component(*engine, "Profiles");
    ASSERT_NE(nullptr, profiles);
    EXPECT_EQ(office, profiles->Find("office", false));
    EXPECT_EQ(nullptr, engine->makeCustomComponent("Office", &factory, 1, false, nullptr, ""));
}

TEST_F(EngineSelectionTest, AnUninstallReadsOnlyItsOwnCifAndWhatTheLogSaysIsInstalled) {
    addInstalled({{"Tools", UninstallLog::kRoot},
                  {"Monitor", "Tools"},
                  {"Profiles", UninstallLog::kRoot},
                  {"Office", "Profiles"}});
    log.SetSpecial("Office", "TemplateMold", "Profiles.Profile#Office");
    commitLog();
    ASSERT_EQ(os::error::Success, os::DeleteFile(config + "\\install.map"));
    writeConfig("Uninstall.cif", "[Uninstall]\nVersion=1.0\n[Uninstaller]\n"
                                 "[Tools]\nSubComponents=Monitor,Help\n[Monitor]\n[Help]\n"
                                 "[Profiles]\nTemplates=Profile\n[Profile]\n");
    const std::string script = "[Uninstall]\nTools=1\nOffice=1\nGhost=1\n[Tools]\nMonitor=1\n"
                               "Help=1\n";
    {
        auto engine = start(script, true);
        ASSERT_NE(nullptr, engine->GetInstallMap());
        engine->getInstallObjects(engine->GetScript()->FindSection("Uninstall"), true, false);
        EXPECT_EQ((std::vector<std::string>{"Tools", "Profiles", "Uninstaller"}), Names(*engine));
        GenericComponent* tools = Component(*engine, "Tools");
        EXPECT_TRUE(tools->IsEmptyShell());
        EXPECT_EQ((std::vector<std::string>{"Monitor"}), ChildNames(tools));
        EXPECT_EQ((std::vector<std::string>{"Office"}), ChildNames(Component(*engine, "Profiles")));
        EXPECT_NE(std::string::npos, runLog().find("component Ghost is not installed"));
    }
    // Removing a component with all its sub components removes its own content too.
    auto engine = start(script, true);
    CustomFactory factory(engine->GetScript());
    auto* tools = dynamic_cast<GenericComponent*>(
            engine->makeCustomComponent("Tools", &factory, 2, true, nullptr, ""));
    ASSERT_NE(nullptr, tools);
    EXPECT_FALSE(tools->IsEmptyShell());
    EXPECT_EQ((std::vector<std::string>{"Monitor"}), ChildNames(tools));
}

TEST_F(EngineSelectionTest, InstallableAsksTheCifOfTheComponentAndKeepsTheReason) {
    writeConfig("install.map", "[Components]\nCore=Core.cif\nSourced=Checks.cif\n"
                               "OldOs=Checks.cif\nInvalid=Checks.cif\nUnmet=Checks.cif\n"
                               "Headless=Checks.cif\nLost=Lost.cif\n");
    writeConfig("Checks.cif", "[Sourced]\nSourceLocation=C:\\Media\n[OldOs]\nPlatform=9X, XP\n"
                              "[Invalid]\n[Invalid_ExtReq]\n1,NUM:SAME,1\n"
                              "[Unmet]\n[Unmet_ExtReq]\n1,NUM:EQ,2\nError:Too little memory\n");
    os::CreateDirectory(config + "\\nls");
    writeConfig("nls\\en.nls", "[Global]\nMSG_INVALID_OS=Not for this Windows\n");
    Engine engine(nullptr, "", "", "");
    DebugLog::Instance().SetFile(machine.Path("query.log"));
    DebugLogger::Instance().EnableLog();

    EXPECT_TRUE(engine.IsComponentInstallable("Core"));
    EXPECT_EQ("", engine.GetComponentStatusText());
    EXPECT_FALSE(engine.IsComponentInstallable("Ghost"));
    EXPECT_FALSE(engine.IsComponentInstallable("Lost"));
    EXPECT_FALSE(engine.IsComponentInstallable("Headless"));
    EXPECT_FALSE(engine.IsComponentInstallable("Sourced"));
    ASSERT_TRUE(FileOp::MakePath("C:\\Media\\", false));
    EXPECT_TRUE(engine.IsComponentInstallable("Sourced"));
    // The run would take it, since Vista and later count as a future system of every list;
    // the host's question does not.
    EXPECT_FALSE(engine.IsComponentInstallable("OldOs"));
    EXPECT_EQ("Not for this Windows", engine.GetComponentStatusText());
    EXPECT_FALSE(engine.IsComponentInstallable("Invalid"));
    EXPECT_FALSE(engine.IsComponentInstallable("Unmet"));
    EXPECT_EQ("Too little memory", engine.GetComponentStatusText());
    EXPECT_TRUE(engine.IsComponentInstallable("Core"));
    EXPECT_EQ("", engine.GetComponentStatusText());
    DebugLogger::Instance().DisableLog();

    std::string text = TestMachine::ReadFile(machine.Path("query.log"));
    for (const std::string& line :
         {std::string("CIF does not exist for component Ghost"),
          std::string("CIF does not exist for component Lost"),
          "Could not find main section for component Headless, CIF=" + config + "\\Checks.cif",
          std::string("External requirements invalid for component Invalid"),
          std::string("External requirements not satisfied for component Unmet")}) {
        EXPECT_NE(std::string::npos, text.find(line)) << line;
    }

    // The drivers are a question of folders, not of the map.
    Engine drivers(nullptr, "", "", "");
    EXPECT_FALSE(drivers.IsComponentInstallable("drivers"));
    EXPECT_EQ(nullptr, drivers.GetInstallMap());
}

TEST_F(EngineSelectionTest, AComponentStaysWhileAComponentThatStaysNeedsIt) {
    addInstalled({{"Core", UninstallLog::kRoot},
                  {"Tools", UninstallLog::kRoot},
                  {"Monitor", "Tools"},
                  {"Base", UninstallLog::kRoot},
                  {"Viewer", UninstallLog::kRoot}});
    for (const char* user : {"Tools", "Gone", "Monitor"}) {
        log.AddRequiredBy("Core", user);
    }
    log.AddRequiredBy("Base", "Viewer");
    commitLog();
    writeConfig("Uninstall.cif", "[Uninstall]\n[Uninstaller]\n[Core]\n[Base]\n[Viewer]\n"
                                 "[Tools]\nSubComponents=Monitor\n[Monitor]\n");
    auto engine = start("[Uninstall]\nCore=1\nTools=1\nBase=1\n[Tools]\nMonitor=1\n", true);
    engine->getInstallObjects(engine->GetScript()->FindSection("Uninstall"), true, false);
    ASSERT_EQ((std::vector<std::string>{"Core", "Tools", "Base", "Uninstaller"}), Names(*engine));

    // Tools and its Monitor go in this run, and Gone is no longer installed.
    EXPECT_TRUE(engine->dependenciesOK(0));
    CStdStringList users;
    log.GetRequiredBy("Core", users);
    EXPECT_EQ((CStdStringList{"Gone"}), users);

    EXPECT_FALSE(engine->dependenciesOK(2));
    CStdStr parent;
    Component(*engine, "Base")->GetParentName(parent);
    EXPECT_EQ("Viewer", parent);
    log.GetRequiredBy("Base", users);
    EXPECT_EQ((CStdStringList{"Viewer"}), users);
    EXPECT_NE(std::string::npos,
              runLog().find("Not uninstalling component Base (Required by: Viewer)"));
}

TEST_F(EngineSelectionTest, CyclesOfComponentsAreCutAndTheRunGoesOn) {
    writeConfig("install.map", "[Components]\nEgg=Cycle.cif\nHen=Cycle.cif\nNest=Cycle.cif\n"
                               "Uninstaller=Uninstall.cif\n");
    // Egg and Hen require each other; Nest is a sub component of itself and requires its
    // parent.
    writeConfig("Cycle.cif", "[Egg]\nRequires=Hen\n[Hen]\nRequires=Egg\n"
                             "[Nest]\nSubComponents=Nest\nRequires=Nest\n");
    auto engine = start("[Install]\nEgg=1\nNest=2\n");
    engine->getInstallObjects(engine->GetScript()->FindSection("Install"), false, false);
    EXPECT_EQ((std::vector<std::string>{"Hen", "Egg", "Nest", "Uninstaller"}), Names(*engine))
            << "the one required comes first";
    GenericComponent* nest = Component(*engine, "Nest");
    ASSERT_EQ(1u, nest->ChildCount()) << "the sub component is made once, below the top one";
    EXPECT_EQ(0u, dynamic_cast<GenericComponent*>(nest->GetChild(0))->ChildCount());
    std::string text = runLog();
    EXPECT_NE(std::string::npos,
              text.find("Component Hen requires Egg, which is being made already"));
    EXPECT_NE(std::string::npos, text.find("Component Nest.Nest is already being made: the cycle "
                                           "of components ends here"));
}

} // namespace
