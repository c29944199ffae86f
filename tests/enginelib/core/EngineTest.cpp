#include "core/Engine.h"
#include "core/ProductIni.h"
#include "core/RunState.h"
#include "os/Files.h"
#include "os/Process.h"
#include "script/CifDefine.h"
#include "script/IniFile.h"
#include "script/SystemPath.h"
#include "support/TestMachine.h"
#include "system/DebugLog.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/Registry.h"
#include "uninstall/UninstallLog.h"

#include <gtest/gtest.h>

namespace {

class EngineTest : public ::testing::Test {
protected:
    explicit EngineTest(const char* preset = "win7-x64") : machine(preset) {}

    TestMachine machine;
    std::string package = machine.Path("pkg");

    void SetUp() override {
        ProductIni::Unload();
        os::CreateDirectory(package);
        os::CreateDirectory(package + "\\Config");
        SystemPath::SetApplicationDirectoryOverride(package);
        writeProduct("[GENERAL]\nLogName=product.log\n");
        ASSERT_TRUE(TestMachine::WriteFile(package + "\\Config\\install.map",
                                           "[Components]\nTools=Tools.cif\n"));
        ASSERT_TRUE(TestMachine::WriteFile(package + "\\Config\\Uninstall.cif",
                                           "[Uninstall]\nVersion=1.0\n"));
    }

    void TearDown() override {
        ProductIni::Unload();
        SystemPath::SetApplicationDirectoryOverride("");
        DebugLog::Instance().SetFile("");
        // An uninstall's Initialize defers file operations for the rest of the process.
        FileOp::ClearZombieList();
        FileOp::SetZombieMode(false);
    }

    void writeProduct(const std::string& text) {
        ASSERT_TRUE(TestMachine::WriteFile(package + "\\Config\\product.ini", text));
    }

    std::string script(const std::string& text, const std::string& name = "setup.isf") {
        return machine.WriteScratch(name, text);
    }

    static std::string TempLog(const std::string& name) {
        return SystemPath(SystemPath::TempFolder).GetFullPath() + "\\" + name;
    }
};

TEST_F(EngineTest, ScriptsNeedAFilledSectionOfTheirKind) {
    Engine engine(nullptr, "", "", "");
    EXPECT_FALSE(engine.IsScriptValid(machine.Path("absent.isf"), false));
    EXPECT_FALSE(engine.IsScriptValid(script("[Version]\nScriptVersion=14.0.12.0\n"), false));
    EXPECT_FALSE(engine.IsScriptValid(script("[Install]\n[Uninstall]\nA=1\n"), false));
    EXPECT_TRUE(engine.IsScriptValid(script("[Install]\n[Uninstall]\nA=1\n"), true));
    EXPECT_TRUE(engine.IsScriptValid(script("[install]\nTools=1\n"), false));
}

TEST_F(EngineTest, VersionsCompareNumberByNumber) {
    EXPECT_EQ(-1, Engine::CompareVersions("14.0", "14.0.12.0"));
    EXPECT_EQ(1, Engine::CompareVersions("14.0.12.0.1", "14.0.12.0"));
    EXPECT_EQ(0, Engine::CompareVersions("14.0.12.0", "14.0.12.0"));
    EXPECT_EQ(1, Engine::CompareVersions("15", "14.0.12.0"));
    EXPECT_EQ(-1, Engine::CompareVersions("14.0.9.0", "14.0.12.0"));
    EXPECT_EQ(-1, Engine::CompareVersions("x", "14"));
}

TEST_F(EngineTest, AMissingProductIniStopsTheRunWithItsWords) {
    os::DeleteFile(package + "\\Config\\product.ini");
    Engine engine(nullptr, script("[Install]\nA=1\n"), "", "");
    EXPECT_FALSE(engine.Initialize(false));
    std::string log = TestMachine::ReadFile(TempLog("install.log"));
    EXPECT_NE(std::string::npos,
              log.find("invalid product.ini.\t(path: " + package + "\\Config\\product.ini)"));
}

TEST_F(EngineTest, AnEmptyInstallSectionIsRefused) {
    std::string path = script("[Install]\n[Uninstall]\nTools=1\n");
    {
        Engine engine(nullptr, path, "", "");
        EXPECT_FALSE(engine.Initialize(false));
    }
    std::string log = TestMachine::ReadFile(TempLog("product.log"));
    EXPECT_NE(std::string::npos,
              log.find("Engine::Initialize: Script file is invalid, File = " + path));
    Engine uninstall(nullptr, path, "", "");
    EXPECT_TRUE(uninstall.Initialize(true));
}

// A host may run one install after another in one process: nothing the first run learnt may
// steer the second.
TEST_F(EngineTest, ARunStartsWithNothingThatThePreviousRunLearnt) {
    IniFile oldScript;
    RunState::SetScript(&oldScript);
    RunState::SetScriptPath("C:\\old\\setup.isf");
    RunState::SetCurrentComponent("OldComponent");
    RunState::SetCurrentOem("OldBrand");
    RunState::SetPackageDir("C:\\OldPackage");
    RunState::SetSpoolerStopped();
    RunState::AddTemporaryFile("C:\\old.tmp");
    FileOp::SetZombieMode(true);
    UninstallLog::Global().SetCurrentTitle("OldBrand");

    std::string path = script("[Install]\nA=1\n");
    Engine engine(nullptr, path, "", "");
    ASSERT_TRUE(engine.Initialize(false));
    EXPECT_EQ(path, RunState::GetScriptPath());
    EXPECT_EQ("", RunState::GetCurrentComponent());
    EXPECT_EQ("", RunState::GetCurrentOem());
    EXPECT_EQ("", RunState::GetPackageDir());
    EXPECT_FALSE(RunState::IsSpoolerStopped());
    EXPECT_TRUE(RunState::TakeTemporaryFiles().empty());
    EXPECT_FALSE(FileOp::IsZombieModeEnabled());
    EXPECT_EQ("", UninstallLog::Global().GetCurrentTitle());

    // So a define of the component being worked on is this run's, not the last one's.
    CifDefine defines({}, *RunState::GetScript(), true);
    CStdStr value;
    ASSERT_TRUE(defines.GetBuiltinDefine("CURRENT_COMP", value));
    EXPECT_EQ("", value);
}

class EngineOnXpTest : public EngineTest {
protected:
    EngineOnXpTest() : EngineTest("xp") {}
};

TEST_F(EngineOnXpTest, ProductPlatformListDecidesWhetherTheSystemIsSupported) {
    writeProduct("[GENERAL]\nPlatform=9X, NT\n");
    {
        Engine engine(nullptr, script("[Install]\nA=1\n"), "", "");
        EXPECT_FALSE(engine.Initialize(false));
    }
    EXPECT_NE(std::string::npos, TestMachine::ReadFile(TempLog("install.log"))
                                         .find("OS not supported. Halting Engine."));
    ProductIni::Unload();
    writeProduct("[GENERAL]\nPlatform=9X,XPX86\n");
    Engine engine(nullptr, script("[Install]\nA=1\n"), "", "");
    EXPECT_TRUE(engine.Initialize(false));
}

TEST_F(EngineTest, EverySystemFromVistaOnIsAFutureSystemOfTheProduct) {
    writeProduct("[GENERAL]\nPlatform=9X, NT\n");
    Engine engine(nullptr, script("[Install]\nA=1\n"), "", "");
    EXPECT_TRUE(engine.Initialize(false));
}

TEST_F(EngineTest, VariablesReplaceTheirNamesInTheScript) {
    std::string path =
            script("[Version]\nScriptVersion=14.0.12.0\n[Install]\nA=$A$\nB=$B$\nC=$C$\n");
    Engine engine(nullptr, path, "A=1\nB=2=3\nC\n", "");
    ASSERT_TRUE(engine.Initialize(false));
    IniFile* loaded = engine.GetScript();
    EXPECT_EQ("1", loaded->GetValue("Install", "A"));
    EXPECT_EQ("$B$", loaded->GetValue("Install", "B"));
    EXPECT_EQ("$C$", loaded->GetValue("Install", "C"));
}

TEST_F(EngineTest, OldScriptsAreConvertedAndCurrentOnesAreNot) {
    {
        Engine engine(nullptr, script("[Install]\nInstall_Driver=1\nLanguage=German\n"), "", "");
        ASSERT_TRUE(engine.Initialize(false));
        EXPECT_EQ("1", engine.GetScript()->GetValue("Install", "Drivers"));
        EXPECT_EQ("de", engine.GetScript()->GetValue("Install", "Language"));
    }
    for (const char* version : {"14.0.12.0", "15"}) {
        Engine engine(nullptr,
                      script(std::string("[Version]\nScriptVersion=") + version +
                             "\n[Install]\nInstall_Driver=1\n"),
                      "", "");
        ASSERT_TRUE(engine.Initialize(false));
        EXPECT_EQ("1", engine.GetScript()->GetValue("Install", "Install_Driver"));
        EXPECT_EQ("", engine.GetScript()->GetValue("Install", "Drivers"));
    }
}

TEST_F(EngineTest, TheLogFileFollowsOutFile) {
    std::string path = script("[Install]\nA=1\n");
    {
        Engine engine(nullptr, path, "", "");
        ASSERT_TRUE(engine.Initialize(false));
        EXPECT_EQ(TempLog("product.log"), DebugLog::Instance().GetFile());
    }
    std::string saved;
    os::GetCurrentDirectory(saved);
    os::SetCurrentDirectory(machine.Scratch());
    {
        Engine engine(nullptr, path, "", "bare.log");
        ASSERT_TRUE(engine.Initialize(false));
        EXPECT_EQ(machine.Path("bare.log"), DebugLog::Instance().GetFile());
    }
    os::SetCurrentDirectory(saved);
    Engine engine(nullptr, path, "", machine.Path("full\\named.log"));
    ASSERT_TRUE(engine.Initialize(false));
    EXPECT_EQ(machine.Path("full\\named.log"), DebugLog::Instance().GetFile());
    std::string banner = TestMachine::ReadFile(machine.Path("bare.log"));
    EXPECT_NE(std::string::npos, banner.find("| EngineVersion:14.0.12.0 (Rev 3599)"));
    EXPECT_NE(std::string::npos,
              banner.find("| Do the actual install of all software and printers."));
}

TEST_F(EngineTest, LogLevelOnlyAddsBits) {
    DebugLogger& logger = DebugLogger::Instance();
    ASSERT_TRUE(
            Registry().WriteValue("HKLM", "Software\\Tovar", "Log", RegistryValue::Dword(0x20)));
    logger.ReadSettings();
    writeProduct("[GENERAL]\nLogLevel=0x100\n");
    Engine engine(nullptr, script("[Install]\nA=1\n"), "", "");
    ASSERT_TRUE(engine.Initialize(false));
    EXPECT_EQ(0x120u, logger.GetLogBits());
    EXPECT_EQ(0x120u, logger.GetCurrentMask());
    logger.SetLogBits(0);
}

TEST_F(EngineTest, InstallAndUninstallNeedTheirSections) {
    Engine install(nullptr, script("[Install]\nA=1\n"), "", "");
    ASSERT_TRUE(install.Initialize(false));
    EXPECT_TRUE(install.Install());
    Engine uninstall(nullptr, script("[Uninstall]\nA=1\n", "remove.isf"), "", "");
    ASSERT_TRUE(uninstall.Initialize(true));
    EXPECT_TRUE(uninstall.Uninstall());
}

TEST_F(EngineTest, DriversAreInstallableWhenTheirFolderIsThere) {
    writeProduct("[GENERAL]\nDriverDirX64=drivers\\x64, drivers\\other\n");
    Engine engine(nullptr, "", "", "");
    EXPECT_FALSE(engine.IsComponentInstallable("drivers"));
    os::CreateDirectory(package + "\\drivers");
    os::CreateDirectory(package + "\\drivers\\other");
    EXPECT_TRUE(engine.IsComponentInstallable("Drivers"));
}

} // namespace
