#include "actions/EnvVariableAction.h"
#include "actions/RegistryAction.h"

#include "core/RunState.h"
#include "os/Process.h"
#include "sim/SimMachine.h"
#include "support/LogCapture.h"
#include "support/SuiteLog.h"
#include "support/TestMachine.h"
#include "system/Registry.h"
#include "uninstall/ItemType.h"
#include "uninstall/UninstallLog.h"

#include <fstream>
#include <iterator>
#include <gtest/gtest.h>

namespace {

const char* const kSystemEnvironment =
        "System\\CurrentControlSet\\Control\\Session Manager\\Environment";

class RegistryActionTest : public ::testing::Test {
protected:
    explicit RegistryActionTest(const char* preset = "win7-x64") : machine(preset) {}

    TestMachine machine;
    Registry registry;
    UninstallLog& uninstall = UninstallLog::Global();
    LogCapture log{machine.Path("debug.log")};

    void SetUp() override {
        RunState::Reset();
        StartSuiteLog(uninstall);
        UninstallLog::SetParentComponent("Tools");
    }
    void TearDown() override {
        uninstall.Clear();
        RunState::Reset();
    }

    static CStdStringList list(std::initializer_list<std::string> params) {
        CStdStringList items;
        for (const std::string& param : params) {
            items.Add(param);
        }
        return items;
    }
    bool run(std::initializer_list<std::string> params, const char* title = "Suite") {
        RegistryAction action(list(params));
        return action.Perform(title);
    }
    bool env(std::initializer_list<std::string> params) {
        EnvVariableAction action(list(params));
        return action.Perform("Suite");
    }
    CStdStringList logged() {
        CStdStringList items;
        uninstall.GetItems(itemtype::RegValue, "Tools", items);
        return items;
    }
    RegistryValue read(const char* root, const char* key, const char* name) {
        RegistryValue value;
        EXPECT_TRUE(registry.ReadValue(root, key, name, value)) << key << "\\" << name;
        return value;
    }
    // The variable as a process started now on the machine has it.
    std::string variable(const char* name) {
        std::string why;
        EXPECT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
        std::string value;
        return os::GetEnvironmentVariable(name, value) == os::error::Success ? value : "(none)";
    }
    void faults(const std::string& text) {
        std::ofstream(machine.HostDir() + "/faults.ini") << text;
        std::string why;
        ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
    }
    std::string journal() const {
        std::ifstream in(machine.HostDir() + "/journal.log");
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
};

TEST_F(RegistryActionTest, ReadsItsLineAndComparesWithoutCase) {
    RegistryAction action(list({"wipeout", "HKLM", "Software\\A", "v", "STR", "x", "FALSE"}));
    EXPECT_EQ(RegistryAction::WipeOut, action.GetOperation());
    EXPECT_FALSE(action.GetLogItem());
    EXPECT_EQ(1u, action.GetUnits());
    EXPECT_EQ(RegistryAction::Add, RegistryAction(list({"upsert"})).GetOperation());

    RegistryAction same(list({"WIPEOUT", "hklm", "software\\a", "V", "str", "X", ";"}));
    EXPECT_TRUE(action.IsSameAction(&same));
    RegistryAction other(list({"DELETE", "HKLM", "Software\\A", "v", "STR", "x"}));
    EXPECT_FALSE(action.IsSameAction(&other));
    EnvVariableAction variable(list({"UPDATE", "v", "x", "AllUsers"}));
    EXPECT_FALSE(action.IsSameAction(&variable));
}

TEST_F(RegistryActionTest, AddWritesEveryTypeAndRecordsTheValue) {
    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\Valmora\\Suite", "Path", "STR", "C:\\Suite"}));
    ASSERT_TRUE(run({"add", "HKLM", "Software\\Valmora\\Suite", "Home", "STRX", "%SystemRoot%"}));
    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\Valmora\\Suite", "Raw", "BINARY", "ab\x01"}));
    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\Valmora\\Suite", "Count", "DWORD", " 42abc"}));
    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\Valmora\\Suite", "Text", "", "abc"}));
    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\Valmora\\Suite", "Big", "", "4294967295"}));

    RegistryValue path = read("HKLM", "Software\\Valmora\\Suite", "Path");
    EXPECT_EQ(1u, path.type);
    EXPECT_EQ("C:\\Suite", path.text);
    RegistryValue home = read("HKLM", "Software\\Valmora\\Suite", "Home");
    EXPECT_EQ(2u, home.type);
    EXPECT_EQ("%SystemRoot%", home.text);
    RegistryValue raw = read("HKLM", "Software\\Valmora\\Suite", "Raw");
    EXPECT_EQ(3u, raw.type);
    EXPECT_EQ((std::vector<std::uint8_t>{'a', 'b', 1}), raw.bytes);
    RegistryValue count = read("HKLM", "Software\\Valmora\\Suite", "Count");
    EXPECT_EQ(4u, count.type);
    EXPECT_EQ(42u, count.number);
    EXPECT_EQ(0u, read("HKLM", "Software\\Valmora\\Suite", "Text").number);
    EXPECT_EQ(4294967295u, read("HKLM", "Software\\Valmora\\Suite", "Big").number);

    CStdStringList items = logged();
    ASSERT_EQ(6u, items.size());
    EXPECT_EQ("HKLM,Software\\Valmora\\Suite,Path", items[0]);
}

TEST_F(RegistryActionTest, AKeyAloneIsRecordedWithAnEmptyNameAndFalseRecordsNothing) {
    ASSERT_TRUE(run({"ADD", "HKCU", "Software\\Valmora\\Empty"}));
    EXPECT_TRUE(registry.DoesKeyExist("HKCU", "Software\\Valmora\\Empty"));
    EXPECT_TRUE(registry.IsKeyEmpty("HKCU", "Software\\Valmora\\Empty"));
    ASSERT_TRUE(run({"ADD", "HKCU", "Software\\Valmora\\Quiet", "v", "STR", "x", "FALSE"}));
    EXPECT_EQ((CStdStringList{"HKCU,Software\\Valmora\\Empty,"}), logged());
}

TEST_F(RegistryActionTest, TheProductTitleIsPutInForEachRunOnly) {
    RegistryAction action(list({"ADD", "HKLM", "Software\\^OEM_PRODUCT^", "^OEM_PRODUCT^ Path",
                                "STR", "C:\\^OEM_PRODUCT^"}));
    ASSERT_TRUE(action.Perform("Alpha"));
    ASSERT_TRUE(action.Perform("Beta"));
    EXPECT_EQ("C:\\Alpha", read("HKLM", "Software\\Alpha", "Alpha Path").text);
    EXPECT_EQ("C:\\Beta", read("HKLM", "Software\\Beta", "Beta Path").text);
    EXPECT_EQ("Software\\^OEM_PRODUCT^", action.GetSubKey());
    EXPECT_EQ((CStdStringList{"HKLM,Software\\Alpha,Alpha Path", "HKLM,Software\\Beta,Beta Path"}),
              logged());
}

TEST_F(RegistryActionTest, AppendAddsAnItemOnceAndKeepsTheValuesType) {
    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\S", "List", "STRX", "a;b"}));
    ASSERT_TRUE(run({"APPEND", "HKLM", "Software\\S", "List", "STR", "c", ";"}));
    RegistryValue list = read("HKLM", "Software\\S", "List");
    EXPECT_EQ("a;b;c", list.text);
    EXPECT_EQ(2u, list.type);
    ASSERT_TRUE(run({"APPEND", "HKLM", "Software\\S", "List", "STR", "B", ";"}));
    EXPECT_EQ("a;b;c", read("HKLM", "Software\\S", "List").text);
    EXPECT_TRUE(log.Contains("Value already exists under the key Software\\S"));

    // Without a delimiter the text is joined as it stands.
    ASSERT_TRUE(run({"APPEND", "HKLM", "Software\\S", "List", "STR", "-d"}));
    EXPECT_EQ("a;b;c-d", read("HKLM", "Software\\S", "List").text);

    // Missing key and missing value are made; with SP_APPEND_NOT_CREATE nothing is.
    ASSERT_TRUE(run({"APPEND", "HKLM", "Software\\New", "List", "STR", "x", ";"}));
    EXPECT_EQ("x", read("HKLM", "Software\\New", "List").text);
    ASSERT_TRUE(run({"APPEND", "HKLM", "Software\\S", "Other", "STR", "y", ";"}));
    EXPECT_EQ("y", read("HKLM", "Software\\S", "Other").text);
    ASSERT_TRUE(run({"APPEND", "HKLM", "Software\\S", "Absent", "STR", "z", ";",
                     "SP_PERMIT|sp_append_not_create"}));
    ASSERT_TRUE(run({"APPEND", "HKLM", "Software\\Gone", "Absent", "STR", "z", ";",
                     "SP_APPEND_NOT_CREATE"}));
    EXPECT_FALSE(registry.DoesValueExist("HKLM", "Software\\S", "Absent"));
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", "Software\\Gone"));

    // Only the ADD line is an uninstall record: an appended item is never undone.
    EXPECT_EQ((CStdStringList{"HKLM,Software\\S,List"}), logged());
}

TEST_F(RegistryActionTest, DeleteNeverFailsAndTakesEmptyParentsWithIt) {
    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\V\\A\\B", "x", "STR", "1"}));
    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\V", "keep", "STR", "1"}));
    EXPECT_TRUE(run({"DELETE", "HKLM", "Software\\V\\A\\B", "missing"}));
    EXPECT_TRUE(log.Contains("Could not delete value HKLM\\Software\\V\\A\\B\\missing ErrCode:2"));
    EXPECT_TRUE(run({"DELETE", "HKLM", "Software\\V\\A\\B", "x"}));
    EXPECT_TRUE(log.Contains("Deleted the value HKLM\\Software\\V\\A\\B\\x."));
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", "Software\\V\\A"));
    EXPECT_TRUE(registry.DoesValueExist("HKLM", "Software\\V", "keep"));

    EXPECT_TRUE(run({"DELETE", "HKLM", "Software\\V"}));
    EXPECT_TRUE(log.Contains("Could not delete key HKLM\\Software\\V ErrCode:"));
    EXPECT_TRUE(registry.DoesKeyExist("HKLM", "Software\\V"));

    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\V\\C\\D", "x", "STR", "1"}));
    EXPECT_TRUE(run({"WIPEOUT", "HKLM", "Software\\V"}));
    EXPECT_FALSE(registry.DoesKeyExist("HKLM", "Software\\V"));
    EXPECT_TRUE(run({"WIPEOUT", "HKLM", "Software\\Never\\There"}));
}

TEST_F(RegistryActionTest, ADeniedKeyFailsAddAndAppendButNotDelete) {
    ASSERT_TRUE(run({"ADD", "HKLM", "Software\\Locked", "v", "STR", "1"}));
    faults("[Registry]\nDenyWrite=HKLM\\Software\\Locked\n");
    EXPECT_FALSE(run({"ADD", "HKLM", "Software\\Locked\\Sub", "v", "STR", "1"}));
    EXPECT_TRUE(log.Contains("Could not create key Software\\Locked\\Sub ErrCode:5"));
    EXPECT_FALSE(run({"ADD", "HKLM", "Software\\Locked", "v", "STR", "2"}));
    EXPECT_TRUE(log.Contains("Could not write the value of key Software\\Locked ErrCode:5"));
    EXPECT_FALSE(run({"APPEND", "HKLM", "Software\\Locked", "v", "STR", "2", ";"}));
    EXPECT_TRUE(run({"DELETE", "HKLM", "Software\\Locked", "v"}));
    EXPECT_TRUE(log.Contains("Could not delete value HKLM\\Software\\Locked\\v ErrCode:5"));
    EXPECT_EQ("1", registry.ReadStringValue("HKLM", "Software\\Locked", "v"));
    // A failed ADD is recorded all the same, so that an uninstall tries it.
    EXPECT_EQ((CStdStringList{"HKLM,Software\\Locked,v", "HKLM,Software\\Locked\\Sub,v"}),
              logged());
    EXPECT_FALSE(run({"ADD", "HKXX", "Software\\A", "v", "STR", "1"}));
    EXPECT_TRUE(log.Contains("invalid root key HKXX"));
}

TEST_F(RegistryActionTest, EnvironmentVariablesLiveInTheRegistryAndTheChangeIsBroadcast) {
    ASSERT_TRUE(env({"UPDATE", "SUITE_HOME", "C:\\Suite", "AllUsers"}));
    RegistryValue home = read("HKLM", kSystemEnvironment, "SUITE_HOME");
    EXPECT_EQ(2u, home.type);
    EXPECT_EQ("C:\\Suite", home.text);
    EXPECT_EQ((CStdStringList{"HKLM," + std::string(kSystemEnvironment) + ",SUITE_HOME"}),
              logged());

    ASSERT_TRUE(env({"append", "Path", "C:\\Suite\\bin", "AllUsers"}));
    ASSERT_TRUE(env({"APPEND", "Path", "c:\\suite\\BIN", "AllUsers"}));
    RegistryValue path = read("HKLM", kSystemEnvironment, "Path");
    EXPECT_EQ(2u, path.type);
    EXPECT_EQ("%SystemRoot%\\system32;%SystemRoot%;%SystemRoot%\\System32\\Wbem;C:\\Suite\\bin",
              path.text);

    ASSERT_TRUE(env({"UPDATE", "SUITE_USER", "yes", "CurrentUser"}));
    EXPECT_EQ("yes", read("HKCU", "Environment", "SUITE_USER").text);
    ASSERT_TRUE(env({"CLEAR", "SUITE_USER", "", "currentuser"}));
    EXPECT_FALSE(registry.DoesValueExist("HKCU", "Environment", "SUITE_USER"));

    std::string text = journal();
    size_t broadcasts = 0;
    for (size_t at = text.find("lParam=\"Environment\" flags=0x2 timeout=100");
         at != std::string::npos;
         at = text.find("lParam=\"Environment\" flags=0x2 timeout=100", at + 1)) {
        ++broadcasts;
    }
    EXPECT_EQ(5u, broadcasts);

    EXPECT_EQ("C:\\Suite", variable("suite_home"));
    EXPECT_EQ("C:\\Windows\\system32;C:\\Windows;C:\\Windows\\System32\\Wbem;C:\\Suite\\bin",
              variable("PATH"));
    EXPECT_EQ("(none)", variable("SUITE_USER"));

    EXPECT_FALSE(env({"UPDATE", "X", "1", "Everyone"}));
    EXPECT_FALSE(env({"REMOVE", "X", "1", "AllUsers"}));
    EXPECT_FALSE(registry.DoesValueExist("HKLM", kSystemEnvironment, "X"));
}

TEST_F(RegistryActionTest, AFailedVariableIsNotBroadcast) {
    faults("[Registry]\nDenyWrite=HKCU\\Environment\n");
    EXPECT_FALSE(env({"UPDATE", "SUITE", "1", "CurrentUser"}));
    EXPECT_TRUE(log.Contains("Could not set 1 as the variable SUITE."));
    std::string text = journal();
    EXPECT_EQ(std::string::npos, text.find("Environment\""));
}

class RegistryActionOn98Test : public RegistryActionTest {
protected:
    RegistryActionOn98Test() : RegistryActionTest("win98") {}
};

TEST_F(RegistryActionOn98Test, VariablesAreKeptInTheRegistryOnWindows9xToo) {
    ASSERT_TRUE(env({"APPEND", "Path", "C:\\Suite", "AllUsers"}));
    ASSERT_TRUE(env({"UPDATE", "SUITE", "1", "CurrentUser"}));
    EXPECT_EQ("C:\\Suite", read("HKLM", kSystemEnvironment, "Path").text);
    EXPECT_EQ("1", read("HKCU", "Environment", "SUITE").text);
    EXPECT_EQ("C:\\WINDOWS;C:\\WINDOWS\\COMMAND;C:\\Suite", variable("PATH"));
    EXPECT_EQ("1", variable("SUITE"));
}

} // namespace
