#include "components/CustomFactory.h"

#include "ComponentTestSupport.h"
#include "components/GenericComponent.h"
#include "core/RunState.h"
#include "enginelib/script/CifTestSupport.h"
#include "script/CifFile.h"
#include "script/IniFile.h"
#include "script/NlsFile.h"
#include "script/SystemPath.h"
#include "support/SuiteLog.h"
#include "system/FileOp.h"
#include "uninstall/UninstallLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace {

// A factory over a script of the test, making components of the product "Suite" from CIF files
// in the scratch folder.
class CustomFactoryTest : public ::testing::Test {
protected:
    explicit CustomFactoryTest(const char* preset = "win7-x64") : machine(preset) {}

    TestMachine machine;
    std::unique_ptr<IniFile> script;
    std::unique_ptr<CustomFactory> factory;
    std::vector<std::unique_ptr<CifFile>> cifs;
    UninstallLog& log = UninstallLog::Global();

    void SetUp() override {
        RunState::Reset();
        NlsFile::Reset();
        StartSuiteLog(log);
        useScript("[Install]\nTools=1\n");
    }

    void TearDown() override {
        log.Clear();
        RunState::Reset();
    }

    void useScript(const std::string& text) {
        std::string path = machine.Path("setup.isf");
        ASSERT_TRUE(TestMachine::WriteFile(path, text));
        script = std::make_unique<IniFile>(path, false);
        factory = std::make_unique<CustomFactory>(script.get());
    }

    // A CIF named `name` in the scratch folder, not read yet, as the install map hands it out.
    CifFile& cif(const std::string& name, const std::string& text) {
        std::string path = machine.WriteScratch(name, text);
        cifs.push_back(std::make_unique<CifFile>(true));
        cifs.back()->SetFileName(path);
        return *cifs.back();
    }

    std::unique_ptr<GenericComponent> make(const std::string& name, CifFile& from) {
        InstallComponent* made = factory->Make(name, from);
        auto* component = dynamic_cast<GenericComponent*>(made);
        if (component == nullptr) {
            delete made;
        }
        return std::unique_ptr<GenericComponent>(component);
    }

    std::unique_ptr<GenericComponent> make(const std::string& name, const std::string& text) {
        return make(name, cif(name + ".cif", text));
    }

    // Writes what the machine's log says is installed: components with their versions.
    void installed(std::initializer_list<std::pair<const char*, const char*>> components) {
        for (const auto& [name, version] : components) {
            log.AddComponent(name, UninstallLog::kRoot, false);
            if (*version != '\0') {
                log.SetSpecial(name, "Version", version);
            }
        }
        ASSERT_TRUE(log.Commit());
        log.Clear();
    }
};

TEST_F(CustomFactoryTest, ATemplateInstanceIsNamedAfterItsInstanceAndRecordsItsMold) {
    CifFile& profiles = cif("Profiles.cif", "[Profile]\nVersion=1.0\n"
                                            "[Profile_Actions]\nFile,CREATEDIR,C:\\Profiles\n");
    auto office = make("Profile#Office", profiles);
    ASSERT_NE(nullptr, office);
    EXPECT_EQ("Office", office->Name());
    EXPECT_EQ("Profile#Office", office->GetTemplateMold());
    EXPECT_EQ("1.0", office->GetVersion());
    ASSERT_EQ(1u, office->GetInstallActions().Size());
    EXPECT_EQ("<ActionDesc><Script>Profiles.cif</Script><Comp>Profile</Comp><Sec>_Actions</Sec>"
              "<Action>File,CREATEDIR,C:\\Profiles</Action></ActionDesc>",
              office->GetInstallActions().GetAt(0)->GetActionDesc());

    auto home = make("Profiles.Profile#Home", profiles);
    ASSERT_NE(nullptr, home);
    EXPECT_EQ("Home", home->Name());
    EXPECT_EQ("Profiles.Profile#Home", home->GetTemplateMold());

    for (const char* plain : {"Profiles.Profile", "Profile"}) {
        auto profile = make(plain, profiles);
        ASSERT_NE(nullptr, profile);
        EXPECT_EQ("Profile", profile->Name());
        EXPECT_EQ("", profile->GetTemplateMold());
    }
}

TEST_F(CustomFactoryTest, EachSuffixFillsItsOwnListAndGoToSectionInsertsInPlace) {
    auto tools = make("Tools", "[Tools]\n"
                               "[Tools_Actions]\nFile,CREATEDIR,C:\\a\nGoToSection,Extra\n"
                               "GoToSection,Missing\nFile,CREATEDIR,C:\\b\n"
                               "[Extra]\nFile,CREATEDIR,C:\\extra\n"
                               "[Tools_OEMActions]\nFile,CREATEDIR,C:\\oem\n"
                               "[Tools_Cleanup]\nFile,CREATEDIR,C:\\cleanup\n"
                               "[Tools_PreInstall]\nFile,CREATEDIR,C:\\pre\n"
                               "[Tools_PostInstall]\nFile,CREATEDIR,C:\\post\n"
                               "[Tools_FinishInstall]\nFile,CREATEDIR,C:\\finish\n"
                               "[Tools_Uninstall]\nFile,DELETEDIR,C:\\uninstall\n"
                               "[Tools_OEMUninstall]\nFile,DELETEDIR,C:\\oemuninstall\n");
    ASSERT_NE(nullptr, tools);
    ActionSet& actions = tools->GetInstallActions();
    ASSERT_EQ(3u, actions.Size());
    EXPECT_NE(std::string::npos, actions.GetAt(0)->GetActionDesc().find("C:\\a</Action>"));
    EXPECT_NE(std::string::npos,
              actions.GetAt(1)->GetActionDesc().find(
                      "<Sec>Extra</Sec><Action>File,CREATEDIR,C:\\extra</Action>"));
    EXPECT_NE(std::string::npos, actions.GetAt(2)->GetActionDesc().find("C:\\b</Action>"));

    const std::pair<ActionSet*, const char*> lists[] = {
            {&tools->GetOemInstallActions(),
             "<Sec>_OEMActions</Sec><Action>File,CREATEDIR,C:\\oem<"},
            {&tools->GetCleanupActions(), "<Sec>_Cleanup</Sec><Action>File,CREATEDIR,C:\\cleanup<"},
            {&tools->GetPreInstallActions(),
             "<Sec>_PreInstall</Sec><Action>File,CREATEDIR,C:\\pre<"},
            {&tools->GetPostInstallActions(),
             "<Sec>_PostInstall</Sec><Action>File,CREATEDIR,C:\\post<"},
            {&tools->GetFinishActions(),
             "<Sec>_FinishInstall</Sec><Action>File,CREATEDIR,C:\\finish<"},
            {&tools->GetUninstallActions(),
             "<Sec>_Uninstall</Sec><Action>File,DELETEDIR,C:\\uninstall<"},
            {&tools->GetOemUninstallActions(),
             "<Sec>_OEMUninstall</Sec><Action>File,DELETEDIR,C:\\oemuninstall<"}};
    for (const auto& [list, description] : lists) {
        SCOPED_TRACE(description);
        ASSERT_EQ(1u, list->Size());
        EXPECT_NE(std::string::npos, list->GetAt(0)->GetActionDesc().find(description));
    }
}

TEST_F(CustomFactoryTest, ALineThatMakesNoActionRefusesTheWholeComponent) {
    LogCapture capture(machine, 0);
    CifFile& tools = cif("Tools.cif", "[Tools]\n[Tools_FinishInstall]\nBogus,1,2\n");
    EXPECT_EQ(nullptr, make("Tools", tools));
    EXPECT_TRUE(capture.Has("Invalid action name Bogus, Component=Tools, Section=_FinishInstall, "
                            "CIF=" +
                            machine.Path("Tools.cif")));
    EXPECT_TRUE(capture.Has("Fatal error making action lists for component Tools"));

    EXPECT_EQ(nullptr, make("Ghost", tools));
    EXPECT_TRUE(capture.Has("Could not find main section for component Ghost, CIF=" +
                            machine.Path("Tools.cif")));
    EXPECT_TRUE(capture.Has("Could not create object for component Ghost"));

    // Keywords fold case; a run that logs nothing makes file actions that log nothing.
    CStdStringList parameters;
    parameters.Add("CREATEDIR");
    parameters.Add("C:\\Folder");
    Action* logged = factory->getAction("file", parameters);
    ASSERT_NE(nullptr, logged);
    EXPECT_TRUE(logged->GetLogIt());
    delete logged;
    factory->SetNoLog(true);
    Action* unlogged = factory->getAction("FILE", parameters);
    ASSERT_NE(nullptr, unlogged);
    EXPECT_FALSE(unlogged->GetLogIt());
    delete unlogged;
    EXPECT_EQ(nullptr, factory->getAction("Bogus", parameters));
}

TEST_F(CustomFactoryTest, RequirementsAndSourceDecideWhetherTheComponentExists) {
    LogCapture capture(machine, 0);
    const std::string text = "[Invalid]\n[Invalid_ExtReq]\n1,NUM:SAME,1\n"
                             "[Unmet]\n[Unmet_ExtReq]\n1,NUM:EQ,2\nError:Too small\n"
                             "[Met]\n[Met_ExtReq]\n2,NUM:EQ,2\nError:Never shown\n"
                             "[Sourced]\nSourceLocation=C:\\Media\\Tools\n";
    CifFile& file = cif("Requirements.cif", text);
    EXPECT_EQ(nullptr, make("Invalid", file));
    EXPECT_TRUE(capture.Has("External requirements are invalid for component Invalid"));
    EXPECT_EQ(nullptr, make("Unmet", file));
    EXPECT_TRUE(capture.Has("External requirements not satisfied for component Unmet"));
    EXPECT_NE(nullptr, make("Met", file));
    EXPECT_EQ(nullptr, make("Sourced", file));
    EXPECT_TRUE(capture.Has("Component Sourced source location does not exist: C:\\Media\\Tools"));

    ASSERT_TRUE(FileOp::MakePath("C:\\Media\\Tools\\", false));
    auto sourced = make("Sourced", file);
    ASSERT_NE(nullptr, sourced);
    CStdStr location;
    sourced->GetSourceLocation(location);
    EXPECT_EQ("C:\\Media\\Tools", location);

    // A remote or package run does not ask the requirements.
    factory->SetSkipRequirements(true);
    EXPECT_NE(nullptr, make("Invalid", file));
    EXPECT_NE(nullptr, make("Unmet", file));
}

TEST_F(CustomFactoryTest, TheMainSectionSetsListsAndFlags) {
    useScript("[Install]\nCore=1\nBase=0\nExtra=0\nInstallDir=C:\\Suite\n"
              "[Uninstall]\nBase=2\nExtra=1\n"
              "[Tools]\nInstallDir=C:\\Suite\\Tools\n");
    CifFile& file = cif("Tools.cif", "[Tools]\nVersion=1.5\nRequires= Core , Base \n"
                                     "SubComponents=Monitor, Help\nGroupComponents=Manuals\n"
                                     "Templates=Profile\nOEMCommon=1\nPlaceHolder=TRUE\n"
                                     "UseParentName=true\nComponentDisguise=1\n"
                                     "[Choice]\nRequires=Core|Base|Extra\nOEMCommon=yes\n");
    auto tools = make("Tools", file);
    ASSERT_NE(nullptr, tools);
    EXPECT_EQ((CStdStringList{"Core", "Base"}), tools->GetRequires());
    EXPECT_EQ((CStdStringList{"Monitor", "Help"}), tools->GetSubComponents());
    EXPECT_EQ((CStdStringList{"Manuals"}), tools->GetGroupComponents());
    EXPECT_EQ((CStdStringList{"Profile"}), tools->GetTemplates());
    EXPECT_TRUE(tools->IsOemCommon());
    EXPECT_TRUE(tools->GetComponentDisguise());
    EXPECT_EQ("C:\\Suite\\Tools", tools->GetBaseDir());
    EXPECT_TRUE(tools->GetLogIt());
    EXPECT_TRUE(tools->GetVersionAllowsInstall());
    LoadEnglishTexts(machine, "[Components]\nSuite=The suite\nTools=The tools\nChoice=A choice\n");
    tools->SetParentName("Suite");
    EXPECT_EQ("The suite", tools->DisplayTitle());
    // A place holder without children leaves the log again.
    RunState::SetCurrentComponent(UninstallLog::kRoot);
    tools->RunPreInstall();
    tools->Install();
    EXPECT_FALSE(log.IsComponentInstalled("Tools"));

    // Alternatives keep the names that the script installs (1) or keeps installed (2).
    auto choice = make("Choice", file);
    ASSERT_NE(nullptr, choice);
    EXPECT_EQ((CStdStringList{"Core", "Base"}), choice->GetRequires());
    EXPECT_FALSE(choice->IsOemCommon());
    EXPECT_EQ(CStdStringList(), choice->GetSubComponents());
    choice->SetParentName("Suite");
    EXPECT_EQ("A choice", choice->DisplayTitle());
}

TEST_F(CustomFactoryTest, WhetherAComponentIsLoggedFollowsLogPatchAndTheMachinesLog) {
    installed({{"Kept", ""}});
    std::string text = "[Plain]\n[Unlogged]\nLog=false\n[Kept]\nLog=FALSE\n"
                       "[Patch]\nPatchFile=true\nVersion=1.0\n"
                       "[LoggedPatch]\nPatchFile=TRUE\nLog=TRUE\n";
    CifFile& file = cif("Log.cif", text);
    EXPECT_TRUE(make("Plain", file)->GetLogIt());
    EXPECT_FALSE(make("Unlogged", file)->GetLogIt());
    // A component logged once stays logged.
    EXPECT_TRUE(make("Kept", file)->GetLogIt());

    auto patch = make("Patch", file);
    EXPECT_FALSE(patch->GetLogIt());
    EXPECT_TRUE(patch->IsOemCommon());
    EXPECT_EQ("1.0", factory->GetPatchVersion());
    EXPECT_TRUE(make("LoggedPatch", file)->GetLogIt());

    factory->SetNoLog(true);
    EXPECT_FALSE(make("Plain", file)->GetLogIt());
    EXPECT_TRUE(make("Kept", file)->GetLogIt());
}

TEST_F(CustomFactoryTest, TheInstalledVersionDecidesWhetherTheListsRun) {
    installed({{"Older", "1.2.3.4"},
               {"Same", "1.2.3"},
               {"Behind", "1.2.3"},
               {"Ahead", "1.3"},
               {"Short", "1.2"},
               {"Unversioned", ""},
               {"Bare", "2.0"}});
    CifFile& file = cif("Versions.cif", "[Older]\nVersion=1.2.3\n[Same]\nVersion=1.2.3\n"
                                        "[Behind]\nVersion=1.2.4\n[Ahead]\nVersion=1.2.9\n"
                                        "[Short]\nVersion=1.2.0.1\n[Unversioned]\nVersion=1.0\n"
                                        "[Bare]\n[Fresh]\nVersion=1.0\n");
    const std::pair<const char*, bool> cases[] = {
            {"Older", false}, {"Same", true},        {"Behind", true}, {"Ahead", false},
            {"Short", true},  {"Unversioned", true}, {"Bare", true},   {"Fresh", true}};
    for (const auto& [name, allows] : cases) {
        SCOPED_TRACE(name);
        auto component = make(name, file);
        ASSERT_NE(nullptr, component);
        EXPECT_EQ(allows, component->GetVersionAllowsInstall());
    }
}

TEST_F(CustomFactoryTest, APatchCollectsTheUninstallFilesOfTheProductsItCountsNewerThan) {
    CStdStr maker = SystemPath::GetDefine("PROGRAMFILES_DIR") + "\\" + CustomFactory::kMakerFolder;
    auto product = [&](const char* name, const char* cifText) {
        CStdStr config = maker + "\\" + name + "\\Install\\Config\\";
        ASSERT_TRUE(FileOp::MakePath(config, false));
        if (cifText != nullptr) {
            ASSERT_TRUE(TestMachine::WriteFile(config + "Uninstall.cif", cifText));
        }
    };
    product("Alpha", "[Uninstall]\nVersion=1.0\n");
    product("Beta", "[Uninstall]\nVersion=3.0.5\n");
    product("Gamma", "[Uninstall]\n");
    product("Delta", nullptr);
    // Not an ordering: 2.0.1 has a part that 2.5 lacks, so it counts as newer.
    product("Epsilon", "[Uninstall]\nVersion=2.5\n");
    ASSERT_TRUE(TestMachine::WriteFile(maker + "\\Zeta.cif", "[Uninstall]\nVersion=0\n"));

    CifFile& file = cif("Patch.cif", "[Patch]\nPatchFile=TRUE\nVersion=2.0.1\n"
                                     "[Oldest]\nPatchFile=TRUE\nVersion=0\n");
    ASSERT_NE(nullptr, make("Patch", file));
    CStdStringList found = Tokenizer::Split(factory->GetAllUninstallCifs(), '|');
    std::sort(found.begin(), found.end());
    const char* tail = "\\Install\\Config\\Uninstall.cif";
    EXPECT_EQ((CStdStringList{maker + "\\Alpha" + tail, maker + "\\Epsilon" + tail,
                              maker + "\\Gamma" + tail}),
              found);

    ASSERT_NE(nullptr, make("Oldest", file));
    EXPECT_EQ("0", factory->GetPatchVersion());
    EXPECT_EQ("", factory->GetAllUninstallCifs());
}

// The platform test on a system before the future-OS token.
class CustomFactoryOnXpTest : public CustomFactoryTest {
protected:
    CustomFactoryOnXpTest() : CustomFactoryTest("xp") {}
};

TEST_F(CustomFactoryOnXpTest, APlatformListMustNameThisSystem) {
    LogCapture capture(machine, 0);
    CifFile& file = cif("Platform.cif", "[Vista]\nPlatform=VISTA\n[Both]\nPlatform= XP , VISTA\n"
                                        "[Any]\n[Blank]\nPlatform=\n");
    EXPECT_EQ(nullptr, make("Vista", file));
    EXPECT_TRUE(capture.Has("Component Vista cannot run on this platform."));
    auto both = make("Both", file);
    ASSERT_NE(nullptr, both);
    EXPECT_EQ((CStdStringList{"XP", "VISTA"}), both->GetPlatform());
    EXPECT_NE(nullptr, make("Any", file));
    EXPECT_NE(nullptr, make("Blank", file));
}

TEST_F(CustomFactoryTest, FromVistaOnEveryPlatformListAdmitsTheSystem) {
    auto old = make("Old", "[Old]\nPlatform=9X, XP\n");
    ASSERT_NE(nullptr, old);
    EXPECT_EQ((CStdStringList{"9X", "XP", "FUTURE_OS"}), old->GetPlatform());
    auto any = make("Any", "[Any]\n");
    ASSERT_NE(nullptr, any);
    EXPECT_EQ(CStdStringList(), any->GetPlatform());
}

} // namespace
