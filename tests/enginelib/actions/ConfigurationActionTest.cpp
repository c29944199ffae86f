#include "actions/ConfigurationAction.h"

#include "core/ProductIni.h"
#include "core/RunState.h"
#include "os/Files.h"
#include "script/NlsFile.h"
#include "script/SystemPath.h"
#include "support/LogCapture.h"
#include "support/TestMachine.h"
#include "system/Registry.h"

#include <gtest/gtest.h>

namespace {

// A package whose medium root is the scratch folder's "media", with the product "Suite" and
// the configuration key "Valmora" of its language texts.
class ConfigurationActionTest : public ::testing::Test {
protected:
    TestMachine machine;
    LogCapture log{machine.Path("debug.log")};
    Registry registry;
    std::string media = machine.Path("media");

    void SetUp() override {
        RunState::Reset();
        NlsFile::Reset();
        ASSERT_EQ(os::error::Success, os::CreateDirectory(machine.Path("nls")));
        machine.WriteScratch("nls\\en.nls", "[Global]\nOEM_CFG_KEY=Valmora\n");
        ASSERT_TRUE(NlsFile::InitializeFromFiles(machine.Path("nls"), "en_US"));
        machine.WriteScratch("product.ini", "[GENERAL]\nProductKey=Suite\n");
        ASSERT_TRUE(ProductIni::LoadProductIni(machine.Path("product.ini")));
        ASSERT_EQ(os::error::Success, os::CreateDirectory(media));
        ASSERT_EQ(os::error::Success, os::CreateDirectory(media + "\\Setup"));
        SystemPath::SetApplicationDirectoryOverride(media + "\\Setup\\bin");
        ASSERT_EQ(media, SystemPath::GetDefine("CD_ROOT_DIR"));
    }
    void TearDown() override {
        SystemPath::SetApplicationDirectoryOverride("");
        NlsFile::Reset();
        RunState::Reset();
    }

    std::string list(const std::string& entries) {
        return machine.WriteScratch("cfgs.ini", entries);
    }
    static CStdStringList params(std::initializer_list<std::string> items) {
        CStdStringList result;
        for (const std::string& item : items) {
            result.Add(item);
        }
        return result;
    }
    std::string drvCfg(const std::string& realName, const std::string& entry,
                       const char* value) {
        return registry.ReadStringValue(
                "HKLM", "SOFTWARE\\Valmora\\DrvCfg\\" + realName + "\\" + entry, value);
    }
};

TEST_F(ConfigurationActionTest, PrepSystemCopiesLastingFilesAndNamesThemInTheRegistry) {
    machine.WriteScratch("media\\jet.ldc", "jet configuration");
    machine.WriteScratch("office.ldc", "office configuration");
    std::string file = list("[Drivers]\n"
                            "Jet=JetSection\nOffice=OfficeSection\nBlank=BlankSection\n"
                            "[JetSection]\nCfgFile=D:\\moved\\jet.ldc\nCfgEntry=Default\n"
                            "CfgType=Persist\nRealName=Suite Jet\nName=Jet defaults\n"
                            "[OfficeSection]\nCfgFile=" +
                            machine.Path("office.ldc") +
                            "\nCfgEntry=Office\nCfgType=Temporary\nRealName=Suite Office\n"
                            "Name=Office\n"
                            "[BlankSection]\nCfgFile=x.ldc\nCfgEntry=E\nCfgType=Persistent\n"
                            "RealName=Blank\nName=\n");
    ConfigurationAction action(params({"PREPSYSTEMFORCFGS", file}));
    // The operation reports no success of its own, whatever its entries did.
    EXPECT_FALSE(action.Perform("Suite"));

    std::string lasting =
            SystemPath::GetDefine("PROGRAMFILES_DIR") + "\\Suite\\Schemas\\Suite Jet\\persistent.ldc";
    EXPECT_EQ("jet configuration", TestMachine::ReadFile(lasting));
    std::string shortLasting;
    ASSERT_EQ(os::error::Success, os::GetShortPathName(lasting, shortLasting));
    EXPECT_EQ(shortLasting, drvCfg("Suite Jet", "Default", "DCDConfigFile"));
    EXPECT_EQ("Jet defaults", drvCfg("Suite Jet", "Default", "DCDShortDesc"));

    // A passing configuration is named where it lies.
    EXPECT_EQ(machine.Path("office.ldc"), drvCfg("Suite Office", "Office", "DCDConfigFile"));
    // An entry with an empty key is skipped without a word.
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", "SOFTWARE\\Valmora\\DrvCfg\\Blank"));
    EXPECT_FALSE(log.Contains("print object Blank"));

    machine.WriteScratch("missing.ini", "[Drivers]\nJet=J\n[J]\nCfgFile=C:\\none.ldc\n"
                                        "CfgEntry=E\nCfgType=Persistent\nRealName=R\nName=N\n");
    EXPECT_FALSE(ConfigurationAction(params({"PREPSYSTEMFORCFGS", machine.Path("missing.ini")}))
                         .Perform("Suite"));
    EXPECT_TRUE(log.Contains("ERROR unable to prep system print object R with configuration E"));
}

TEST_F(ConfigurationActionTest, CopyForPackageCopiesEveryFileThatIsThere) {
    machine.WriteScratch("a.ldc", "a");
    std::string file = list("[Drivers]\nA=SA\nB=SB\n[SA]\nCfgFile=" + machine.Path("a.ldc") +
                            "\n[SB]\nCfgFile=" + machine.Path("b.ldc") + "\n");
    ConfigurationAction action(params({"COPYCFGSFORPACKAGE", file, machine.Path("package")}));
    EXPECT_TRUE(action.Perform("Suite"));
    EXPECT_EQ("a", TestMachine::ReadFile(machine.Path("package\\a.ldc")));
    EXPECT_TRUE(log.Contains("EnhanceFileCopy: " + machine.Path("package\\a.ldc") + " <success.>"));
    EXPECT_FALSE(ConfigurationAction(params({"COPYCFGSFORPACKAGE", machine.Path("none.ini"),
                                             machine.Path("package")}))
                         .Perform("Suite"));
    EXPECT_FALSE(ConfigurationAction(params({"PREPARE", file})).Perform("Suite"));

    ConfigurationAction same(params({"copycfgsforpackage", file, machine.Path("PACKAGE")}));
    EXPECT_TRUE(action.IsSameAction(&same));
    ConfigurationAction prep(params({"PREPSYSTEMFORCFGS", file, machine.Path("package")}));
    EXPECT_FALSE(action.IsSameAction(&prep));
}

} // namespace
