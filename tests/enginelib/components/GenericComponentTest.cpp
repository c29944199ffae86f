#include "components/GenericComponent.h"

#include "ComponentTestSupport.h"
#include "core/ProductIni.h"
#include "core/RunState.h"
#include "enginelib/script/CifTestSupport.h"
#include "support/SuiteLog.h"
#include "uninstall/UninstallLog.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

// The list runner is the component's own business; the tests start lists through it directly.
class TestComponent : public GenericComponent {
public:
    using GenericComponent::GenericComponent;
    using GenericComponent::runActionList;
};

// Components of the product "Suite" of the maker "Valmora", with an empty run log and no
// language texts.
class GenericComponentTest : public ::testing::Test {
protected:
    TestMachine machine;
    IpcTransfer reporter;
    std::vector<std::string> journal;
    UninstallLog& log = UninstallLog::Global();

    void SetUp() override {
        NlsFile::Reset();
        RunState::Reset();
        StartSuiteLog(log);
        RunState::SetCurrentComponent(UninstallLog::kRoot);
    }

    void TearDown() override {
        log.Clear();
        RunState::Reset();
        NlsFile::Reset();
    }

    static std::unique_ptr<TestComponent>
    component(const char* name, std::initializer_list<const char*> required = {},
              const char* version = "", const char* baseDir = "") {
        CStdStringList requiredNames;
        for (const char* item : required) {
            requiredNames.Add(item);
        }
        CStdStringList platform;
        CStdStringList subs;
        CStdStringList groups;
        CStdStringList templates;
        return std::make_unique<TestComponent>(name, version, "", baseDir, false, requiredNames,
                                               platform, subs, groups, templates);
    }

    JournalAction* add(ActionSet& list, const std::string& name, std::uint32_t units = 1) {
        return AddJournalAction(list, name, journal, units);
    }

    // Adopts `child` into `parent` and gives it back for the test to use.
    static TestComponent* adopt(GenericComponent& parent, std::unique_ptr<TestComponent> child) {
        TestComponent* raw = child.get();
        parent.Add(child.release());
        return raw;
    }

    // As the engine starts the pre-install phase of a top component: below the root of the log.
    static void preInstall(GenericComponent& top) {
        RunState::SetCurrentComponent(UninstallLog::kRoot);
        top.RunPreInstall();
    }

    std::string shownTitle() {
        char title[IpcTransfer::kTitleSize] = {};
        reporter.GetCurrentTitle(title);
        return title;
    }
};

TEST_F(GenericComponentTest, AListRunsOnceAndAFatalEndIsKept) {
    auto tools = component("Tools");
    ActionSet done;
    add(done, "done");
    EXPECT_TRUE(tools->runActionList(done, "", false, false, false));
    EXPECT_TRUE(tools->runActionList(done, "", false, false, false));

    ActionSet failing;
    add(failing, "before");
    add(failing, "fatal")->FailFatally();
    add(failing, "never");
    EXPECT_FALSE(tools->runActionList(failing, "", false, false, false));
    EXPECT_FALSE(tools->runActionList(failing, "", false, false, false));

    // A failure that is not fatal neither stops the list nor fails it.
    ActionSet soft;
    add(soft, "soft")->mResult = false;
    add(soft, "after");
    EXPECT_TRUE(tools->runActionList(soft, "", false, false, false));

    EXPECT_EQ((std::vector<std::string>{"done", "before", "fatal", "soft", "after"}), journal);
}

TEST_F(GenericComponentTest, AFrozenListResumesAtTheActionThatFroze) {
    LogCapture capture(machine, logmask::General);
    auto tools = component("Tools");
    tools->SetVersionAllowsInstall(true);
    add(tools->GetInstallActions(), "first");
    add(tools->GetInstallActions(), "wait")->mFreezes = 1;
    add(tools->GetInstallActions(), "last");

    EXPECT_TRUE(tools->Install());
    EXPECT_EQ(ActionSet::Frozen, tools->GetInstallActions().GetState());
    EXPECT_EQ((std::vector<std::string>{"first", "wait"}), journal);
    EXPECT_TRUE(capture.Has("[--Installing Tools : "));
    EXPECT_FALSE(capture.Has("[--Un-freezing Tools : "));

    EXPECT_TRUE(tools->Install());
    EXPECT_TRUE(tools->Install());
    EXPECT_EQ(ActionSet::Finished, tools->GetInstallActions().GetState());
    EXPECT_EQ((std::vector<std::string>{"first", "wait", "wait", "last"}), journal);
    EXPECT_TRUE(capture.Has("[--Un-freezing Tools : "));
}

TEST_F(GenericComponentTest, OemListsRunOncePerOemNameAndTheOthersOnce) {
    LoadEnglishTexts(machine, "[Global]\nOEM=Tovar\nModelName=Laser 5\n");
    auto tools = component("Tools");
    tools->SetVersionAllowsInstall(true);
    JournalAction* plain = add(tools->GetInstallActions(), "plain");
    JournalAction* oem = add(tools->GetOemInstallActions(), "oem");
    tools->Install();
    // Without OEM names the OEM list runs for the default brand, and the log says so; the
    // ordinary list runs without a brand, which the log does not record.
    EXPECT_EQ((std::vector<CStdStr>{"Tovar Laser 5"}), plain->mTitles);
    EXPECT_EQ((std::vector<CStdStr>{"Tovar Laser 5"}), oem->mTitles);
    EXPECT_EQ("Tovar Laser 5", log.GetSpecial("Tools", "OEMSharedBy,Suite"));

    // Every brand gets its run, also after a run that failed.
    auto core = component("Core");
    core->SetOemNames("Alpha,Beta");
    JournalAction* fatal = add(core->GetOemUninstallActions(), "oem-fatal");
    fatal->FailFatally();
    EXPECT_FALSE(core->RemoveOEMSharedByContent());
    EXPECT_EQ((std::vector<CStdStr>{"Alpha", "Beta"}), fatal->mTitles);

    auto help = component("Help");
    help->SetOemNames("Solo");
    JournalAction* single = add(help->GetOemUninstallActions(), "oem-single");
    EXPECT_TRUE(help->RemoveOEMSharedByContent());
    EXPECT_EQ((std::vector<CStdStr>{"Solo"}), single->mTitles);
}

TEST_F(GenericComponentTest, ABlankDefaultBrandIsNotRecorded) {
    // No language texts: the default brand "%OEM% %ModelName%" comes out as one blank.
    LogCapture capture(machine);
    auto tools = component("Tools");
    tools->SetVersionAllowsInstall(true);
    JournalAction* oem = add(tools->GetOemInstallActions(), "oem");
    tools->Install();
    EXPECT_EQ(1u, oem->mTitles.size());
    EXPECT_FALSE(capture.Has("cannot record")) << capture.Text();
    EXPECT_EQ("", log.GetSpecial("Tools", "OEMSharedBy,Suite"));
}

TEST_F(GenericComponentTest, TitlesNameTheComponentByItsTextOrItsName) {
    LoadEnglishTexts(machine, "[Global]\nINSTALLING=Installing %s\nPACKAGING=Packaging %s\n"
                              "[Components]\nTools=Tools for ^OEM_PRODUCT^\nSuite=The suite\n");
    RunState::SetCurrentOem("Tovar");
    auto tools = component("Tools");
    EXPECT_EQ("Tools for Tovar", tools->DisplayTitle());
    tools->SetParentName("Suite");
    EXPECT_EQ("Tools for Tovar", tools->DisplayTitle());
    tools->SetUseParentName(true);
    EXPECT_EQ("The suite", tools->DisplayTitle());
    // The parent's name goes before a disguise, yet a template instance never takes it; a
    // disguise without a name to hide behind shows nothing.
    tools->SetComponentDisguise(true);
    EXPECT_EQ("The suite", tools->DisplayTitle());
    tools->SetTemplateMold("Suite.Tools#Tools");
    EXPECT_EQ("", tools->DisplayTitle());
    tools->SetDisguiseName("Suite");
    EXPECT_EQ("The suite", tools->DisplayTitle());
    tools->SetComponentDisguise(false);
    EXPECT_EQ("Tools for Tovar", tools->DisplayTitle());
    // A component that the language files do not name has no title; its name is no stand-in.
    EXPECT_EQ("", component("Help")->DisplayTitle());

    // The install list puts the component's title into the run's title.
    auto shown = component("Tools");
    shown->SetVersionAllowsInstall(true);
    shown->SetIpcTransfer(&reporter);
    shown->Install();
    EXPECT_EQ("Installing Tools for Tovar", shownTitle());
    auto packaged = component("Suite");
    packaged->SetVersionAllowsInstall(true);
    packaged->SetIpcTransfer(&reporter);
    packaged->SetPackaging(true);
    packaged->Install();
    EXPECT_EQ("Packaging The suite", shownTitle());

    // Without language texts the key of the title stands for its text.
    NlsFile::Reset();
    auto bare = component("Tools");
    bare->SetVersionAllowsInstall(true);
    bare->SetIpcTransfer(&reporter);
    bare->Install();
    EXPECT_EQ("INSTALLING", shownTitle());
}

TEST_F(GenericComponentTest, SettingsAndUnitsReachEveryDescendant) {
    auto suite = component("Suite");
    TestComponent* tools = adopt(*suite, component("Tools"));
    TestComponent* help = adopt(*tools, component("Help"));
    add(suite->GetInstallActions(), "install", 1);
    add(suite->GetOemInstallActions(), "oem-install", 2);
    add(suite->GetCleanupActions(), "cleanup", 4);
    add(suite->GetPreInstallActions(), "pre", 8);
    add(suite->GetPostInstallActions(), "post", 16);
    add(suite->GetFinishActions(), "finish", 32);
    add(suite->GetUninstallActions(), "uninstall", 64);
    add(suite->GetOemUninstallActions(), "oem-uninstall", 128);
    add(tools->GetInstallActions(), "tools-install", 256);
    add(help->GetUninstallActions(), "help-uninstall", 512);

    EXPECT_EQ(1u + 2 + 4 + 8 + 16 + 32 + 256, suite->GetInstallUnits());
    EXPECT_EQ(64u + 128 + 8 + 16 + 512, suite->GetUninstallUnits());
    // An empty shell is only removed through its children.
    suite->SetEmptyShell(true);
    EXPECT_EQ(512u, suite->GetUninstallUnits());

    suite->SetPackaging(true);
    EXPECT_TRUE(tools->IsPackaging());
    EXPECT_TRUE(help->IsPackaging());
    suite->SetPackaging(false);
    EXPECT_FALSE(help->IsPackaging());

    suite->SetIpcTransfer(&reporter);
    help->SetVersionAllowsInstall(true);
    help->Install();
    EXPECT_EQ("INSTALLING", shownTitle());
}

TEST_F(GenericComponentTest, ChildrenAreFoundByNameAndRequirementsCollectedFromTheTree) {
    auto suite = component("Suite", {"Core"});
    TestComponent* tools = adopt(*suite, component("Tools", {"Core", "Base"}));
    TestComponent* monitor = adopt(*tools, component("Monitor", {"Driver"}));
    TestComponent* help = adopt(*suite, component("Help"));

    EXPECT_EQ(tools, suite->Find("TOOLS", false));
    EXPECT_EQ(help, suite->Find("help", true));
    EXPECT_EQ(nullptr, suite->Find("Monitor", false));
    EXPECT_EQ(monitor, suite->Find("monitor", true));
    EXPECT_EQ(nullptr, suite->Find("Suite", true));

    SortedList<CStdStr> required;
    suite->CollectRequires(required);
    ASSERT_EQ(3u, required.Size());
    EXPECT_EQ("Base", required[0]);
    EXPECT_EQ("Core", required[1]);
    EXPECT_EQ("Driver", required[2]);
}

TEST_F(GenericComponentTest, PreInstallRecordsTheComponentBeforeItsListRuns) {
    auto tools = component("Tools", {"Core"}, "1.5", "C:\\Program Files\\Tools");
    TestComponent* help = adopt(*tools, component("Help"));
    help->SetTemplateMold("Tools.Help#Help2");
    bool recordedFirst = false;
    add(tools->GetPreInstallActions(), "pre")->mOnPerform = [&] {
        CStdStringList users;
        log.GetRequiredBy("Core", users);
        recordedFirst = log.IsComponentInstalled("Tools") && users.ContainsNoCase("Tools");
    };
    add(help->GetPreInstallActions(), "help-pre");
    EXPECT_TRUE(tools->RunPreInstall());

    EXPECT_TRUE(recordedFirst);
    EXPECT_EQ((std::vector<std::string>{"pre", "help-pre"}), journal);
    EXPECT_EQ("C:\\Program Files\\Tools", log.GetSpecial("Tools", "BaseDir"));
    EXPECT_EQ("1.5", log.GetSpecial("Tools", "Version"));
    EXPECT_EQ("", log.GetSpecial("Tools", "TemplateMold"));
    EXPECT_EQ("Tools.Help#Help2", log.GetSpecial("Help", "TemplateMold"));
    CStdStringList children;
    log.GetDependents("Tools", children, false);
    EXPECT_EQ(1u, children.size());
    EXPECT_TRUE(log.IsComponentInstalled("Help"));

    // A package run leaves the log alone, yet runs the lists.
    log.Clear();
    auto packaged = component("Core", {"Base"}, "2.0");
    packaged->SetPackaging(true);
    add(packaged->GetPreInstallActions(), "packaged-pre");
    preInstall(*packaged);
    EXPECT_EQ("packaged-pre", journal.back());
    EXPECT_FALSE(log.IsComponentInstalled("Core"));
    EXPECT_EQ("", log.GetSpecial("Core", "Version"));
    CStdStringList users;
    log.GetRequiredBy("Base", users);
    EXPECT_TRUE(users.empty());
}

TEST_F(GenericComponentTest, InstallFollowsVersionLogAndPlaceHolderFlags) {
    LogCapture capture(machine, logmask::General);
    // An installed newer version skips the component's own lists, never its children's.
    auto tools = component("Tools");
    TestComponent* help = adopt(*tools, component("Help"));
    help->SetVersionAllowsInstall(true);
    add(tools->GetInstallActions(), "tools");
    add(tools->GetOemInstallActions(), "tools-oem");
    add(help->GetInstallActions(), "help");
    preInstall(*tools);
    EXPECT_TRUE(tools->Install());
    EXPECT_EQ((std::vector<std::string>{"help"}), journal);
    EXPECT_TRUE(capture.Has(
            "Tools Install: An newer version of the component already exists on the disk."));
    EXPECT_TRUE(log.IsComponentInstalled("Tools"));
    EXPECT_TRUE(log.IsComponentInstalled("Help"));

    auto quiet = component("Quiet");
    quiet->SetVersionAllowsInstall(true);
    quiet->SetLogIt(false);
    preInstall(*quiet);
    EXPECT_TRUE(quiet->Install());
    EXPECT_FALSE(log.IsComponentInstalled("Quiet"));
    EXPECT_TRUE(capture.Has("Install: not logging component Quiet"));

    // A place holder stays in the log only for the sake of its children.
    auto empty = component("Empty");
    empty->SetPlaceHolder(true);
    preInstall(*empty);
    empty->Install();
    EXPECT_FALSE(log.IsComponentInstalled("Empty"));
    auto holder = component("Holder");
    holder->SetPlaceHolder(true);
    adopt(*holder, component("Held"));
    preInstall(*holder);
    holder->Install();
    EXPECT_TRUE(log.IsComponentInstalled("Holder"));
    EXPECT_TRUE(log.IsComponentInstalled("Held"));
}

TEST_F(GenericComponentTest, AFailedUninstallStopsItsAncestorsButNotItsSiblings) {
    LogCapture capture(machine, logmask::General);
    auto suite = component("Suite");
    TestComponent* broken = adopt(*suite, component("Broken"));
    TestComponent* fine = adopt(*suite, component("Fine"));
    add(suite->GetUninstallActions(), "suite");
    add(broken->GetUninstallActions(), "broken")->FailFatally();
    add(fine->GetUninstallActions(), "fine");
    preInstall(*suite);

    EXPECT_FALSE(suite->Uninstall());
    EXPECT_EQ((std::vector<std::string>{"broken", "fine"}), journal);
    EXPECT_TRUE(capture.Has("Broken: Failed to uninstall component!"));
    EXPECT_TRUE(log.IsComponentInstalled("Suite"));
    EXPECT_TRUE(log.IsComponentInstalled("Broken"));
    EXPECT_FALSE(log.IsComponentInstalled("Fine"));
}

TEST_F(GenericComponentTest, AnEmptyShellAndTheUninstallerKeepTheirOwnListsBack) {
    auto shell = component("Tools");
    TestComponent* help = adopt(*shell, component("Help"));
    shell->SetEmptyShell(true);
    for (TestComponent* each : {static_cast<TestComponent*>(shell.get()), help}) {
        std::string name = each->Name();
        add(each->GetPreInstallActions(), name + "-pre");
        add(each->GetPostInstallActions(), name + "-post");
        add(each->GetUninstallActions(), name + "-uninstall");
        add(each->GetOemUninstallActions(), name + "-oem");
    }
    log.AddComponent("Tools", UninstallLog::kRoot, false);
    log.AddComponent("Help", "Tools", false);
    shell->RunPreUninstall();
    EXPECT_TRUE(shell->Uninstall());
    shell->RunPostUninstall();
    EXPECT_EQ((std::vector<std::string>{"Help-pre", "Help-oem", "Help-uninstall", "Help-post"}),
              journal);
    EXPECT_TRUE(log.IsComponentInstalled("Tools"));
    EXPECT_FALSE(log.IsComponentInstalled("Help"));

    journal.clear();
    auto uninstaller = component("uninstaller");
    add(uninstaller->GetOemUninstallActions(), "uninstaller-oem");
    add(uninstaller->GetUninstallActions(), "uninstaller");
    preInstall(*uninstaller);
    EXPECT_TRUE(uninstaller->Uninstall());
    EXPECT_EQ((std::vector<std::string>{"uninstaller"}), journal);
    EXPECT_FALSE(log.IsComponentInstalled("uninstaller"));
}

TEST_F(GenericComponentTest, SharedPreAndPostActionsRunOnceForTheWholeRun) {
    auto core = component("Core");
    auto tools = component("Tools");
    TestComponent* help = adopt(*tools, component("Help"));
    add(core->GetPreInstallActions(), "stop-monitor");
    add(core->GetPostInstallActions(), "start-monitor");
    add(tools->GetPreInstallActions(), "tools-pre");
    add(help->GetPreInstallActions(), "stop-monitor");
    add(help->GetPostInstallActions(), "start-monitor");
    ActionSet pre;
    ActionSet post;
    core->MergeSharedActions(pre, post);
    tools->MergeSharedActions(pre, post);
    EXPECT_EQ(2u, pre.Size());
    EXPECT_EQ(1u, post.Size());

    preInstall(*core);
    preInstall(*tools);
    core->RunPostInstall();
    tools->RunPostInstall();
    EXPECT_EQ((std::vector<std::string>{"stop-monitor", "tools-pre", "start-monitor"}), journal);
}

TEST_F(GenericComponentTest, AHostMediumCommitsTheLogAfterItsSharedComponents) {
    std::string product = machine.Path("product.ini");
    std::string logPath = UninstallLog::GetLogPath();
    struct Case {
        const char* productKey;
        bool oemCommon;
        bool commits;
    };
    for (const Case& each : {Case{"SuiteHostCD", true, true}, Case{"HostCDSuite", true, false},
                             Case{"SuiteHostCD", false, false}}) {
        SCOPED_TRACE(std::string(each.productKey) + (each.oemCommon ? " common" : " own"));
        os::DeleteFile(logPath);
        ProductIni::Unload();
        ASSERT_TRUE(TestMachine::WriteFile(product, std::string("[GENERAL]\nProductKey=") +
                                                            each.productKey + "\n"));
        ASSERT_TRUE(ProductIni::LoadProductIni(product));
        CStdStringList none;
        CStdStringList platform;
        CStdStringList subs;
        CStdStringList groups;
        CStdStringList templates;
        TestComponent host("Host", "", "", "", each.oemCommon, none, platform, subs, groups,
                           templates);
        preInstall(host);
        host.RunPostInstall();
        EXPECT_EQ(each.commits, TestMachine::Exists(logPath));
    }
    ProductIni::Unload();
}

} // namespace
