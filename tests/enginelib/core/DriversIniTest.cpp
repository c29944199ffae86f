#include "core/DriversIni.h"
#include "script/IniFile.h"
#include "script/OSInfo.h"
#include "support/LogCapture.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

const OSInfo kWin98 = OSInfo::ForCode(OSInfo::Win98);
const OSInfo kNt4 = OSInfo::ForCode(OSInfo::NT4);
const OSInfo kXp = OSInfo::ForCode(OSInfo::WinXP);
const OSInfo kXp64 = OSInfo::ForCode(OSInfo::WinXP, true);
const OSInfo kVista = OSInfo::ForCode(OSInfo::Vista);
const OSInfo kVista64 = OSInfo::ForCode(OSInfo::Vista, true);

class DriversIniTest : public ::testing::Test {
protected:
    void SetUp() override { DriversIni::Reset(); }
    void TearDown() override { DriversIni::Reset(); }

    void load(const std::string& text) {
        std::string path = machine.WriteScratch("drivers.ini", text);
        ASSERT_TRUE(DriversIni::Initialize(path, true));
    }

    TestMachine machine;
};

TEST_F(DriversIniTest, EachSystemHasItsOwnSuffix) {
    EXPECT_EQ("95", DriversIni::OsSuffix(kWin98));
    EXPECT_EQ("NT", DriversIni::OsSuffix(kNt4));
    EXPECT_EQ("2K", DriversIni::OsSuffix(kXp));
    EXPECT_EQ("X64", DriversIni::OsSuffix(kXp64));
    EXPECT_EQ("V32", DriversIni::OsSuffix(kVista));
    EXPECT_EQ("V64", DriversIni::OsSuffix(kVista64));
}

TEST_F(DriversIniTest, ModelsAreSortedOnceEachAndOnlyWhereOffered) {
    load("[Manufacturer]\nValmora\nOther\n"
         "[Valmora]\nZeta 10\nAlpha 5=ignored\n[Other]\nalpha 5\nOld Laser\n"
         "[Old Laser]\nStreams=PCL\nNOT.Supported.95=1\n");
    CStdStringList models;
    DriversIni::GetModels(models, kXp);
    EXPECT_EQ(CStdStringList({"Alpha 5", "Old Laser", "Zeta 10"}), models);
    models.clear();
    DriversIni::GetModels(models, kWin98);
    EXPECT_EQ(CStdStringList({"Alpha 5", "Zeta 10"}), models);
}

TEST_F(DriversIniTest, WithoutManufacturersTheOneSectionIsPrinter) {
    load("[Printer]\nLaser 1\n");
    CStdStringList models;
    DriversIni::GetModels(models, kXp);
    EXPECT_EQ(CStdStringList({"Laser 1"}), models);
}

TEST_F(DriversIniTest, StreamsNamesAndInfFilesBySystem) {
    load("[Printer]\nLaser\n"
         "[Laser]\nStreams=PS , PCL\nPSName=Laser PS\nPCLName.V64=Laser PCL x64\n"
         "PCL5Name=Laser PCL5\nName=Laser\n"
         "PSINFPath.2K=drivers\\win2000\\%LANG%\\laser.inf\nINFPath.V64=drivers\\x64\\laser.inf\n"
         "PCLInf.X64=drivers\\xp64\\pcl.inf\nNWLevel=2\n");
    CStdStringList streams;
    ASSERT_TRUE(DriversIni::GetStreams("laser", streams, kXp));
    EXPECT_EQ(CStdStringList({"PS", "PCL"}), streams);

    CStdStr name;
    ASSERT_TRUE(DriversIni::GetDriverName("Laser", "PS", name, kXp));
    EXPECT_EQ("Laser PS", name);
    ASSERT_TRUE(DriversIni::GetDriverName("Laser", "PCL", name, kVista64));
    EXPECT_EQ("Laser PCL x64", name);
    ASSERT_TRUE(DriversIni::GetDriverName("Laser", "PCL", name, kXp));
    EXPECT_EQ("Laser PCL5", name);
    ASSERT_TRUE(DriversIni::GetDriverName("Laser", "XPS", name, kXp));
    EXPECT_EQ("Laser", name);

    CStdStr inf;
    ASSERT_TRUE(DriversIni::GetInfName("Laser", "PS", inf, kXp));
    EXPECT_EQ(0, inf.Find("drivers\\win2000\\"));
    EXPECT_EQ(-1, inf.Find("%LANG%"));
    ASSERT_TRUE(DriversIni::GetInfName("Laser", "PS", inf, kVista64));
    EXPECT_EQ("drivers\\x64\\laser.inf", inf);
    // A table the search filled names the INF by stream; a query without a stream finds it.
    ASSERT_TRUE(DriversIni::GetInfName("Laser", "", inf, kXp64));
    EXPECT_EQ("drivers\\xp64\\pcl.inf", inf);
    EXPECT_FALSE(DriversIni::GetInfName("Laser", "", inf, kNt4));
    EXPECT_EQ("2", DriversIni::GetModelValue("Laser", "NWLevel", kXp));
}

TEST_F(DriversIniTest, AMissingFileIsLoggedAndAnsweredOnce) {
    LogCapture log(machine.Path("engine.log"));
    EXPECT_FALSE(DriversIni::Initialize(machine.Path("absent.ini"), true));
    EXPECT_TRUE(log.Contains("could not read file " + machine.Path("absent.ini")));
    std::string path = machine.WriteScratch("drivers.ini", "[Printer]\nLaser\n");
    EXPECT_FALSE(DriversIni::Initialize(path, true)); // once per process
    CStdStringList streams;
    EXPECT_FALSE(DriversIni::GetStreams("Laser", streams, kXp));
}

} // namespace
