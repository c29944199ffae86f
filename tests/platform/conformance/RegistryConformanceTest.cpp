// The registry group of the seam. Every test works below a key of its own under HKCU and
// removes it again.
#include "os/Process.h"
#include "os/RegistryApi.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace os;

std::vector<std::uint8_t> Bytes(const std::string& text) {
    return std::vector<std::uint8_t>(text.begin(), text.end());
}

class RegistryConformance : public ::testing::Test {
protected:
    TestMachine machine;
    std::string base = "Software\\EngineConformance" + std::to_string(GetCurrentProcessId());

    // A key of this process's id may be left by an earlier run that ended half-way.
    void SetUp() override { wipe(hkey::CurrentUser, base); }
    void TearDown() override { wipe(hkey::CurrentUser, base); }

    void wipe(HKey root, const std::string& path) {
        HKey key = 0;
        if (RegOpenKeyEx(root, path, regaccess::AllAccess, key) != error::Success) {
            return;
        }
        wipeBelow(key);
        RegCloseKey(key);
        RegDeleteKey(root, path);
    }

    // Through handles, one level at a time: a chain too deep to open by its whole path goes too.
    void wipeBelow(HKey key) {
        std::vector<std::string> children;
        std::string name;
        for (std::uint32_t i = 0; RegEnumKeyEx(key, i, name) == error::Success; ++i) {
            children.push_back(name);
        }
        for (const std::string& child : children) {
            HKey below = 0;
            if (RegOpenKeyEx(key, child, regaccess::AllAccess, below) == error::Success) {
                wipeBelow(below);
                RegCloseKey(below);
            }
            RegDeleteKey(key, child);
        }
    }

    HKey create(const std::string& sub) {
        HKey key = 0;
        EXPECT_EQ(error::Success, RegCreateKeyEx(hkey::CurrentUser, base + sub,
                                                 regaccess::AllAccess, "", key, nullptr));
        return key;
    }
};

TEST_F(RegistryConformance, MissingKeyGivesFileNotFound) {
    HKey key = 0;
    EXPECT_EQ(error::FileNotFound,
              RegOpenKeyEx(hkey::CurrentUser, base + "\\absent", regaccess::Read, key));
}

TEST_F(RegistryConformance, CreateSaysWhetherTheKeyIsNew) {
    HKey key = 0;
    bool created = false;
    ASSERT_EQ(error::Success, RegCreateKeyEx(hkey::CurrentUser, base + "\\a\\b",
                                             regaccess::AllAccess, "", key, &created));
    EXPECT_TRUE(created);
    RegCloseKey(key);
    ASSERT_EQ(error::Success, RegCreateKeyEx(hkey::CurrentUser, base + "\\a\\b",
                                             regaccess::AllAccess, "", key, &created));
    EXPECT_FALSE(created);
    RegCloseKey(key);
}

TEST_F(RegistryConformance, ValuesOfEveryTypeRoundTrip) {
    HKey key = create("");
    struct Case {
        std::string name;
        std::uint32_t type;
        std::vector<std::uint8_t> data;
    };
    std::vector<std::uint8_t> multi = Bytes(std::string("one\0two\0\0", 9));
    std::vector<Case> cases = {
            {"Text", regtype::String, Bytes(std::string("hello\0", 6))},
            {"Expand", regtype::ExpandString, Bytes(std::string("%TEMP%\\x\0", 9))},
            {"Bytes", regtype::Binary, {0, 1, 2, 255}},
            {"Number", regtype::Dword, {0x78, 0x56, 0x34, 0x12}},
            {"Multi", regtype::MultiString, multi}};
    for (const Case& entry : cases) {
        ASSERT_EQ(error::Success, RegSetValueEx(key, entry.name, entry.type, entry.data))
                << entry.name;
    }
    for (const Case& entry : cases) {
        std::uint32_t type = 0;
        std::vector<std::uint8_t> data;
        ASSERT_EQ(error::Success, RegQueryValueEx(key, entry.name, type, data)) << entry.name;
        EXPECT_EQ(entry.type, type) << entry.name;
        EXPECT_EQ(entry.data, data) << entry.name;
    }
    RegCloseKey(key);
}

TEST_F(RegistryConformance, ValueNamesCompareWithoutCase) {
    HKey key = create("");
    ASSERT_EQ(error::Success, RegSetValueEx(key, "MixedName", regtype::Dword, {1, 0, 0, 0}));
    ASSERT_EQ(error::Success, RegSetValueEx(key, "MIXEDNAME", regtype::Dword, {2, 0, 0, 0}));
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    ASSERT_EQ(error::Success, RegQueryValueEx(key, "mixedname", type, data));
    EXPECT_EQ(2, data[0]);
    std::string name;
    ASSERT_EQ(error::Success, RegEnumValue(key, 0, name));
    EXPECT_EQ("MixedName", name);
    EXPECT_EQ(error::NoMoreItems, RegEnumValue(key, 1, name));
    EXPECT_EQ(error::FileNotFound, RegQueryValueEx(key, "Other", type, data));
    EXPECT_EQ(error::Success, RegDeleteValue(key, "MIXEDname"));
    EXPECT_EQ(error::FileNotFound, RegDeleteValue(key, "MixedName"));
    RegCloseKey(key);
}

TEST_F(RegistryConformance, KeysWithSubkeysCannotBeDeleted) {
    RegCloseKey(create("\\parent\\child"));
    EXPECT_EQ(error::AccessDenied, RegDeleteKey(hkey::CurrentUser, base + "\\parent"));
    EXPECT_EQ(error::Success, RegDeleteKey(hkey::CurrentUser, base + "\\parent\\child"));
    EXPECT_EQ(error::Success, RegDeleteKey(hkey::CurrentUser, base + "\\parent"));
    EXPECT_EQ(error::FileNotFound, RegDeleteKey(hkey::CurrentUser, base + "\\parent"));
}

TEST_F(RegistryConformance, SubkeysEnumerateAlphabetically) {
    for (const char* name : {"\\zeta", "\\Alpha", "\\mid"}) {
        RegCloseKey(create(name));
    }
    HKey key = 0;
    ASSERT_EQ(error::Success, RegOpenKeyEx(hkey::CurrentUser, base, regaccess::Read, key));
    std::vector<std::string> names;
    std::string name;
    for (std::uint32_t i = 0; RegEnumKeyEx(key, i, name) == error::Success; ++i) {
        names.push_back(name);
    }
    EXPECT_EQ((std::vector<std::string>{"Alpha", "mid", "zeta"}), names);
    EXPECT_EQ(error::NoMoreItems, RegEnumKeyEx(key, 3, name));
    RegKeyInfo info;
    ASSERT_EQ(error::Success, RegQueryInfoKey(key, info));
    EXPECT_EQ(3u, info.subKeys);
    EXPECT_EQ(5u, info.maxSubKeyLength);
    RegCloseKey(key);
}

TEST_F(RegistryConformance, AKeyOpenedForReadingRefusesWrites) {
    RegCloseKey(create(""));
    HKey key = 0;
    ASSERT_EQ(error::Success, RegOpenKeyEx(hkey::CurrentUser, base, regaccess::Read, key));
    EXPECT_EQ(error::AccessDenied, RegSetValueEx(key, "x", regtype::Dword, {1, 0, 0, 0}));
    RegCloseKey(key);
}

TEST_F(RegistryConformance, InheritedSecurityCarriesTheParentsAccessList) {
    HKey key = create("");
    std::string parent;
    ASSERT_EQ(error::Success, RegGetKeySecurity(key, parent));
    RegCloseKey(key);
    EXPECT_EQ(0u, parent.find("D:"));
    std::string derived;
    ASSERT_EQ(error::Success, BuildInheritedSecurity(parent, derived));
    EXPECT_EQ(0u, derived.find("D:"));
    HKey child = 0;
    ASSERT_EQ(error::Success, RegCreateKeyEx(hkey::CurrentUser, base + "\\secured",
                                             regaccess::AllAccess, derived, child, nullptr));
    std::string kept;
    ASSERT_EQ(error::Success, RegGetKeySecurity(child, kept));
    RegCloseKey(child);
    EXPECT_EQ(0u, kept.find("D:"));
}

} // namespace

namespace {

class RegistryLimits : public RegistryConformance {};

TEST_F(RegistryLimits, AKeyNameOver255CharactersIsAnInvalidParameter) {
    HKey key = 0;
    Error longest = RegCreateKeyEx(hkey::CurrentUser, base + "\\" + std::string(255, 'n'),
                                   regaccess::AllAccess, "", key, nullptr);
    RegCloseKey(key);
    Error over = RegCreateKeyEx(hkey::CurrentUser, base + "\\" + std::string(256, 'n'),
                                regaccess::AllAccess, "", key, nullptr);
    if (!machine.IsSimulated() && longest == error::MoreData) {
        // Wine's A function gives 234 (ERROR_MORE_DATA) for a name of 255 characters already,
        // and for longer ones; Windows makes the key of 255.
        EXPECT_EQ(error::MoreData, over);
        return;
    }
    EXPECT_EQ(error::Success, longest);
    EXPECT_EQ(error::InvalidParameter, over);
}

TEST_F(RegistryLimits, TheTreeEndsAt512Levels) {
    // One level per call, from the handle of the level above. Windows refuses a key deeper than
    // 512 levels below its hive with ERROR_INVALID_PARAMETER; Wine has no such limit and makes
    // all 520, so the real API is only held to the code when it refuses at all.
    // Every level's handle is kept, so that the chain goes again from the bottom up: a path
    // that long is more than some systems open by name.
    std::vector<HKey> chain{create("")};
    int levels = 0;
    Error refused = error::Success;
    for (; levels < 520; ++levels) {
        HKey child = 0;
        refused = RegCreateKeyEx(chain.back(), "k", regaccess::AllAccess, "", child, nullptr);
        if (refused != error::Success) {
            break;
        }
        chain.push_back(child);
    }
    for (size_t level = chain.size() - 1; level > 0; --level) {
        RegCloseKey(chain[level]);
        EXPECT_EQ(error::Success, RegDeleteKey(chain[level - 1], "k"));
    }
    RegCloseKey(chain.front());
    if (machine.IsSimulated()) {
        EXPECT_EQ(error::InvalidParameter, refused);
        // HKCU is HKEY_USERS\<SID>, a level down, and the test's key two levels below it.
        EXPECT_EQ(512 - 3, levels);
    } else if (refused != error::Success) {
        EXPECT_EQ(error::InvalidParameter, refused);
        EXPECT_GT(levels, 400);
    }
}

} // namespace
