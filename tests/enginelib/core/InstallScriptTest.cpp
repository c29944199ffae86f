// The vocabulary of an install script: which keys are components, which steer the run, and
// which driver, device and printer lines count on install and on uninstall.
#include "core/InstallScript.h"
#include "script/IniFile.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

class InstallScriptTest : public ::testing::Test {
protected:
    TestMachine machine{"xp"};
    std::unique_ptr<IniFile> file;

    const IniFile& read(const std::string& text) {
        std::string path = machine.Path("setup.isf");
        EXPECT_TRUE(TestMachine::WriteFile(path, text));
        file = std::make_unique<IniFile>(path, false);
        return *file;
    }

    static std::vector<std::string> Names(const std::vector<InstallScript::Entry>& entries) {
        std::vector<std::string> names;
        for (const auto& entry : entries) {
            names.push_back(entry.name + "=" + std::to_string(entry.number));
        }
        return names;
    }
};

TEST_F(InstallScriptTest, InstallKeysSplitIntoComponentsAndRunSwitches) {
    const IniFile& script =
            read("[Version]\nScriptVersion=14.0.12.0\n[Install]\nLanguage=de\n"
                 "Drivers=1\nTools=1\nDevices=0\nPrinters=2\nCore=0\nDelete_Ports=3\n"
                 "Default_Printer=Laser 1\nRemoteTempDir=C:\\t\\instdir.tmp\\x\n");
    InstallScript install(script, false);
    EXPECT_EQ("14.0.12.0", install.ScriptVersion());
    EXPECT_EQ("de", install.Language());
    EXPECT_EQ("Laser 1", install.DefaultPrinter());
    EXPECT_EQ("C:\\t\\instdir.tmp\\x", install.RemoteTempDir());
    EXPECT_TRUE(install.WantsDrivers());
    EXPECT_FALSE(install.WantsDevices());
    EXPECT_TRUE(install.WantsDeletePorts());
    EXPECT_FALSE(install.WantsDeletePrinters());
    EXPECT_FALSE(install.WantsPrinters()) << "on install Printers names a component";
    EXPECT_EQ((std::vector<std::string>{"Tools=1", "Printers=2", "Core=0"}),
              Names(install.Components()))
            << "file order, unselected ones too";
}

TEST_F(InstallScriptTest, UninstallReadsItsOwnSectionAndKeepsWhatIsMarkedSo) {
    const IniFile& script =
            read("[Install]\nLanguage=de\n[Uninstall]\nPrinters=1\nTools=1\nScanners=1\n"
                 "[Drivers]\nLaser=0\nInk=1\n[Devices]\nUsb=1\nNet=2\n"
                 "[Printers]\nOffice=0\nHome=1\n[OEMProduct]\nName=Partner\nUninstaller=2\n");
    InstallScript uninstall(script, true);
    EXPECT_EQ("", uninstall.Language()) << "the language belongs to the install";
    EXPECT_TRUE(uninstall.WantsPrinters());
    EXPECT_TRUE(uninstall.WantsScanners());
    EXPECT_EQ((std::vector<std::string>{"Tools=1"}), Names(uninstall.Components()));
    EXPECT_EQ((std::vector<std::string>{"Laser=0", "Ink=1"}), Names(uninstall.Drivers()))
            << "0 means keep, and is still a line of the run";
    EXPECT_EQ((std::vector<std::string>{"Net=2"}), Names(uninstall.Devices()));
    EXPECT_EQ((std::vector<std::string>{"Office=0", "Home=1"}), Names(uninstall.Printers()));
    EXPECT_EQ("Partner", uninstall.OemName());
    EXPECT_TRUE(uninstall.WantsOemUninstaller());

    InstallScript install(script, false);
    EXPECT_EQ((std::vector<std::string>{"Ink=1"}), Names(install.Drivers()));
    EXPECT_EQ((std::vector<std::string>{"Usb=1", "Net=2"}), Names(install.Devices()));
    EXPECT_TRUE(install.Printers().empty());
    EXPECT_FALSE(install.WantsOemUninstaller());
}

TEST_F(InstallScriptTest, DriverAndDeviceSectionsAndDeleteLists) {
    const IniFile& script = read("[Install]\nA=1\n[Laser]\nModel=Tovar L1\nStream=PCL\nAlt9xDrv=1\n"
                                 "AltNTDrv=0\n[Usb]\nPort=USB001\nShare=1\nShareName=L1\n"
                                 "InstallDeviceDriver=0\n[Net]\nInstallDeviceDriver=no\n"
                                 "[DeletePrinters]\na=Old 1\nb=Old 2\n[DeletePorts]\nx=LPT9:\n"
                                 "[Scanners]\nInstallDeviceDriver=1\n");
    InstallScript install(script, false);
    InstallScript::DriverRequest laser = install.Driver("laser");
    EXPECT_EQ("Tovar L1", laser.model);
    EXPECT_EQ("PCL", laser.stream);
    EXPECT_TRUE(laser.alternate9x);
    EXPECT_FALSE(laser.alternateNT);
    InstallScript::DeviceRequest usb = install.Device("Usb");
    EXPECT_EQ("USB001", usb.port);
    EXPECT_TRUE(usb.share);
    EXPECT_EQ("L1", usb.shareName);
    EXPECT_FALSE(usb.installDeviceDriver);
    EXPECT_TRUE(install.Device("Net").installDeviceDriver) << "only 0 stages the driver";
    EXPECT_EQ((CStdStringList{"Old 1", "Old 2"}), install.PrintersToDelete());
    EXPECT_EQ((CStdStringList{"LPT9:"}), install.PortsToDelete());
    EXPECT_EQ("1", install.ScannersInstallDeviceDriver());
    EXPECT_FALSE(install.IsPackage());
    EXPECT_TRUE(InstallScript(read("[Install]\nA=1\n[Package]\n"), false).IsPackage());
}

} // namespace
