#include "sim/CodePage.h"
#include "sim/PathMapper.h"
#include "sim/ShortNames.h"
#include "sim/WindowsPath.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <unistd.h>

namespace {

using namespace sim;

std::string Parse(const std::string& path, const std::string& current = "C:\\Work\\Dir") {
    WindowsPath parsed;
    os::Error error = WindowsPath::Parse(path, current, false, parsed);
    return error == 0 ? parsed.ToString() : "error " + std::to_string(error);
}

TEST(WindowsPath, NormalisesAsWin32Does) {
    EXPECT_EQ("C:\\a\\c", Parse("c:/a/b/../c"));
    EXPECT_EQ("C:\\a\\b", Parse("C:\\a\\.\\b\\"));
    EXPECT_EQ("C:\\Work\\Dir\\rel.txt", Parse("rel.txt"));
    EXPECT_EQ("C:\\Work\\rel.txt", Parse("..\\rel.txt"));
    EXPECT_EQ("C:\\top.txt", Parse("\\top.txt"));
    EXPECT_EQ("C:\\Work\\Dir\\x", Parse("C:x"));
    EXPECT_EQ("D:\\x", Parse("D:x"));
    EXPECT_EQ("C:\\", Parse("C:\\..\\.."));
    EXPECT_EQ("C:\\name", Parse("C:\\name. . "));
    EXPECT_EQ("\\\\server\\share\\f", Parse("\\\\server\\share\\f"));
    EXPECT_EQ("C:\\long", Parse("\\\\?\\C:\\long"));
    EXPECT_EQ("error 123", Parse("C:\\bad|name"));
    EXPECT_EQ("error 123", Parse("C:\\what?"));
    EXPECT_EQ("error 53", Parse("\\\\onlyserver"));
    WindowsPath pattern;
    EXPECT_EQ(0u, WindowsPath::Parse("C:\\dir\\*.txt", "", true, pattern));
    EXPECT_EQ(123u, WindowsPath::Parse("C:\\d*r\\x.txt", "", true, pattern));
}

class PathMapperTest : public ::testing::Test {
protected:
    std::string root = std::filesystem::temp_directory_path().string() + "/pathmapper-" +
                       std::to_string(::getpid());
    PathMapper mapper;

    void SetUp() override {
        std::filesystem::create_directories(root + "/c/Program Files/Maker");
        std::ofstream(root + "/c/Program Files/Maker/Setup.EXE") << "x";
        mapper.SetDrive('C', root + "/c");
        mapper.SetDrive('Z', "/");
    }
    void TearDown() override { std::filesystem::remove_all(root); }

    HostLocation locate(const std::string& path) {
        WindowsPath parsed;
        EXPECT_EQ(0u, WindowsPath::Parse(path, "C:\\", false, parsed));
        HostLocation location;
        EXPECT_EQ(0u, mapper.Locate(parsed, location));
        return location;
    }
};

TEST_F(PathMapperTest, NamesMatchWithoutRegardToCase) {
    HostLocation found = locate("C:\\PROGRAM FILES\\maker\\setup.exe");
    EXPECT_TRUE(found.exists);
    EXPECT_EQ(root + "/c/Program Files/Maker/Setup.EXE", found.hostPath);
    HostLocation missing = locate("C:\\program files\\maker\\new.txt");
    EXPECT_FALSE(missing.exists);
    EXPECT_TRUE(missing.parentExists);
    EXPECT_EQ(root + "/c/Program Files/Maker/new.txt", missing.hostPath);
    HostLocation deep = locate("C:\\nowhere\\new.txt");
    EXPECT_FALSE(deep.parentExists);
}

TEST_F(PathMapperTest, ShortNamesAndTheHostDriveLeadToTheSameFiles) {
    EXPECT_TRUE(locate("C:\\PROGRA~1\\Maker\\setup.exe").exists);
    HostLocation viaZ = locate("Z:" + std::string(root) + "/c/Program Files/Maker/Setup.EXE");
    EXPECT_TRUE(viaZ.exists);
    EXPECT_EQ("C:\\Program Files\\Maker",
              mapper.ToMachinePath(root + "/c/Program Files/Maker/").value_or(""));
    EXPECT_EQ("Z:\\usr\\bin", mapper.ToMachinePath("/usr/bin").value_or(""));
    WindowsPath unknown;
    WindowsPath::Parse("Q:\\x", "", false, unknown);
    HostLocation location;
    EXPECT_EQ(os::error::PathNotFound, mapper.Locate(unknown, location));
}

TEST(ShortNames, GeneratedAsWindowsGeneratesThem) {
    std::set<std::string> taken;
    auto give = [&taken](const std::string& name) {
        std::string shortName = ShortNames::Generate(name, taken);
        taken.insert(shortName);
        return shortName;
    };
    EXPECT_EQ("PROGRA~1", give("Program Files"));
    EXPECT_EQ("PROGRA~2", give("Program Data"));
    EXPECT_EQ("ABC~1.D", give("a.b.c.d"));
    EXPECT_EQ("A_BC~1.TXT", give("a+b c.txt"));
    for (int i = 3; i < 10; ++i) {
        give("Program Other " + std::to_string(i));
    }
    EXPECT_EQ("PROGR~10", give("Program Ten"));
    EXPECT_TRUE(ShortNames::IsShortName("readme.txt"));
    EXPECT_TRUE(ShortNames::IsShortName("SETUP.EXE"));
    EXPECT_FALSE(ShortNames::IsShortName("a b.txt"));
    EXPECT_FALSE(ShortNames::IsShortName("toolongname.txt"));
    EXPECT_FALSE(ShortNames::IsShortName("x.html"));
}

TEST(CodePage, ConvertsSingleAndDoubleByteText) {
    const CodePage& western = CodePage::Get(1252);
    EXPECT_EQ(u"\u20ac\u00e9", western.ToUnicode("\x80\xE9"));
    EXPECT_EQ("\x80?", western.FromUnicode(u"\u20ac\u4e00"));
    EXPECT_EQ("caf\xE9", western.FromUtf8("caf\xC3\xA9"));
    const CodePage& japanese = CodePage::Get(932);
    std::string sjis = japanese.FromUnicode(u"\u65e5\u672c");
    EXPECT_EQ(4u, sjis.size());
    EXPECT_EQ(u"\u65e5\u672c", japanese.ToUnicode(sjis));
    EXPECT_EQ(1252u, CodePage::Get(4711).Number());
    unsigned char lower[256];
    unsigned char upper[256];
    CodePage::Get(1251).CaseTables(lower, upper);
    EXPECT_EQ(0xE0, lower[0xC0]); // Cyrillic A
    japanese.CaseTables(lower, upper);
    EXPECT_EQ(0x82, lower[0x82]); // a lead byte is no letter
}

} // namespace
