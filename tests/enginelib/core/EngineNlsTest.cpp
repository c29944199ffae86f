#include "core/Engine.h"
#include "core/ProductIni.h"
#include "enginelib/script/NlsTestSupport.h"
#include "os/Files.h"
#include "script/NlsFile.h"
#include "script/SystemPath.h"
#include "support/TestMachine.h"
#include "system/DebugLog.h"

#include <gtest/gtest.h>

namespace {

// A package folder with Config\product.ini and Config\nls, made the application folder.
class EngineNlsTest : public ::testing::Test {
protected:
    TestMachine machine{"xp"};
    std::string package = machine.Path("pkg");
    std::string nls = package + "\\Config\\nls";

    void SetUp() override {
        ProductIni::Unload();
        NlsFile::Reset();
        for (const std::string& folder : {package, package + "\\Config", nls}) {
            ASSERT_EQ(0u, os::CreateDirectory(folder));
        }
        SystemPath::SetApplicationDirectoryOverride(package);
        ASSERT_TRUE(TestMachine::WriteFile(package + "\\Config\\product.ini", "[GENERAL]\n"));
        ASSERT_TRUE(TestMachine::WriteFile(package + "\\Config\\install.map", "[Components]\nTools=Tools.cif\n"));
    }

    void TearDown() override {
        NlsFile::Reset();
        ProductIni::Unload();
        SystemPath::SetApplicationDirectoryOverride("");
        DebugLog::Instance().SetFile("");
    }

    void writeNls(const std::string& name, const std::string& text) {
        ASSERT_TRUE(TestMachine::WriteFile(nls + "\\" + name, text));
    }

    std::string script(const std::string& text) {
        std::string path = machine.Path("setup.isf");
        EXPECT_TRUE(TestMachine::WriteFile(path, text));
        return path;
    }
};

TEST_F(EngineNlsTest, InitializeNlsLoadsTheLanguageFilesOfTheApplication) {
    EXPECT_FALSE(Engine::InitializeNLS("de")) << "no language file yet";
    writeNls("de.nls", "[Global]\nREADY_TO_INSTALL=Bereit\n");
    EXPECT_TRUE(Engine::InitializeNLS("de"));
    EXPECT_EQ("Bereit", NlsFile::GetText("READY_TO_INSTALL"));
}

TEST_F(EngineNlsTest, TheScriptNamesTheLanguage) {
    writeNls("de.nls", "[Global]\nT=deutsch\n");
    writeNls("en.nls", "[Global]\nT=english\n");
    // An old script's language name is converted before the language is set.
    Engine engine(nullptr, script("[Install]\nA=1\nLanguage=German\n"), "", "");
    ASSERT_TRUE(engine.Initialize(false));
    EXPECT_EQ("de", NlsFile::GetLanguage());
    EXPECT_EQ("deutsch", NlsFile::GetText("T"));
}

TEST_F(EngineNlsTest, WithoutALanguageTheUsersLocaleDecides) {
    writeNls("de.nls", "[Global]\nT=deutsch\n");
    writeNls("en.nls", "[Global]\nT=english\n");
    nlstest::SetMachineLocale(machine, 0x0407);
    Engine engine(nullptr, script("[Version]\nScriptVersion=14.0.12.0\n[Install]\nA=1\n"), "", "");
    ASSERT_TRUE(engine.Initialize(false));
    EXPECT_EQ("de", NlsFile::GetLanguage());
}

TEST_F(EngineNlsTest, ALanguageSetByTheHostStaysWhenTheScriptNamesNone) {
    writeNls("fr.nls", "[Global]\nT=francais\n");
    writeNls("en.nls", "[Global]\nT=english\n");
    ASSERT_TRUE(Engine::InitializeNLS("fr"));
    Engine engine(nullptr, script("[Version]\nScriptVersion=14.0.12.0\n[Install]\nA=1\n"), "", "");
    ASSERT_TRUE(engine.Initialize(false));
    EXPECT_EQ("fr", NlsFile::GetLanguage());
}

TEST_F(EngineNlsTest, TheEngineStartsWithoutAnyLanguage) {
    // No language files at all, and a locale that the system cannot name.
    nlstest::SetMachineLocale(machine, 0x0841);
    Engine engine(nullptr, script("[Install]\nA=1\nLanguage=xx\n"), "", "");
    EXPECT_TRUE(engine.Initialize(false));
    EXPECT_FALSE(NlsFile::IsLoaded());
}

} // namespace
