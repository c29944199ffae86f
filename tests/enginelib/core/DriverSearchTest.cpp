#include "core/DriverSearch.h"
#include "core/DriversIni.h"
#include "os/Files.h"
#include "script/InfFile.h"
#include "script/IniFile.h"
#include "script/OSInfo.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

const char* const kProductInf =
        "[Version]\r\nClass=Printer\r\nQM_DRV_OS=MERGED\r\nQM_DRV_MERGED_OS=2000, X64 ,V32\r\n"
        "[Manufacturer]\r\n%Maker%=Models,NTamd64\r\n"
        "[Models]\r\n\"Laser 5 (PS)\"=PS_INSTALL,USBPRINT\\ValmoraLaser5\r\n"
        "\"Laser 5 (PCL)\"=PCL_INSTALL,LPTENUM\\ValmoraLaser5\r\n"
        "[Models.NTamd64]\r\n\"Laser 5 (PS)\"=PS_INSTALL,USBPRINT\\ValmoraLaser5\r\n"
        "[PS_INSTALL]\r\nQM_DRV_INFO=PS_DATA\r\n[PCL_INSTALL]\r\nQM_DRV_INFO=PCL_DATA\r\n"
        "[PS_DATA]\r\nQM_DRV_TYPE=PS\r\nQM_DRV_TYPE_DISPLAYSTR=%PsText%\r\nQM_DRV_NETSUPPORT=2\r\n"
        "QM_DRV_DEFAULT.2K=1\r\n"
        "[PCL_DATA]\r\nQM_DRV_TYPE=PCL\r\nQM_DRV_INSTALL.95=0\r\n"
        "[Strings]\r\nMaker=Valmora\r\nPsText=PostScript\r\n";

class DriverSearchTest : public ::testing::Test {
protected:
    void SetUp() override {
        DriversIni::Reset();
        DriversIni::Initialize("", false);
    }
    void TearDown() override { DriversIni::Reset(); }

    TestMachine machine;
};

TEST_F(DriverSearchTest, TheSystemWordOfAnInf) {
    InfFile inf(machine.WriteScratch("p.inf", kProductInf), false);
    EXPECT_EQ("2K", DriverSearch::InfOsWord(inf, OSInfo::ForCode(OSInfo::WinXP)));
    EXPECT_EQ("X64", DriverSearch::InfOsWord(inf, OSInfo::ForCode(OSInfo::WinXP, true)));
    EXPECT_EQ("V32", DriverSearch::InfOsWord(inf, OSInfo::ForCode(OSInfo::Vista)));
    // Vista x64 is not in the list: the word stays MERGED, which serves no system.
    EXPECT_EQ("", DriverSearch::InfOsWord(inf, OSInfo::ForCode(OSInfo::Vista, true)));
    InfFile plain(machine.WriteScratch("q.inf", "[Version]\r\nQM_DRV_OS=9x\r\n"), false);
    EXPECT_EQ("95", DriverSearch::InfOsWord(plain, OSInfo::ForCode(OSInfo::Win98)));
}

TEST_F(DriverSearchTest, AFilledTableAnswersAsDriversIniWould) {
    std::string folder = machine.Scratch() + "\\printer";
    ASSERT_EQ(os::error::Success, os::CreateDirectory(folder));
    ASSERT_TRUE(TestMachine::WriteFile(folder + "\\laser.inf", kProductInf));
    OSInfo xp = OSInfo::ForCode(OSInfo::WinXP);
    DriverSearch::ParseFolders({folder}, machine.Scratch(), xp);

    CStdStringList models;
    DriversIni::GetModels(models, xp);
    EXPECT_EQ(CStdStringList({"Laser 5"}), models);
    CStdStringList streams;
    ASSERT_TRUE(DriversIni::GetStreams("Laser 5", streams, xp));
    EXPECT_EQ(CStdStringList({"PS", "PCL"}), streams);
    CStdStr inf;
    ASSERT_TRUE(DriversIni::GetInfName("Laser 5", "", inf, xp));
    EXPECT_EQ("printer\\laser.inf", inf);
    CStdStr name;
    ASSERT_TRUE(DriversIni::GetDriverName("Laser 5", "PS", name, xp));
    EXPECT_EQ("Laser 5 (PS)", name);
    EXPECT_EQ("2", DriversIni::GetModelValue("Laser 5", "NWLevel", xp));
    EXPECT_EQ("PS", DriversIni::GetModelValue("Laser 5", "DefaultDriver", xp));
    EXPECT_EQ("USBPRINT\\USBPRINT\\ValmoraLaser5",
              DriversIni::Table().GetValue("Laser 5", "PSPNPId"));
    EXPECT_EQ("PostScript", DriversIni::Table().GetValue("Laser 5", "PSDisplay.2K"));
    EXPECT_EQ("1", DriversIni::Table().GetValue("Laser 5", "PCL.NOT.Supported.95"));
}

TEST_F(DriverSearchTest, InfsAndTheirHardwareIdsArePaired) {
    machine.WriteScratch("a.inf", kProductInf);
    machine.WriteScratch("notes.txt", "[Manufacturer]\r\n");
    std::vector<std::pair<CStdStr, CStdStr>> pairs;
    DriverSearch::LocateAllInfs(machine.Scratch(), pairs);
    ASSERT_FALSE(pairs.empty());
    EXPECT_EQ(machine.Path("a.inf"), pairs[0].first);
}

} // namespace
