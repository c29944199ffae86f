#include "script/SystemPath.h"

#include "NlsTestSupport.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

CStdStr Define(const char* name) {
    return SystemPath::GetDefine(name);
}

class SystemPathDefineTest : public nlstest::NlsTest {
protected:
    explicit SystemPathDefineTest(const char* preset = "win7-x64") : NlsTest(preset) {}
    void TearDown() override {
        SystemPath::SetApplicationDirectoryOverride("");
        NlsTest::TearDown();
    }
};

TEST_F(SystemPathDefineTest, FoldersOfAWindows7x64Machine) {
    EXPECT_EQ("C:", Define("WINDOWS_DRIVE"));
    EXPECT_EQ("C:\\Windows", Define("WINDOWS_DIR"));
    EXPECT_EQ("C:\\Windows", Define("windows_dir")) << "names are compared without case";
    EXPECT_EQ("C:\\Windows\\system32", Define("SYSTEM_DIR"));
    EXPECT_EQ("C:\\Program Files", Define("PROGRAMFILES_DIR"));
    EXPECT_EQ("C:\\ProgramData", Define("ALLUSERS_PROFILE_DIR"));
    EXPECT_EQ("C:\\Users\\User\\Documents", Define("CURRENTUSER_DOCUMENTS_DIR"));
    EXPECT_EQ("C:\\Windows\\Fonts", Define("SYSTEMFONTS_DIR"));
    EXPECT_EQ("C:\\Users\\User\\AppData\\Local\\Temp", Define("TEMP_DIR"));
    EXPECT_EQ("C:\\Users\\User\\AppData\\Roaming\\Microsoft\\Windows\\SendTo",
              Define("SENDTO_DIR"));
    EXPECT_EQ("C:\\Users\\User\\Desktop", Define("CURRENTUSER_DESKTOP_DIR"));
    EXPECT_EQ("C:\\Users\\Public\\Desktop", Define("ALLUSERS_DESKTOP_DIR"));
    EXPECT_EQ("C:\\Windows\\system32\\spool\\drivers\\x64", Define("DRIVER_DIR"));
    EXPECT_EQ("C:\\Windows\\system32\\spool\\drivers\\x64\\3", Define("DRIVER_MULTI_OS_DIR"));
    EXPECT_EQ("C:\\Program Files\\Common Files", Define("COMMONFILES_DIR"));
    EXPECT_EQ("C:\\ProgramData", Define("COMMONAPPDATA_DIR"));
    EXPECT_EQ(SystemPath(SystemPath::CurrentFolder).GetFullPath(), Define("CURRENT_DIR"));
}

TEST_F(SystemPathDefineTest, TheMachineOfAWindows7x64System) {
    EXPECT_EQ("FALSE", Define("IS_OS_NT"));
    EXPECT_EQ("x64", Define("OS_ARCH"));
    EXPECT_EQ("SIM-WIN7X64", Define("COMPUTER_NAME"));
    EXPECT_EQ("User", Define("USERNAME"));
    EXPECT_EQ("2800", Define("SYSTEM_CPU"));
    EXPECT_EQ("4096", Define("SYSTEM_MEMORY"));
    EXPECT_EQ("102400", Define("SYSTEM_SPACE"));
    EXPECT_EQ("English", Define("OS_LANG"));
    EXPECT_EQ("en", Define("OS_ISOLANG"));
    EXPECT_EQ("1252", Define("OS_CODEPAGE"));
    EXPECT_EQ("^OEM_PRODUCT^", Define("OEM_PRODUCT"));
}

TEST_F(SystemPathDefineTest, NamesThatAreNoBuiltInDefineGiveNothing) {
    EXPECT_EQ("", Define("INSTALL_DIR"));
    EXPECT_EQ("", Define("PRODUCT_KEY"));
    EXPECT_EQ("", Define("$WINDOWS_DIR$"));
    EXPECT_EQ("", Define(" WINDOWS_DIR"));
    EXPECT_EQ("", Define(""));
}

TEST_F(SystemPathDefineTest, TheCurrentLanguage) {
    EXPECT_EQ("", Define("LANGUAGE"));
    EXPECT_EQ("0", Define("CODEPAGE"));
    EXPECT_EQ("0x0", Define("HEX_LANG"));
    EXPECT_EQ("0", Define("QOR_LANG_CODE"));
    write("pt_BR.nls", "[Global]\nT=x\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "pt_BR"));
    EXPECT_EQ("pt_BR", Define("LANGUAGE"));
    EXPECT_EQ("1252", Define("CODEPAGE"));
    EXPECT_EQ("0x416", Define("HEX_LANG"));
    EXPECT_EQ("1046", Define("QOR_LANG_CODE"));
    // The language of the system is another matter.
    EXPECT_EQ("en", Define("OS_ISOLANG"));
}

TEST_F(SystemPathDefineTest, TheLanguageOfTheSystem) {
    nlstest::SetMachineLocale(machine, 0x0411);
    EXPECT_EQ("Japanese", Define("OS_LANG"));
    EXPECT_EQ("ja", Define("OS_ISOLANG"));
    EXPECT_EQ("932", Define("OS_CODEPAGE"));
    nlstest::SetMachineLocale(machine, 0x0416);
    EXPECT_EQ("Portuguese (Brazil)", Define("OS_LANG"));
    EXPECT_EQ("pt_BR", Define("OS_ISOLANG"));
    // Spanish is outside the language table: the system's own locale data describe it.
    nlstest::SetMachineLocale(machine, 0x0c0a);
    EXPECT_EQ("Spanish", Define("OS_LANG"));
    EXPECT_EQ("es", Define("OS_ISOLANG"));
    EXPECT_EQ("1252", Define("OS_CODEPAGE"));
    nlstest::SetMachineLocale(machine, 0x0841);
    EXPECT_EQ("", Define("OS_LANG"));
    EXPECT_EQ("", Define("OS_ISOLANG"));
    EXPECT_EQ("0", Define("OS_CODEPAGE"));
}

TEST_F(SystemPathDefineTest, TodayAsMonthDayYear) {
    std::time_t now = std::time(nullptr);
    char expected[16];
    std::strftime(expected, sizeof expected, "%m%d%Y", std::localtime(&now));
    CStdStr date = Define("CURRENT_DATE");
    EXPECT_EQ(8, date.GetLength());
    EXPECT_EQ(expected, date);
}

TEST_F(SystemPathDefineTest, TheMediumRootIsGuessedByItsConfiguration) {
    std::string medium = machine.Path("medium");
    for (const char* part :
         {"", "\\install", "\\install\\config", "\\install\\x64", "\\install\\x64\\bin"}) {
        ASSERT_EQ(0u, os::CreateDirectory(medium + part)) << part;
    }
    SystemPath::SetApplicationDirectoryOverride(medium + "\\install\\x64\\bin");
    // Without the product's configuration the program's own folder is the guess.
    EXPECT_EQ(medium + "\\install\\x64\\bin", Define("GUESSED_ROOT_DIR"));
    ASSERT_TRUE(TestMachine::WriteFile(medium + "\\install\\config\\product.ini", "[GENERAL]\n"));
    EXPECT_EQ(medium, Define("GUESSED_ROOT_DIR"));
    EXPECT_EQ(medium + "\\install", Define("CD_ROOT_DIR"));
    SystemPath::SetApplicationDirectoryOverride(medium);
    EXPECT_EQ(medium, Define("GUESSED_ROOT_DIR"));
    // A configuration at the root of the drive is found too.
    SystemPath::SetApplicationDirectoryOverride("C:\\Scratch");
    ASSERT_EQ(0u, os::CreateDirectory("C:\\install"));
    ASSERT_EQ(0u, os::CreateDirectory("C:\\install\\config"));
    ASSERT_TRUE(TestMachine::WriteFile("C:\\install\\config\\product.ini", "[GENERAL]\n"));
    EXPECT_EQ("C:\\", Define("GUESSED_ROOT_DIR"));
}

class SystemPathDefineOnXpTest : public SystemPathDefineTest {
protected:
    SystemPathDefineOnXpTest() : SystemPathDefineTest("xp") {}
};

TEST_F(SystemPathDefineOnXpTest, TheDefinesOfAWindowsXpMachine) {
    EXPECT_EQ("C:\\WINDOWS\\system32\\spool\\drivers\\W32X86\\3", Define("DRIVER_MULTI_OS_DIR"));
    EXPECT_EQ("C:\\WINDOWS\\Driver Cache\\i386\\driver32.CAB", Define("DRIVER_CAB"));
    EXPECT_EQ("FALSE", Define("IS_OS_NT"));
    EXPECT_EQ("x86", Define("OS_ARCH"));
    EXPECT_EQ("SIM-XP", Define("COMPUTER_NAME"));
    EXPECT_EQ("2000", Define("SYSTEM_CPU"));
    EXPECT_EQ("512", Define("SYSTEM_MEMORY"));
    EXPECT_EQ("40960", Define("SYSTEM_SPACE"));
}

class SystemPathDefineOnWindows98Test : public SystemPathDefineTest {
protected:
    SystemPathDefineOnWindows98Test() : SystemPathDefineTest("win98") {}
};

TEST_F(SystemPathDefineOnWindows98Test, TheDefinesOfAWindows98Machine) {
    EXPECT_EQ("C:\\WINDOWS\\Driver Cache\\i386\\driver.CAB", Define("DRIVER_CAB"));
    EXPECT_EQ("", Define("COMMONAPPDATA_DIR"));
    EXPECT_EQ("FALSE", Define("IS_OS_NT"));
    EXPECT_EQ("x86", Define("OS_ARCH"));
    EXPECT_EQ("SIM-WIN98", Define("COMPUTER_NAME"));
    // Windows 9x does not record the processor's speed.
    EXPECT_EQ("0", Define("SYSTEM_CPU"));
    EXPECT_EQ("64", Define("SYSTEM_MEMORY"));
    EXPECT_EQ("2048", Define("SYSTEM_SPACE"));
    EXPECT_EQ("en", Define("OS_ISOLANG"));
}

class SystemPathDefineOnNt4Test : public SystemPathDefineTest {
protected:
    SystemPathDefineOnNt4Test() : SystemPathDefineTest("nt4") {}
};

TEST_F(SystemPathDefineOnNt4Test, OnlyNt4IsNt) {
    EXPECT_EQ("TRUE", Define("IS_OS_NT"));
    EXPECT_EQ("C:\\WINNT\\system32\\spool\\drivers\\W32X86\\2", Define("DRIVER_MULTI_OS_DIR"));
    EXPECT_EQ("400", Define("SYSTEM_CPU"));
}

} // namespace
