#include "EnginePackageSupport.h"
#include "components/CustomFactory.h"
#include "core/IpcTransfer.h"
#include "enginelib/components/ComponentTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

// A package of three top components, one with a sub component and one that hides behind the
// component before it, with the texts that the run shows. The actions are the test's: each
// component's lists are filled before the run, and the run finds the components made.
class EngineInstallRunTest : public EnginePackageTest {
protected:
    IpcTransfer reporter;
    std::vector<std::string> journal;

    void SetUp() override {
        EnginePackageTest::SetUp();
        writeConfig("install.map", "[Components]\nCore=Core.cif\nTools=Tools.cif\nHelp=Tools.cif\n"
                                   "Hidden=Hidden.cif\nUninstaller=Uninstall.cif\n");
        writeConfig("Core.cif", "[Core]\n");
        writeConfig("Tools.cif", "[Tools]\nSubComponents=Help\n[Help]\n");
        writeConfig("Hidden.cif", "[Hidden]\nComponentDisguise=1\n");
        writeConfig("Uninstall.cif", "[Uninstall]\n[Uninstaller]\n");
        os::CreateDirectory(config + "\\nls");
        writeConfig("nls\\en.nls", "[Global]\nREADY_TO_INSTALL=Ready\nINSTALLING=Installing %s\n"
                                   "PACKAGING=Packaging %s\nINSTALL_FINISHING=Finishing\n"
                                   "PACKAGING_FINISHING=Finishing the package\nINSTALL_DONE=Done\n"
                                   "[Components]\nCore=Core files\n");
    }

    std::unique_ptr<Engine> startRun(const std::string& extra = "") {
        auto engine = start("[Install]\nLanguage=en\nCore=1\nTools=1\nHidden=1\n[Tools]\nHelp=1\n"
                            "[OEMProduct]\nName=Acme\n" +
                            extra);
        // As DoInstall does: the run's reporter is handed over once the engine stands.
        engine->SetIpcTransfer(&reporter);
        RunState::SetReporter(&reporter);
        return engine;
    }

    JournalAction* add(ActionSet& list, const std::string& name, std::uint32_t units = 1) {
        JournalAction* action = AddJournalAction(list, name, journal, units);
        action->mReporter = &reporter;
        return action;
    }

    std::uint32_t units(bool total) {
        std::uint32_t value = 0;
        total ? reporter.GetTotalUnits(&value) : reporter.GetCurrentUnits(&value);
        return value;
    }
};

TEST_F(EngineInstallRunTest, EachPhaseRunsForEveryComponentBeforeTheNextPhase) {
    auto engine = startRun();
    engine->getInstallObjects(engine->GetScript()->FindSection("Install"), false, false);
    ASSERT_EQ((std::vector<std::string>{"Core", "Tools", "Hidden", "Uninstaller"}), Names(*engine));
    GenericComponent* core = Component(*engine, "Core");
    auto* help = dynamic_cast<GenericComponent*>(Component(*engine, "Tools")->Find("Help", false));
    ASSERT_NE(nullptr, help);
    std::vector<GenericComponent*> order{core, Component(*engine, "Tools"), help,
                                         Component(*engine, "Hidden")};
    using ListOf = ActionSet& (GenericComponent::*)();
    const std::pair<const char*, ListOf> phases[] = {
            {"cleanup", &GenericComponent::GetCleanupActions},
            {"pre", &GenericComponent::GetPreInstallActions},
            {"install", &GenericComponent::GetInstallActions},
            {"post", &GenericComponent::GetPostInstallActions},
            {"finish", &GenericComponent::GetFinishActions}};
    std::vector<std::string> expected;
    std::map<std::string, JournalAction*> actions;
    for (const auto& [phase, listOf] : phases) {
        for (GenericComponent* component : order) {
            std::string name = component->Name() + "." + phase;
            actions[name] = add((component->*listOf)(), name);
            expected.push_back(name);
        }
    }
    // An action that equals one of a component before runs only there.
    add(core->GetPreInstallActions(), "stop-monitor");
    add(help->GetPreInstallActions(), "stop-monitor");
    expected.insert(std::find(expected.begin(), expected.end(), "Core.pre") + 1, "stop-monitor");

    EXPECT_TRUE(engine->Install());
    // The run's own selection finds the components made before it.
    EXPECT_EQ(4u, engine->GetComponents().size());
    EXPECT_EQ(expected, journal);
    // The total is taken before the shared actions are merged.
    EXPECT_EQ(expected.size() + 1, units(true));
    EXPECT_EQ(expected.size(), units(false));
    EXPECT_EQ((std::vector<std::string>{"Ready"}), actions["Core.cleanup"]->mShownTitles);
    EXPECT_EQ((std::vector<std::string>{"Installing Core files"}),
              actions["Core.install"]->mShownTitles);
    EXPECT_EQ((std::vector<std::string>{"Finishing"}), actions["Core.finish"]->mShownTitles);
    char title[IpcTransfer::kTitleSize] = {};
    reporter.GetCurrentTitle(title);
    EXPECT_STREQ("Done", title);

    // A disguised component takes the name of the last top component that is not disguised.
    for (const auto& [name, disguise] : std::vector<std::pair<const char*, const char*>>{
                 {"Core", ""}, {"Tools", "Core"}, {"Hidden", "Tools"}, {"Uninstaller", "Tools"}}) {
        CStdStr shown;
        Component(*engine, name)->GetDisguiseName(shown);
        EXPECT_EQ(disguise, shown) << name;
        EXPECT_TRUE(log.IsComponentInstalled(name)) << name;
    }
    EXPECT_TRUE(log.IsComponentInstalled("Help"));
    std::string text = runLog();
    EXPECT_EQ(1u, Count(text, "[--PreInstall : "));
    EXPECT_EQ(1u, Count(text, "[--PostInstall : "));
    EXPECT_EQ(1u, Count(text, "[--Finish Install : "));
}

TEST_F(EngineInstallRunTest, AStoppedSpoolerMakesASecondWalkThatThawsWhatFroze) {
    auto engine = startRun();
    engine->getInstallObjects(engine->GetScript()->FindSection("Install"), false, false);
    GenericComponent* core = Component(*engine, "Core");
    GenericComponent* tools = Component(*engine, "Tools");
    add(tools->GetPreInstallActions(), "tools-pre");
    add(core->GetInstallActions(), "before");
    JournalAction* wait = add(core->GetInstallActions(), "wait", 5);
    wait->mFreezes = 1;
    wait->mOnPerform = [] { RunState::SetSpoolerStopped(); };
    add(core->GetInstallActions(), "after");
    add(tools->GetFinishActions(), "tools-finish");

    EXPECT_TRUE(engine->Install());
    EXPECT_EQ((std::vector<std::string>{"tools-pre", "before", "wait", "tools-finish", "wait",
                                        "after"}),
              journal);
    // The frozen action is credited in both walks; the total was counted once.
    EXPECT_EQ(9u, units(true));
    EXPECT_EQ(14u, units(false));
    std::string text = runLog();
    EXPECT_EQ(2u, Count(text, "[--PreInstall : "));
    EXPECT_EQ(2u, Count(text, "[--PostInstall : "));
    EXPECT_EQ(2u, Count(text, "[--Finish Install : "));
    EXPECT_EQ(1u, Count(text, "[--Un-freezing Core : "));
}

TEST_F(EngineInstallRunTest, APackageSectionBuildsAPackageAndLogsNothing) {
    auto engine = startRun("[Package]\n");
    CustomFactory factory(engine->GetScript());
    auto* core = dynamic_cast<GenericComponent*>(
            engine->makeCustomComponent("Core", &factory, 1, false, nullptr, ""));
    ASSERT_NE(nullptr, core);
    JournalAction* install = add(core->GetInstallActions(), "core-install");
    JournalAction* finish = add(core->GetFinishActions(), "core-finish");

    EXPECT_TRUE(engine->Install());
    EXPECT_TRUE(engine->IsPackaging());
    EXPECT_EQ((std::vector<std::string>{"Core", "Tools", "Hidden"}), Names(*engine));
    EXPECT_EQ((std::vector<std::string>{"Packaging Core files"}), install->mShownTitles);
    EXPECT_EQ((std::vector<std::string>{"Finishing the package"}), finish->mShownTitles);
    GenericComponent* tools = Component(*engine, "Tools");
    EXPECT_TRUE(tools->IsPackaging());
    EXPECT_TRUE(tools->GetChild(0)->IsPackaging());
    EXPECT_FALSE(tools->GetLogIt());
    EXPECT_EQ("Acme", tools->GetOemNames());
    for (const char* name : {"Core", "Tools", "Help", "Hidden"}) {
        EXPECT_FALSE(log.IsComponentInstalled(name)) << name;
    }
}

} // namespace
