#include "script/SystemPath.h"
#include "support/TestMachine.h"
#include "system/Registry.h"
#include "system/RegistryValue.h"

#include <gtest/gtest.h>

namespace {

CStdStr Folder(int code, bool allUsers = true) {
    return SystemPath(code, allUsers).GetFullPath();
}

TEST(SystemPath, FoldersOfAWindows7x64Machine) {
    TestMachine machine("win7-x64");
    EXPECT_EQ("C:\\Program Files\\Common Files", Folder(SystemPath::CommonFiles));
    EXPECT_EQ("C:\\Users\\Public\\Desktop", Folder(SystemPath::Desktop));
    EXPECT_EQ("C:\\Users\\User\\Desktop", Folder(SystemPath::Desktop, false));
    EXPECT_EQ("C:\\Windows\\Driver Cache\\x64", Folder(SystemPath::DriverCache));
    EXPECT_EQ("C:\\Windows\\Fonts", Folder(SystemPath::Fonts));
    EXPECT_EQ("C:\\Windows\\system32\\spool\\drivers\\x64",
              Folder(SystemPath::PrinterDriverFolder));
    EXPECT_EQ("C:\\Windows\\system32\\spool\\drivers\\x64\\3",
              Folder(SystemPath::VersionedDriverFolder));
    EXPECT_EQ("C:\\Windows\\system32\\spool\\prtprocs\\x64",
              Folder(SystemPath::PrintProcessorFolder));
    EXPECT_EQ("C:\\Program Files", Folder(SystemPath::ProgramFiles));
    EXPECT_EQ("C:\\Users\\User\\AppData\\Roaming\\Microsoft\\Windows\\SendTo",
              Folder(SystemPath::SendTo));
    EXPECT_EQ("C:\\Windows\\system32\\spool", Folder(SystemPath::DriverFolderUpTwo));
    EXPECT_EQ("C:\\Windows\\system32\\spool\\drivers", Folder(SystemPath::DriverFolderUpOne));
    EXPECT_EQ("C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs",
              Folder(SystemPath::StartMenuPrograms));
    EXPECT_EQ("C:\\Windows\\system32", Folder(SystemPath::SystemFolder));
    EXPECT_EQ("C:\\Windows\\Inf", Folder(SystemPath::InfFolder));
    EXPECT_EQ("C:", Folder(SystemPath::WindowsDrive));
    EXPECT_EQ("C:\\Users\\User\\AppData\\Local\\Temp", Folder(SystemPath::TempFolder));
    EXPECT_EQ("C:\\Windows", Folder(SystemPath::WindowsFolder));
    EXPECT_EQ("C:\\Windows\\system32\\spool\\drivers\\Win40\\0",
              Folder(SystemPath::Win9xDriverFolder));
    EXPECT_EQ("C:\\Windows\\system32\\spool\\drivers\\x64\\2",
              Folder(SystemPath::DriverFolderVersion2));
    EXPECT_EQ("C:\\ProgramData", Folder(SystemPath::CommonAppData));
    EXPECT_EQ("C:\\Users\\User\\Documents", Folder(SystemPath::MyDocuments));
    EXPECT_EQ("C:\\ProgramData", Folder(SystemPath::AllUsersProfile));
    EXPECT_EQ("C:\\Windows\\SysWOW64", Folder(SystemPath::SysWow64));
}

TEST(SystemPath, FoldersOfAWindows98Machine) {
    TestMachine machine("win98");
    EXPECT_EQ("C:\\WINDOWS\\Desktop", Folder(SystemPath::Desktop));
    EXPECT_EQ("C:\\WINDOWS\\Start Menu\\Programs", Folder(SystemPath::StartMenuPrograms, false));
    EXPECT_EQ("C:\\WINDOWS\\SYSTEM", Folder(SystemPath::PrinterDriverFolder));
    EXPECT_EQ("C:\\WINDOWS\\SYSTEM", Folder(SystemPath::DriverFolderUpTwo));
    EXPECT_EQ("C:\\WINDOWS\\TEMP", Folder(SystemPath::TempFolder));
    EXPECT_EQ("C:\\WINDOWS\\Driver Cache\\i386\\driver.CAB", Folder(SystemPath::DriverCab));
    // Windows 9x knows no all-users profile: the reference stays unexpanded.
    EXPECT_EQ("%ALLUSERSPROFILE%", Folder(SystemPath::AllUsersProfile));
    EXPECT_EQ("", Folder(SystemPath::CommonAppData));
}

TEST(SystemPath, DriverVersionsOfNt4AndXp) {
    {
        TestMachine machine("nt4");
        EXPECT_EQ("C:\\WINNT\\system32\\spool\\drivers\\W32X86\\2",
                  Folder(SystemPath::VersionedDriverFolder));
        EXPECT_EQ("C:\\TEMP", Folder(SystemPath::TempFolder));
    }
    TestMachine machine("xp");
    EXPECT_EQ("C:\\WINDOWS\\system32\\spool\\drivers\\W32X86\\3",
              Folder(SystemPath::VersionedDriverFolder));
    EXPECT_EQ("C:\\WINDOWS\\Driver Cache\\i386\\driver32.CAB", Folder(SystemPath::DriverCab));
    EXPECT_EQ("C:\\Documents and Settings\\All Users\\Application Data",
              Folder(SystemPath::CommonAppData));
}

TEST(SystemPath, ApplicationFolderAndTheMediumAboveIt) {
    TestMachine machine("win7");
    SystemPath::SetApplicationDirectoryOverride("C:\\Package\\Disk1\\install");
    EXPECT_EQ("C:\\Package\\Disk1\\install", Folder(SystemPath::ApplicationFolder));
    EXPECT_EQ("C:\\Package", Folder(SystemPath::MediumRoot));
    EXPECT_EQ("C:\\Package", Folder(SystemPath::MediumRootAlternative));
    SystemPath::SetApplicationDirectoryOverride("");
    EXPECT_FALSE(Folder(SystemPath::ApplicationFolder).empty());
}

TEST(SystemPath, AnUnknownCodeLeavesTheObjectAlone) {
    TestMachine machine("win7");
    SystemPath path(SystemPath::WindowsFolder);
    path.SetPath(99);
    EXPECT_EQ("C:\\Windows", path.GetFullPath());
}

} // namespace

namespace {

TEST(SystemPath, TheInstallSourceOfAProductComesFromItsProgramEntryExpanded) {
    TestMachine machine("xp");
    const char* const key = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Suite";
    EXPECT_EQ("", SystemPath::checkSourceFromRegistry("Suite"));
    Registry registry;
    ASSERT_TRUE(registry.CreateKey("HKLM", key, true));
    ASSERT_TRUE(registry.WriteValue("HKLM", key, "InstallSource",
                                    RegistryValue::String("%SystemDrive%\\Media\\Suite", 2)));
    EXPECT_EQ("C:\\Media\\Suite", SystemPath::checkSourceFromRegistry("Suite"));
    EXPECT_EQ("", SystemPath::checkSourceFromRegistry("Other"));
}

} // namespace
