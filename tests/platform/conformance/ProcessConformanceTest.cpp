// The process, time, locale and system information groups of the seam.
#include "os/Locale.h"
#include "os/Process.h"
#include "os/SystemInfo.h"
#include "os/Time.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

using namespace os;

class ProcessConformance : public ::testing::Test {
protected:
    TestMachine machine;
};

TEST_F(ProcessConformance, WellKnownFoldersExist) {
    std::string temp;
    ASSERT_EQ(error::Success, GetTempPath(temp));
    ASSERT_FALSE(temp.empty());
    EXPECT_EQ('\\', temp.back());
    std::string windows;
    std::string system;
    ASSERT_EQ(error::Success, GetWindowsDirectory(windows));
    ASSERT_EQ(error::Success, GetSystemDirectory(system));
    EXPECT_EQ(0u, system.rfind(windows, 0));
    EXPECT_TRUE(TestMachine::Exists(windows));
    EXPECT_TRUE(TestMachine::Exists(system));
}

TEST_F(ProcessConformance, EnvironmentStringsExpandAndUnknownNamesStay) {
    std::string windows;
    ASSERT_EQ(error::Success, GetWindowsDirectory(windows));
    std::string expanded;
    ASSERT_EQ(error::Success,
              ExpandEnvironmentStrings("%WINDIR%\\x;%NO_SUCH_NAME_4711%", expanded));
    EXPECT_EQ(windows + "\\x;%NO_SUCH_NAME_4711%", expanded);
    std::string value;
    EXPECT_EQ(error::EnvVarNotFound, GetEnvironmentVariable("NO_SUCH_NAME_4711", value));
    ASSERT_EQ(error::Success, SetEnvironmentVariable("ENGINE_TEST_NAME", "v"));
    ASSERT_EQ(error::Success, GetEnvironmentVariable("engine_test_name", value));
    EXPECT_EQ("v", value);
}

TEST_F(ProcessConformance, ModuleFileNameOfTheProgramIsAFile) {
    std::string path;
    ASSERT_EQ(error::Success, GetModuleFileName(nullptr, path));
    EXPECT_TRUE(TestMachine::Exists(path));
    ASSERT_EQ(error::Success, GetModuleFileName(GetEngineModule(), path));
    EXPECT_TRUE(TestMachine::Exists(path));
}

TEST_F(ProcessConformance, AnsiConversionRoundTripsAndReplacesWhatItCannotHold) {
    if (GetACP() != 1252) {
        GTEST_SKIP() << "the system's ANSI code page is not 1252";
    }
    std::u16string text = u"Gr\u00fc\u00dfe \u20ac";
    std::string narrow = WideCharToMultiByte(codepage::Ansi, text);
    EXPECT_EQ("Gr\xfc\xdf"
              "e \x80",
              narrow);
    EXPECT_EQ(text, MultiByteToWideChar(codepage::Ansi, narrow));
    EXPECT_EQ("?", WideCharToMultiByte(codepage::Ansi, u"\u4e00"));
}

TEST_F(ProcessConformance, LocaleNamesOfTheUserLocale) {
    std::string language;
    std::string country;
    ASSERT_EQ(error::Success, GetLocaleInfo(0x0409, localeinfo::Iso639LangName, language));
    ASSERT_EQ(error::Success, GetLocaleInfo(0x0409, localeinfo::Iso3166CountryName, country));
    EXPECT_EQ("en", language);
    EXPECT_EQ("US", country);
    ASSERT_EQ(error::Success, GetLocaleInfo(0x0407, localeinfo::DefaultAnsiCodePage, language));
    EXPECT_EQ("1252", language);
}

TEST_F(ProcessConformance, VersionInformationInBothSizes) {
    OsVersionInfo extended;
    OsVersionInfo basic;
    ASSERT_EQ(error::Success, GetVersionEx(versioninfo::ExtendedSize, extended));
    ASSERT_EQ(error::Success, GetVersionEx(versioninfo::BasicSize, basic));
    EXPECT_EQ(extended.majorVersion, basic.majorVersion);
    EXPECT_EQ(2u, extended.platformId);
    EXPECT_NE(0u, extended.productType);
    EXPECT_EQ(error::InsufficientBuffer, GetVersionEx(100, basic));
}

TEST_F(ProcessConformance, TickCountAdvances) {
    std::uint32_t before = GetTickCount();
    Sleep(60);
    // The tick count moves in steps of the system timer, 10 to 16 ms on Windows.
    EXPECT_GE(GetTickCount() - before, 40u);
    SystemTime now;
    GetLocalTime(now);
    EXPECT_GE(now.year, 2020);
}

} // namespace
