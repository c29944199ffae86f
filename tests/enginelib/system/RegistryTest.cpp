#include "system/Registry.h"
#include "sim/SimMachine.h"
#include "support/TestMachine.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <gtest/gtest.h>

namespace {

class RegistryTest : public ::testing::Test {
protected:
    TestMachine machine;
    Registry registry;
};

TEST_F(RegistryTest, WriteValueMakesTheKeyAndReadsBackEveryType) {
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", "Software\\Maker\\Product"));
    ASSERT_TRUE(registry.WriteValue("HKLM", "Software\\Maker\\Product", "Path",
                                    RegistryValue::String("C:\\Program Files\\Maker")));
    ASSERT_TRUE(registry.WriteValue("HKLM", "Software\\Maker\\Product", "Count",
                                    RegistryValue::Dword(12)));
    RegistryValue binary;
    binary.type = 3;
    binary.bytes = {'a', 'b', 'c'};
    ASSERT_TRUE(registry.WriteValue("HKLM", "Software\\Maker\\Product", "Raw", binary));
    EXPECT_TRUE(registry.DoesKeyExist("hklm", "software\\MAKER\\product"));
    EXPECT_TRUE(registry.DoesValueExist("HKLM", "Software\\Maker\\Product", "PATH"));
    EXPECT_EQ("C:\\Program Files\\Maker",
              registry.ReadStringValue("HKLM", "Software\\Maker\\Product", "path"));
    EXPECT_EQ("12", registry.ReadStringValue("HKLM", "Software\\Maker\\Product", "Count"));
    EXPECT_EQ("abc", registry.ReadStringValue("HKLM", "Software\\Maker\\Product", "Raw"));
    RegistryValue multi;
    multi.type = 7;
    EXPECT_FALSE(registry.WriteValue("HKLM", "Software\\Maker\\Product", "Multi", multi));
    RegistryValue read;
    EXPECT_FALSE(registry.ReadValue("HKLM", "Software\\Maker\\Product", "Absent", read));
    EXPECT_FALSE(registry.ReadValue("HKXX", "Software", "x", read));
}

TEST_F(RegistryTest, MultiStringsAreReadButNotWritten) {
    RegistryValue value;
    ASSERT_TRUE(registry.ReadValue("HKLM",
                                   "SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName",
                                   "ComputerName", value));
    EXPECT_EQ(1u, value.type);
    EXPECT_EQ("SIM-WIN7X64", value.text);
    // PendingFileRenameOperations is the multi-string that Windows itself keeps.
    std::ofstream faults(machine.HostDir() + "/registry.reg", std::ios::app);
    faults << "\n[HKEY_LOCAL_MACHINE\\Software\\Multi]\n\"List\"=hex(7):61,00,00,00,62,00,00,00,00,"
              "00\n";
    faults.close();
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
    ASSERT_TRUE(registry.ReadValue("HKLM", "Software\\Multi", "List", value));
    EXPECT_EQ((CStdStringList{"a", "b"}), value.strings);
}

TEST_F(RegistryTest, EmptyKeysGoAndTheirEmptyParentsWithThem) {
    ASSERT_TRUE(registry.CreateKey("HKCU", "Software\\A\\B\\C", false));
    ASSERT_TRUE(registry.WriteValue("HKCU", "Software\\A", "keep", RegistryValue::Dword(1)));
    EXPECT_FALSE(registry.DeleteEmptyKey("HKCU", "Software\\A", false));
    EXPECT_TRUE(registry.DeleteEmptyKey("HKCU", "Software\\A\\B\\C", true));
    EXPECT_FALSE(registry.DoesKeyExist("HKCU", "Software\\A\\B"));
    EXPECT_TRUE(registry.DoesKeyExist("HKCU", "Software\\A"));
}

TEST_F(RegistryTest, CleanLeavesKeysWithValuesAndWipeTakesAll) {
    ASSERT_TRUE(registry.CreateKey("HKLM", "Software\\T\\Empty\\Deeper", false));
    ASSERT_TRUE(
            registry.WriteValue("HKLM", "Software\\T\\Full\\Inner", "v", RegistryValue::Dword(1)));
    ASSERT_TRUE(registry.CreateKey("HKLM", "Software\\T\\Full\\Inner\\Leaf", false));
    registry.CleanEmptyKeys("HKLM", "Software\\T");
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", "Software\\T\\Empty"));
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", "Software\\T\\Full\\Inner\\Leaf"));
    EXPECT_TRUE(registry.DoesKeyExist("HKLM", "Software\\T\\Full\\Inner"));
    EXPECT_TRUE(registry.WipeOutKey("HKLM", "Software\\T"));
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", "Software\\T"));
}

TEST_F(RegistryTest, EnumerateListsSubkeysAndValues) {
    ASSERT_TRUE(
            registry.WriteValue("HKU", ".DEFAULT\\Software\\E\\Sub", "x", RegistryValue::Dword(1)));
    ASSERT_TRUE(registry.WriteValue("HKU", ".DEFAULT\\Software\\E", "y", RegistryValue::Dword(2)));
    CStdStringList subkeys;
    CStdStringList values;
    ASSERT_TRUE(registry.Enumerate("HKU", ".DEFAULT\\Software\\E", subkeys, values));
    EXPECT_EQ((CStdStringList{"Sub"}), subkeys);
    EXPECT_EQ((CStdStringList{"y"}), values);
    EXPECT_FALSE(registry.Enumerate("HKU", ".DEFAULT\\Software\\None", subkeys, values));
    EXPECT_TRUE(registry.IsKeyEmpty("HKU", ".DEFAULT\\Software\\E\\Sub") == false);
}

TEST_F(RegistryTest, ClassesRootIsTheViewOfTheMachinesClasses) {
    ASSERT_TRUE(registry.WriteValue("HKLM", "Software\\Classes\\.qor", "",
                                    RegistryValue::String("QorFile")));
    EXPECT_EQ("QorFile", registry.ReadStringValue("HKCR", ".qor", ""));
    ASSERT_TRUE(registry.WriteValue("HKCU", "Software\\Classes\\.qor", "",
                                    RegistryValue::String("UserFile")));
    EXPECT_EQ("UserFile", registry.ReadStringValue("HKCR", ".qor", ""));
}

TEST_F(RegistryTest, InheritedPermissionsAreKept) {
    ASSERT_TRUE(registry.CreateKey("HKLM", "Software\\Perm\\Child", true));
    os::HKey key = 0;
    ASSERT_EQ(os::error::Success,
              registry.openKey("HKLM", "Software\\Perm\\Child", os::regaccess::Read, key));
    std::string security;
    ASSERT_EQ(os::error::Success, os::RegGetKeySecurity(key, security));
    os::RegCloseKey(key);
    EXPECT_EQ("D:(A;CI;KA;;;BA)(A;CI;KA;;;SY)(A;CI;KR;;;BU)", security);
}

TEST_F(RegistryTest, AKeyMarkedInFaultsRefusesWrites) {
    std::ofstream faults(machine.HostDir() + "/faults.ini");
    faults << "[Registry]\nDenyWrite=HKLM\\SOFTWARE\\Locked\n";
    faults.close();
    ASSERT_TRUE(registry.CreateKey("HKLM", "Software\\Locked", false));
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
    Registry fresh;
    EXPECT_TRUE(fresh.DoesKeyExist("HKLM", "Software\\Locked"));
    EXPECT_FALSE(fresh.WriteValue("HKLM", "Software\\Locked", "x", RegistryValue::Dword(1)));
    EXPECT_FALSE(fresh.WriteValue("HKLM", "Software\\Locked\\Below", "x", RegistryValue::Dword(1)));
    os::HKey key = 0;
    EXPECT_EQ(os::error::AccessDenied,
              fresh.openKey("HKLM", "Software\\Locked", os::regaccess::AllAccess, key));
}

TEST_F(RegistryTest, RemoteComputersAreOtherMachinesOfTheNetwork) {
    std::string other = machine.MakeOtherMachine("PRINTSRV", "server2003");
    std::ofstream ini(machine.HostDir() + "/machine.ini", std::ios::app);
    ini << "\n[Network]\nPRINTSRV=" << other << "\n";
    ini.close();
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;

    Registry remote("\\\\printsrv");
    ASSERT_TRUE(remote.WriteValue("HKLM", "Software\\Remote", "v", RegistryValue::Dword(5)));
    ASSERT_TRUE(
            remote.WriteValue("HKLM", "Software\\Classes\\.rem", "", RegistryValue::String("R")));
    EXPECT_EQ("R", remote.ReadStringValue("HKCR", ".rem", ""));
    EXPECT_EQ("PRINTSRV",
              remote.ReadStringValue(
                      "HKLM", "SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName",
                      "ComputerName"));
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", "Software\\Remote"));

    Registry unknown("NOSUCHPC");
    EXPECT_FALSE(unknown.DoesKeyExist("HKLM", "Software"));
    EXPECT_EQ(0u, unknown.getRootKey("HKLM"));
    sim::SimMachine::Release();
    std::ifstream saved(other + "/registry.reg");
    std::string text((std::istreambuf_iterator<char>(saved)), std::istreambuf_iterator<char>());
    EXPECT_NE(std::string::npos, text.find("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Remote]"));
}

} // namespace

TEST_F(RegistryTest, AKeyNested100000DeepIsRefusedAtOnce) {
    std::string deep = "Software\\Deep";
    for (int level = 0; level < 100000; ++level) {
        deep += "\\k";
    }
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(registry.WriteValue("HKLM", deep, "v", RegistryValue::Dword(1)));
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", deep));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    // The registry is still whole and still written.
    ASSERT_TRUE(registry.WriteValue("HKLM", "Software\\Deep", "v", RegistryValue::Dword(1)));
    sim::SimMachine::Release();
    std::ifstream file(machine.HostDir() + "/registry.reg");
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    size_t key = text.find("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Deep]\n");
    ASSERT_NE(std::string::npos, key);
    EXPECT_LT(key, text.find("\"v\"=dword:00000001", key));
}
