// product.ini as the engine reads it on machines of different systems: the driver folder key,
// the system requirement table, the named keys and their defaults.
#include "core/ProductIni.h"
#include "script/SystemPath.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

class ProductIniTest : public ::testing::Test {
protected:
    std::unique_ptr<TestMachine> machine;

    void TearDown() override { ProductIni::Unload(); }

    // A fresh machine of `preset` with product.ini holding `text`, loaded.
    void load(const std::string& preset, const std::string& text) {
        ProductIni::Unload();
        machine.reset();
        machine = std::make_unique<TestMachine>(preset);
        std::string path = machine->Path("product.ini");
        ASSERT_TRUE(TestMachine::WriteFile(path, text));
        ASSERT_TRUE(ProductIni::LoadProductIni(path));
    }

    static CStdStr DriverDir() {
        CStdStr folders;
        ProductIni::GetDriverDir(folders);
        return folders;
    }
};

TEST_F(ProductIniTest, EachSystemTakesItsDriverFolderKey) {
    const std::string all = "[GENERAL]\nDriverDir9X=d9x\nDriverDirNT=dnt\nDriverDir2K=d2k\n"
                            "DriverDirXP=dxp\nDriverDirX64=dx64\n";
    const std::pair<const char*, const char*> expected[] = {
            {"win98", "d9x"}, {"nt4", "dnt"},       {"win2000", "d2k"},   {"xp", "dxp"},
            {"vista", "d2k"}, {"win7-x64", "dx64"}, {"server2003", "d2k"}};
    for (const auto& [preset, folder] : expected) {
        load(preset, all);
        EXPECT_EQ(folder, DriverDir()) << preset;
    }
    load("xp", "[GENERAL]\nDriverDir2K=d2k\n");
    EXPECT_EQ("d2k", DriverDir()) << "XP falls back to the 2000 folders";
    load("vista", "[GENERAL]\nDriverDirXP=dxp\n");
    CStdStr none;
    EXPECT_FALSE(ProductIni::GetDriverDir(none)) << "Vista never reads the XP key";
}

TEST_F(ProductIniTest, SystemRequirementsKeepTheKeysOfTheRunningSystem) {
    const std::string text = "[GENERAL]\nLogName=x.log\n[SYSTEM_REQUIREMENT]\n"
                             "Memory=$SYSTEM_MEMORY$\nDisk.XP=500\nDisk.VISTA=2000\nDisk.WIN7=9\n"
                             "Cpu.2K=300\nOther.BOGUS=1\n";
    load("xp", text);
    auto table = ProductIni::SystemRequirements();
    EXPECT_EQ("512", table["Memory"]) << "values resolve through the defines";
    EXPECT_EQ("500", table["Disk"]);
    EXPECT_EQ(0u, table.count("Cpu"));
    EXPECT_EQ(0u, table.count("Other")) << "an unknown system is no system";
    EXPECT_EQ(0u, table.count("Other.BOGUS"));

    load("win7", text);
    table = ProductIni::SystemRequirements();
    EXPECT_EQ("2000", table["Disk"]) << "Windows 7 carries the Vista token, not a WIN7 suffix";
    load("server2003", text);
    EXPECT_EQ("300", ProductIni::SystemRequirements()["Cpu"]) << "2003 carries the 2000 token";
    ProductIni::Unload();
    EXPECT_TRUE(ProductIni::SystemRequirements().empty());
}

TEST_F(ProductIniTest, NamedKeysAndTheirDefaults) {
    load("xp", "[GENERAL]\nLogName=mine.log\nLogLevel=0x30\nUseDriversIni=1\nConvertOldLog=0\n"
               "Platform= XP , VISTA\nSpooler=app1.exe, App2.EXE\n"
               "[VARIABLES]\nDEFAULT_PRINT_INF=print.inf\nLocalScanPath=scan\\a, scan\\b\n"
               "[DEVICES]\nLaser=laser.inf, USBPRINT\\VALMORA1 , extra\nBare=bare.inf\n"
               "[ARP_INFORMATION]\nPublisher=Valmora\nHelpLink=%NLS.HELP%\n");
    EXPECT_EQ("mine.log", ProductIni::LogName());
    std::uint32_t bits = 0;
    EXPECT_TRUE(ProductIni::LogLevel(bits));
    EXPECT_EQ(0x30u, bits);
    EXPECT_TRUE(ProductIni::UseDriversIni());
    EXPECT_FALSE(ProductIni::ConvertOldLog());
    EXPECT_EQ((CStdStringList{"XP", "VISTA", "FUTURE_OS"}), ProductIni::Platforms());
    EXPECT_EQ((CStdStringList{"app1.exe", "App2.EXE"}), ProductIni::ProgramList("Spooler"));
    EXPECT_EQ("print.inf", ProductIni::DefaultPrintInf());
    EXPECT_EQ((CStdStringList{"scan\\a", "scan\\b"}), ProductIni::LocalScanPaths());
    CStdStr inf;
    CStdStr pnp;
    EXPECT_TRUE(ProductIni::DeviceInf("laser", inf, pnp));
    EXPECT_EQ("laser.inf", inf);
    EXPECT_EQ("USBPRINT\\VALMORA1", pnp);
    EXPECT_TRUE(ProductIni::DeviceInf("Bare", inf, pnp));
    EXPECT_EQ("", pnp);
    EXPECT_FALSE(ProductIni::DeviceInf("Absent", inf, pnp));
    auto arp = ProductIni::ArpInformation();
    ASSERT_EQ(2u, arp.size());
    EXPECT_EQ("HelpLink", arp[1].first);

    load("xp", "[GENERAL]\nProductKey=Suite\n");
    EXPECT_EQ("install.log", ProductIni::LogName());
    EXPECT_FALSE(ProductIni::LogLevel(bits));
    EXPECT_FALSE(ProductIni::UseDriversIni());
    EXPECT_TRUE(ProductIni::ConvertOldLog());
    EXPECT_TRUE(ProductIni::IsPlatformSupported()) << "no Platform key: every system";
    EXPECT_TRUE(ProductIni::ArpInformation().empty());
}

TEST_F(ProductIniTest, TheImageIsReadOncePerProcess) {
    load("xp", "[GENERAL]\nProductKey=First\n");
    std::string path = machine->Path("product.ini");
    ASSERT_TRUE(TestMachine::WriteFile(path, "[GENERAL]\nProductKey=Second\n"));
    EXPECT_TRUE(ProductIni::LoadProductIni(path));
    EXPECT_EQ("First", ProductIni::ProductKey());
    ProductIni::Unload();
    EXPECT_FALSE(ProductIni::LoadProductIni(machine->Path("absent.ini")));
    ASSERT_TRUE(TestMachine::WriteFile(path, ""));
    EXPECT_FALSE(ProductIni::LoadProductIni(path)) << "an empty file is no product";
}

} // namespace
