// The engine's own classes over the real Win32 API, run under Wine: the registry through
// Registry, the OS identity, the debug log and text files.
#include "os/Process.h"
#include "script/OSInfo.h"
#include "script/SystemPath.h"
#include "script/TextFile.h"
#include "support/TestMachine.h"
#include "system/Registry.h"

#include <gtest/gtest.h>

namespace {

TEST(WineSmoke, RegistryWritesAndReadsThroughTheEngine) {
    Registry registry;
    CStdStr key = CStdStr::Formatted("Software\\EngineSmoke%u", os::GetCurrentProcessId());
    ASSERT_TRUE(registry.WriteValue("HKCU", key + "\\Sub", "Text", RegistryValue::String("value")));
    ASSERT_TRUE(registry.WriteValue("HKCU", key + "\\Sub", "Number", RegistryValue::Dword(42)));
    EXPECT_EQ("value", registry.ReadStringValue("HKCU", key + "\\Sub", "text"));
    EXPECT_EQ("42", registry.ReadStringValue("HKCU", key + "\\Sub", "Number"));
    CStdStringList subkeys;
    CStdStringList values;
    ASSERT_TRUE(registry.Enumerate("HKCU", key, subkeys, values));
    EXPECT_EQ(1u, subkeys.size());
    EXPECT_TRUE(registry.WipeOutKey("HKCU", key));
    EXPECT_FALSE(registry.DoesKeyExist("HKCU", key));
}

TEST(WineSmoke, TheSystemHasACodeAndTokens) {
    OSInfo os;
    EXPECT_NE(-1, os.GetOSCode());
    EXPECT_FALSE(os.Tokens().empty());
    EXPECT_TRUE(os.Is64Bit());
}

TEST(WineSmoke, FoldersAndUtf16Files) {
    TestMachine machine;
    EXPECT_FALSE(SystemPath(SystemPath::TempFolder).GetFullPath().empty());
    EXPECT_FALSE(SystemPath(SystemPath::ProgramFiles).GetFullPath().empty());
    std::string path = machine.Path("wide.txt");
    TextFile out;
    ASSERT_TRUE(out.Open(path, TextFile::Write, TextFile::Utf16));
    ASSERT_TRUE(out.WriteString("line\n"));
    out.Close();
    TextFile in;
    ASSERT_TRUE(in.Open(path, TextFile::Read, TextFile::Detect));
    CStdStr line;
    ASSERT_TRUE(in.ReadString(line));
    EXPECT_EQ("line", line);
}

} // namespace
