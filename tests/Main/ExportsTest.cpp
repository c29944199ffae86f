// The exports through the shared library, as a host calls them.
#include "EngineExports.h"
#include "core/CStdStringList.h"
#include "os/Files.h"
#include "support/TestMachine.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

std::u16string Wide(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

class ExportsTest : public ::testing::Test {
protected:
    TestMachine machine;
    std::string package = machine.Path("pkg");

    void SetUp() override {
        // The library has its own simulated machine: the one that the environment names.
        ::setenv("ENGINE_MACHINE", machine.HostDir().c_str(), 1);
        os::CreateDirectory(package);
        os::CreateDirectory(package + "\\Config");
        ASSERT_TRUE(TestMachine::WriteFile(package + "\\Config\\product.ini",
                                           "[GENERAL]\nLogName=t.log\nWatch=NOTEPAD.EXE\n"));
        ASSERT_TRUE(TestMachine::WriteFile(package + "\\Config\\install.map",
                                           "[Components]\nTools=Tools.cif\n"));
        SetWorkingDirA(package.c_str());
    }

    std::string script(const std::string& text) {
        std::string path = machine.Path("setup.isf");
        EXPECT_TRUE(TestMachine::WriteFile(path, text));
        return path;
    }
};

TEST_F(ExportsTest, VersionAndErrorCode) {
    EXPECT_STREQ("14.0.12.0", GetDllVersion());
    EXPECT_EQ(0, GetErrorCode());
    EXPECT_EQ(1, SetupDebugLog(machine.Path("setup.log").c_str()));
    SetTestMode(true);
}

TEST_F(ExportsTest, ValidateScriptInBothWidths) {
    std::string good = script("[Install]\nTools=1\n");
    EXPECT_TRUE(ValidateScriptA(good.c_str()));
    EXPECT_TRUE(ValidateScriptW(Wide(good).c_str()));
    std::string empty = script("[Install]\n");
    EXPECT_FALSE(ValidateScriptA(empty.c_str()));
    EXPECT_FALSE(ValidateScriptA(nullptr));
    EXPECT_FALSE(ValidateScriptW(
            reinterpret_cast<const EngineWChar*>(static_cast<std::uintptr_t>(0x10))));
}

TEST_F(ExportsTest, DoInstallRefusesAScriptWithoutItsSection) {
    std::string empty = script("[Version]\nScriptVersion=14.0.12.0\n[Install]\n");
    EXPECT_FALSE(DoInstallA(empty.c_str(), "", machine.Path("run.log").c_str()));
    std::string log = TestMachine::ReadFile(machine.Path("run.log"));
    EXPECT_NE(std::string::npos,
              log.find("Engine::Initialize: Script file is invalid, File = " + empty));
    EXPECT_NE(std::string::npos, log.find("Engine.Initialize failed. Aborting install."));
    std::string good = script("[Version]\nScriptVersion=14.0.12.0\n[Install]\nTools=1\n");
    EXPECT_TRUE(DoInstallW(Wide(good).c_str(), u"", Wide(machine.Path("run.log")).c_str()));
    EXPECT_FALSE(DoUninstallA(good.c_str(), "", nullptr));
}

TEST_F(ExportsTest, DoUninstallNamesItsOutputFileInTheLog) {
    ASSERT_TRUE(TestMachine::WriteFile(package + "\\Config\\product.ini",
                                       "[GENERAL]\nLogName=t.log\nLogLevel=0x200000\n"));
    ASSERT_TRUE(TestMachine::WriteFile(package + "\\Config\\Uninstall.cif",
                                       "[Uninstall]\nVersion=1.0\n"));
    std::string path = script("[Version]\nScriptVersion=14.0.12.0\n[Uninstall]\nTools=1\n");
    std::string logPath = machine.Path("uninstall.log");
    EXPECT_TRUE(DoUninstallA(path.c_str(), "", logPath.c_str()));
    std::string log = TestMachine::ReadFile(logPath);
    EXPECT_NE(std::string::npos, log.find("outFile    : " + logPath)) << log;
}

TEST_F(ExportsTest, StringResultsAreWrittenOnlyWhenTheyFit) {
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(ENG_NOT_INSTALLABLE,
              GetAvailableModelsA(script("[Install]\nA=1\n").c_str(), buffer, sizeof buffer));
    EXPECT_STREQ("", buffer);
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(ENG_BUFFER_TOO_SMALL, GetAvailableModelsA("x", buffer, 0));
    EXPECT_EQ('#', buffer[0]);
    std::uint32_t level = 77;
    char first[8] = "x";
    char second[8] = "y";
    EXPECT_EQ(ENG_NOT_INSTALLABLE, GetModelInfoA("Model", 7, &level, first, 8, second, 8));
    EXPECT_EQ(77u, level);
    EXPECT_EQ(ENG_NOT_INSTALLABLE, GetComponentStatusA("Tools", buffer, sizeof buffer));
    EngineWChar wide[4] = {u'#', u'#', u'#', u'#'};
    EXPECT_EQ(ENG_NOT_INSTALLABLE, GetComponentStatusW(u"Tools", wide, 4));
    EXPECT_EQ(0, wide[0]);
}

TEST_F(ExportsTest, ModelsComeFromTheInfFilesBesideTheScript) {
    ASSERT_TRUE(TestMachine::WriteFile(
            machine.Path("laser.inf"),
            "[Version]\r\nQM_DRV_OS=MERGED\r\nQM_DRV_MERGED_OS=2000,X64,V32,V64\r\n"
            "[Manufacturer]\r\nValmora=Models,NTamd64\r\n"
            "[Models.NTamd64]\r\n\"Laser 5 (PS)\"=PS,USBPRINT\\Laser5\r\n"
            "\"Laser 5 (PCL)\"=PCL,USBPRINT\\Laser5\r\n\"Inkjet 2\"=PCL\r\n"
            "[PS]\r\nQM_DRV_INFO=PS_DATA\r\n[PCL]\r\nQM_DRV_INFO=PCL_DATA\r\n"
            "[PS_DATA]\r\nQM_DRV_TYPE=PS\r\nQM_DRV_NETSUPPORT=3\r\n"
            "[PCL_DATA]\r\nQM_DRV_TYPE=PCL\r\n"));
    char models[64];
    ASSERT_EQ(0, GetAvailableModelsA(script("[Install]\nA=1\n").c_str(), models, sizeof models));
    EXPECT_STREQ("Inkjet 2\nLaser 5\n", models);
    std::uint32_t level = 0;
    char streams[16];
    char folder[16] = "x";
    ASSERT_EQ(0, GetModelInfoA("Laser 5", 7, &level, streams, sizeof streams, folder,
                               sizeof folder));
    EXPECT_STREQ("PS\nPCL\n", streams);
    EXPECT_STREQ("", folder); // the INF lies in the searched folder itself
    EXPECT_EQ(3u, level);
    // The search took the rows of the running system only: Windows 2000 has none.
    EXPECT_EQ(ENG_NOT_INSTALLABLE,
              GetModelInfoA("Laser 5", 3, &level, streams, sizeof streams, folder, sizeof folder));
}

TEST_F(ExportsTest, ProgressStartsEmpty) {
    std::uint32_t total = 99;
    GetTotalUnits(&total);
    std::uint32_t current = 99;
    GetCurrentUnits(&current);
    char title[1000];
    GetCurrentTitle(title);
    EXPECT_EQ(0u, total);
    EXPECT_EQ(0u, current);
    EXPECT_STREQ("", title);
    EXPECT_EQ(0, GetRebootAlert());
}

TEST_F(ExportsTest, ListsOfTheMachine) {
    CStdStringList* first = FindIPAddresses();
    ASSERT_NE(nullptr, first);
    ASSERT_EQ(1u, first->size());
    EXPECT_EQ("192.168.0.10", (*first)[0]);
    EXPECT_EQ(first, FindIPAddresses());

    EXPECT_EQ(nullptr, FindBusyPrinterApps(nullptr));
    CStdStringList* busy = FindBusyPrinterApps("NoSuchKey");
    ASSERT_NE(nullptr, busy);
    EXPECT_TRUE(busy->empty());
    delete busy;

    CStdStringList* printers = ListPrinters();
    ASSERT_NE(nullptr, printers);
    delete printers;
    CStdStringList* drivers = ListInstalledDrivers();
    ASSERT_NE(nullptr, drivers);
    delete drivers;
}

TEST_F(ExportsTest, BusyApplicationsAreTheTitledWindowsOfWatchedPrograms) {
    std::FILE* file = std::fopen((machine.HostDir() + "/processes.ini").c_str(), "w");
    ASSERT_NE(nullptr, file);
    std::fputs("[3000]\nImage=C:\\Windows\\notepad.exe\nHiddenWindow=hidden\nWindow=\nWindow="
               "Untitled - Notepad\n"
               "Window=Second\n[3004]\nImage=C:\\Windows\\calc.exe\nWindow=Calculator\n",
               file);
    std::fclose(file);
    ::setenv("ENGINE_MACHINE", machine.HostDir().c_str(), 1);
    CStdStringList* busy = FindBusyPrinterApps("Watch");
    ASSERT_NE(nullptr, busy);
    // Only what the header defines inline may be used of the list here.
    EXPECT_EQ((std::vector<std::string>{"Untitled - Notepad"}),
              std::vector<std::string>(busy->begin(), busy->end()));
    delete busy;
}

} // namespace
