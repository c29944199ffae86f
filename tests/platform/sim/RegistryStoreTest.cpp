#include "sim/RegistryStore.h"

#include <chrono>
#include <gtest/gtest.h>

namespace {

using namespace sim;

const char* const kUser = "HKEY_USERS\\S-1-5-21-1";

TEST(RegistryStore, RoundTripsEveryKindOfValue) {
    RegistryStore store;
    RegKey* key = store.Create("HKEY_LOCAL_MACHINE\\SOFTWARE\\Maker");
    key->SetValue(RegValue::Text("", "default \"quoted\" C:\\path"));
    key->SetValue(RegValue::Text("Expand", "%SystemRoot%\\x", regtype::ExpandString));
    key->SetValue(RegValue::Number("Count", 0xDEADBEEF));
    key->SetValue(RegValue::Multi("List", {"one", "two"}));
    RegValue binary;
    binary.name = "Blob";
    binary.type = regtype::Binary;
    binary.data.assign(100, 0xAB);
    key->SetValue(binary);
    key->SetValue(RegValue::Text("Lines", "a\r\nb"));
    key->SetSecurity("D:(A;;KA;;;BA)");
    store.Create("HKEY_USERS\\.DEFAULT\\Empty");

    std::string text = store.Format();
    EXPECT_EQ(0u, text.find("Windows Registry Editor Version 5.00\n\n"));
    EXPECT_NE(std::string::npos, text.find("@=\"default \\\"quoted\\\" C:\\\\path\""));
    EXPECT_NE(std::string::npos, text.find("\"Count\"=dword:deadbeef"));

    RegistryStore copy;
    std::string error;
    ASSERT_TRUE(copy.Parse(text, kUser, error)) << error;
    const RegKey* read = copy.Find("hkey_local_machine\\software\\MAKER");
    ASSERT_NE(nullptr, read);
    EXPECT_EQ("default \"quoted\" C:\\path", read->Value("")->AsText());
    EXPECT_EQ(regtype::ExpandString, read->Value("expand")->type);
    EXPECT_EQ("%SystemRoot%\\x", read->Value("Expand")->AsText());
    EXPECT_EQ(key->Value("Count")->data, read->Value("Count")->data);
    EXPECT_EQ((std::vector<std::string>{"one", "two"}), read->Value("List")->AsMulti());
    EXPECT_EQ(binary.data, read->Value("Blob")->data);
    EXPECT_EQ("a\r\nb", read->Value("Lines")->AsText());
    EXPECT_EQ("D:(A;;KA;;;BA)", read->Security());
    EXPECT_NE(nullptr, copy.Find("HKEY_USERS\\.DEFAULT\\Empty"));
    EXPECT_EQ(text, copy.Format());
}

TEST(RegistryStore, ReadsExportsOfRegeditWithTheirShorthands) {
    std::string utf16 = "\xFF\xFE";
    for (char c : std::string(
                 "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\Software\\X]\r\n"
                 "\"a\"=\"1\"\r\n[HKEY_CLASSES_ROOT\\.txt]\r\n@=\"txtfile\"\r\n")) {
        utf16 += c;
        utf16 += '\0';
    }
    RegistryStore store;
    std::string error;
    ASSERT_TRUE(store.Parse(utf16, kUser, error)) << error;
    EXPECT_NE(nullptr, store.Find(std::string(kUser) + "\\Software\\X"));
    EXPECT_EQ("txtfile",
              store.Find("HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\.txt")->Value("")->AsText());
}

TEST(RegistryStore, DeletionsOfAnImportApply) {
    RegistryStore store;
    std::string error;
    ASSERT_TRUE(store.Parse(
            "REGEDIT4\n[HKEY_LOCAL_MACHINE\\A\\B]\n\"v\"=\"1\"\n\"w\"=\"2\"\n"
            "[-HKEY_LOCAL_MACHINE\\A\\B]\n[HKEY_LOCAL_MACHINE\\A]\n\"x\"=\"1\"\n\"x\"=-\n",
            kUser, error))
            << error;
    EXPECT_EQ(nullptr, store.Find("HKEY_LOCAL_MACHINE\\A\\B"));
    EXPECT_EQ(nullptr, store.Find("HKEY_LOCAL_MACHINE\\A")->Value("x"));
}

TEST(RegistryStore, MalformedFilesAreRefusedWithTheLine) {
    RegistryStore store;
    std::string error;
    EXPECT_FALSE(store.Parse("not a registry file\n", kUser, error));
    EXPECT_FALSE(store.Parse("REGEDIT4\n\"v\"=\"1\"\n", kUser, error));
    EXPECT_NE(std::string::npos, error.find("line 2"));
    EXPECT_FALSE(store.Parse("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"v\"=dword:xyz\n", kUser, error));
    EXPECT_FALSE(store.Parse("REGEDIT4\n[HKEY_NOWHERE\\A]\n", kUser, error));
    EXPECT_FALSE(store.Parse("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"v\"=hex(fffffffffff):00\n",
                             kUser, error));
}

TEST(RegistryStore, NamesKeepTheSpellingOfTheirFirstWriter) {
    RegistryStore store;
    RegKey* key = store.Create("HKEY_LOCAL_MACHINE\\Software");
    store.Create("HKEY_LOCAL_MACHINE\\SOFTWARE\\Sub");
    EXPECT_EQ("Software", store.Find("HKEY_LOCAL_MACHINE\\software")->Name());
    key->SetValue(RegValue::Number("Value", 1));
    key->SetValue(RegValue::Number("VALUE", 2));
    ASSERT_EQ(1u, key->Values().size());
    EXPECT_EQ("Value", key->Values()[0].name);
    EXPECT_TRUE(store.Remove("HKEY_LOCAL_MACHINE\\software\\SUB"));
    EXPECT_FALSE(store.Remove("HKEY_LOCAL_MACHINE\\software\\SUB"));
}

} // namespace

namespace {

std::string Nested(size_t depth) {
    std::string path = "HKEY_LOCAL_MACHINE";
    for (size_t i = 0; i < depth; ++i) {
        path += "\\k";
    }
    return path;
}

} // namespace

TEST(RegistryStore, KeepsWindowsLimitsOfNameAndDepth) {
    RegistryStore store;
    EXPECT_NE(nullptr, store.Create("HKEY_LOCAL_MACHINE\\" + std::string(255, 'n')));
    EXPECT_EQ(nullptr, store.Create("HKEY_LOCAL_MACHINE\\" + std::string(256, 'n')));
    // A name's length is counted in characters, not in bytes of UTF-8.
    std::string umlauts;
    for (int i = 0; i < 255; ++i) {
        umlauts += "\xC3\xA4";
    }
    EXPECT_NE(nullptr, store.Create("HKEY_LOCAL_MACHINE\\" + umlauts));
    EXPECT_NE(nullptr, store.Create(Nested(RegistryStore::kMaxDepth)));
    EXPECT_EQ(nullptr, store.Create(Nested(RegistryStore::kMaxDepth + 1)));

    // The deepest tree there can be writes out and reads back.
    RegistryStore copy;
    std::string error;
    ASSERT_TRUE(copy.Parse(store.Format(), kUser, error)) << error;
    EXPECT_NE(nullptr, copy.Find(Nested(RegistryStore::kMaxDepth)));
}

TEST(RegistryStore, AFileNestedTooDeepIsRefusedAtOnceWithTheLine) {
    std::string text = "Windows Registry Editor Version 5.00\n\n[" + Nested(100000) + "]\n";
    RegistryStore store;
    std::string error;
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(store.Parse(text, kUser, error));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ("key nested deeper than 512 levels (line 3)", error);

    std::string longName = "REGEDIT4\n[HKEY_CURRENT_USER\\" + std::string(300, 'x') + "]\n";
    EXPECT_FALSE(store.Parse(longName, kUser, error));
    EXPECT_EQ("key name longer than 255 characters (line 2)", error);
}

TEST(RegistryStore, ChangesOfOneProcessCarryOntoTheStoreAnotherLeft) {
    std::string error;
    RegistryStore base;
    ASSERT_TRUE(base.Parse("REGEDIT4\n[HKEY_LOCAL_MACHINE\\S\\Common]\n\"Old\"=\"1\"\n"
                           "\"Gone\"=\"1\"\n[HKEY_LOCAL_MACHINE\\S\\Drop\\Deep]\n\"x\"=\"1\"\n"
                           "[HKEY_LOCAL_MACHINE\\S\\Theirs]\n",
                           kUser, error))
            << error;
    // This process: a value changed, one deleted, one new, a key made, a tree deleted.
    RegistryStore mine;
    ASSERT_TRUE(mine.Parse(base.Format(), kUser, error));
    mine.Find("HKEY_LOCAL_MACHINE\\S\\Common")->SetValue(RegValue::Text("Old", "mine"));
    mine.Find("HKEY_LOCAL_MACHINE\\S\\Common")->RemoveValue("Gone");
    mine.Find("HKEY_LOCAL_MACHINE\\S\\Common")->SetValue(RegValue::Number("Mine", 7));
    mine.Create("HKEY_LOCAL_MACHINE\\S\\New\\Key")->SetSecurity("D:(A;;KA;;;BA)");
    mine.Remove("HKEY_LOCAL_MACHINE\\S\\Drop");
    // The other process, meanwhile: a value of its own in the same key, a key of its own, and
    // a key deleted that this process did not touch.
    RegistryStore theirs;
    ASSERT_TRUE(theirs.Parse(base.Format(), kUser, error));
    theirs.Find("HKEY_LOCAL_MACHINE\\S\\Common")->SetValue(RegValue::Text("Other", "theirs"));
    theirs.Create("HKEY_LOCAL_MACHINE\\S\\OtherKey");
    theirs.Remove("HKEY_LOCAL_MACHINE\\S\\Theirs");

    theirs.ApplyChanges(base, mine);
    const RegKey* common = theirs.Find("HKEY_LOCAL_MACHINE\\S\\Common");
    ASSERT_NE(nullptr, common);
    EXPECT_EQ("mine", common->Value("Old")->AsText());
    EXPECT_EQ(nullptr, common->Value("Gone"));
    EXPECT_NE(nullptr, common->Value("Mine"));
    EXPECT_EQ("theirs", common->Value("Other")->AsText());
    ASSERT_NE(nullptr, theirs.Find("HKEY_LOCAL_MACHINE\\S\\New\\Key"));
    EXPECT_EQ("D:(A;;KA;;;BA)", theirs.Find("HKEY_LOCAL_MACHINE\\S\\New\\Key")->Security());
    EXPECT_EQ(nullptr, theirs.Find("HKEY_LOCAL_MACHINE\\S\\Drop"));
    EXPECT_NE(nullptr, theirs.Find("HKEY_LOCAL_MACHINE\\S\\OtherKey"));
    EXPECT_EQ(nullptr, theirs.Find("HKEY_LOCAL_MACHINE\\S\\Theirs"));
}

TEST(RegistryStore, StringsThatTwoProcessesAppendToOneListAreAllKept) {
    const char* const session = "HKEY_LOCAL_MACHINE\\Session";
    RegistryStore base;
    base.Create(session)->SetValue(RegValue::Multi("Pending", {"a", "b"}));
    std::string error;
    RegistryStore mine;
    RegistryStore theirs;
    ASSERT_TRUE(mine.Parse(base.Format(), kUser, error)) << error;
    ASSERT_TRUE(theirs.Parse(base.Format(), kUser, error)) << error;
    mine.Find(session)->SetValue(RegValue::Multi("Pending", {"a", "b", "mine1", "mine2"}));
    theirs.Find(session)->SetValue(RegValue::Multi("Pending", {"a", "b", "theirs"}));

    theirs.ApplyChanges(base, mine);
    EXPECT_EQ((std::vector<std::string>{"a", "b", "theirs", "mine1", "mine2"}),
              theirs.Find(session)->Value("Pending")->AsMulti());

    // A list that this process rewrote otherwise takes its form whole.
    mine.Find(session)->SetValue(RegValue::Multi("Pending", {"x"}));
    RegistryStore other;
    ASSERT_TRUE(other.Parse(base.Format(), kUser, error)) << error;
    other.Find(session)->SetValue(RegValue::Multi("Pending", {"a", "b", "theirs"}));
    other.ApplyChanges(base, mine);
    EXPECT_EQ((std::vector<std::string>{"x"}), other.Find(session)->Value("Pending")->AsMulti());
}
