// `installcli machine show` lists the machine's uninstall log by component.
#include "CliTest.h"
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class MachineShowLogTest : public e2e::CliTest {
protected:
    MachineShowLogTest() : CliTest("showlog") {}

    fs::path log = root / "xp" / "drive_c" / "WINDOWS" / "system32" / "QorFiles.ulf";

    void SetUp() override {
        CliTest::SetUp();
        machine("xp");
    }

    std::string show() {
        e2e::CliResult shown = run("machine show " + (root / "xp").string());
        EXPECT_EQ(0, shown.code) << shown.output;
        return shown.output.substr(shown.output.find("Uninstall log:"));
    }
};

TEST_F(MachineShowLogTest, AMachineWithoutALogSaysSo) {
    EXPECT_EQ("Uninstall log: none (C:\\WINDOWS\\system32\\QorFiles.ulf)\n", show());
}

TEST_F(MachineShowLogTest, ComponentsAreListedWithTheirRecords) {
    // Written in code page 1252, as the engine writes it on this machine.
    std::ofstream(log, std::ios::binary)
            << "[Install]\r\nDriver,Suite=1\r\n\r\n[Driver,Suite]\r\nCommon,Valmora=1\r\n"
               "LPT9:\r\n\r\n[Driver_Files,Suite]\r\nC:\\M\xFCller\\drv.dll=1\r\nC:\\M\xFCller="
               "2\r\n"
               "\r\n[Driver_Reg,Suite,Brand]\r\nHKLM,Software\\Brand=2\r\n\r\n"
               "[Common_Special,Valmora]\r\nShared=1\r\n\r\n[Common_Service,Valmora]\r\n"
               "Spool=1\r\n\r\n[Lost_Files,Suite]\r\nC:\\lost.dll=1\r\n";
    EXPECT_EQ("Uninstall log: C:\\WINDOWS\\system32\\QorFiles.ulf\n"
              "  Driver (Suite)\n"
              "    port       LPT9:\n"
              "    file       C:\\M\xC3\xBCller\\drv.dll\n"
              "    folder     C:\\M\xC3\xBCller\n"
              "    [Brand] reg key    HKLM,Software\\Brand\n"
              "    Common (Valmora), shared\n"
              "      service    Spool\n"
              "      special    Shared = 1\n"
              "  not below Install: Lost_Files,Suite\n",
              show());
}

TEST_F(MachineShowLogTest, AUtf16LogIsReadToo) {
    std::string text = "[Install]\r\nFax,Suite=1\r\n\r\n[Fax_Files,Suite]\r\nC:\\fax.exe=1\r\n";
    std::string bytes = "\xFF\xFE";
    for (char c : text) {
        bytes += c;
        bytes += '\0';
    }
    std::ofstream(log, std::ios::binary) << bytes;
    EXPECT_EQ("Uninstall log: C:\\WINDOWS\\system32\\QorFiles.ulf\n"
              "  Fax (Suite)\n"
              "    file       C:\\fax.exe\n",
              show());
}

} // namespace
