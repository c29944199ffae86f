#include "script/NlsFile.h"

#include "NlsTestSupport.h"

#include <gtest/gtest.h>

namespace {

using nlstest::LogCapture;
using nlstest::NlsTest;

TEST_F(NlsTest, ALanguageWithARegionFallsBackToItsLanguage) {
    write("en.nls", "[Global]\nHELLO=Hello\n");
    write("de.nls", "[Global]\nHELLO=Hallo\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "en_US"));
    EXPECT_TRUE(NlsFile::IsLoaded());
    EXPECT_EQ("en", NlsFile::GetLanguage());
    EXPECT_EQ("Hello", NlsFile::GetText("HELLO"));

    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "de_AT"));
    EXPECT_EQ("de", NlsFile::GetLanguage());
    EXPECT_EQ("Hallo", NlsFile::GetText("HELLO"));
    // A language of its own region is taken before the language without it.
    write("de_AT.nls", "[Global]\nHELLO=Servus\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "de_AT"));
    EXPECT_EQ("de_AT", NlsFile::GetLanguage());
    EXPECT_EQ("Servus", NlsFile::GetText("HELLO"));
}

TEST_F(NlsTest, AnUnknownLanguageEndsInEnglishAndWithoutEnglishTheLoadFails) {
    write("fr.nls", "[Global]\nHELLO=Bonjour\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "fr"));
    {
        LogCapture log(machine);
        EXPECT_FALSE(NlsFile::InitializeFromFiles(folder, "xx_YY"));
        EXPECT_TRUE(log.Holds("cannot load language xx_YY"));
    }
    // The texts in force stay.
    EXPECT_EQ("fr", NlsFile::GetLanguage());
    EXPECT_EQ("Bonjour", NlsFile::GetText("HELLO"));

    write("en.nls", "[Global]\nHELLO=Hello\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "xx_YY"));
    EXPECT_EQ("en", NlsFile::GetLanguage());

    // A name is a file name in the folder and nothing else.
    write("..\\up.nls", "[Global]\nHELLO=outside\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "..\\up"));
    EXPECT_EQ("en", NlsFile::GetLanguage());
    EXPECT_EQ("Hello", NlsFile::GetText("HELLO"));

    NlsFile::Reset();
    EXPECT_FALSE(NlsFile::InitializeFromFiles(machine.Path("absent"), "en"));
    EXPECT_FALSE(NlsFile::IsLoaded());
    EXPECT_EQ("", NlsFile::GetText("HELLO"));
}

TEST_F(NlsTest, SimilarLanguagesComeBeforeTheLanguageWithoutRegion) {
    write("zh.nls", "[Global]\nT=simplified\n");
    write("zh_HK.nls", "[Global]\nT=hong kong\n");
    write("he.nls", "[Global]\nT=hebrew\n");
    write("no.nls", "[Global]\nT=norsk\n");
    write("en.nls", "[Global]\nT=english\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "zh_TW"));
    EXPECT_EQ("zh_HK", NlsFile::GetLanguage());
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "zh_SG"));
    EXPECT_EQ("zh", NlsFile::GetLanguage());
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "iw"));
    EXPECT_EQ("he", NlsFile::GetLanguage());
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "nb_NO"));
    EXPECT_EQ("no", NlsFile::GetLanguage());
    EXPECT_EQ("norsk", NlsFile::GetText("T"));
}

TEST_F(NlsTest, LangConvConvertsTheNameBeforeAnythingElse) {
    write("LangConv.ini", "[Conversion]\ngerman=de\nsuisse=1036\n[LocaleToName]\n1031=de\n");
    write("de.nls", "[Global]\nT=deutsch\n");
    write("fr.nls", "[Global]\nT=francais\n");
    write("en.nls", "[Global]\nT=english\n");
    {
        LogCapture log(machine);
        ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "German"));
        EXPECT_TRUE(log.Holds("- Passed in language: German, using language de"));
    }
    EXPECT_EQ("de", NlsFile::GetLanguage());
    EXPECT_EQ("deutsch", NlsFile::GetText("T"));
    // A conversion may give a locale number, which is then turned into a name.
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "suisse"));
    EXPECT_EQ("fr", NlsFile::GetLanguage());
}

TEST_F(NlsTest, LocaleNumbersBecomeNames) {
    write("LangConv.ini", "[LocaleToName]\n1031=fr\n");
    write("de.nls", "[Global]\nT=deutsch\n");
    write("fr.nls", "[Global]\nT=francais\n");
    write("pt_BR.nls", "[Global]\nT=brasileiro\n");
    write("en.nls", "[Global]\nT=english\n");
    // LangConv.ini has the last word over the built-in table of locales.
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "1031"));
    EXPECT_EQ("fr", NlsFile::GetLanguage());
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "3079")); // 0x0c07, de_AT
    EXPECT_EQ("de", NlsFile::GetLanguage());
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "1046")); // 0x0416, pt_BR
    EXPECT_EQ("pt_BR", NlsFile::GetLanguage());
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "99999"));
    EXPECT_EQ("en", NlsFile::GetLanguage());
}

TEST_F(NlsTest, CommonAndOemFilesAreMergedOverTheLanguageFile) {
    write("de.nls", "[Screen]\nTITLE=Sprache\nBODY=Text\n[Global]\nA=1\n");
    write("Common.nls", "[Screen]\nTITLE=Gemeinsam\nFOOT=Fuss\n");
    write("OEM.nls", "[Screen]\nTITLE=Marke\n[Extra]\nX=y\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "de"));
    EXPECT_EQ("Marke", NlsFile::GetText("Screen.TITLE"));
    EXPECT_EQ("Text", NlsFile::GetText("Screen.BODY"));
    EXPECT_EQ("Fuss", NlsFile::GetText("Screen.FOOT"));
    EXPECT_EQ("y", NlsFile::GetText("extra.x"));
    EXPECT_EQ("1", NlsFile::GetText("A"));
}

TEST_F(NlsTest, TextsAreLookedUpBySectionAndName) {
    write("en.nls", "[Global]\nx=in global\nMULTI=one\\ntwo\\n\n[Printer]\nCopyString=Copy\n"
                    "Name.With.Dots=dotted\n");
    EXPECT_EQ("", NlsFile::GetText("x")) << "nothing is loaded yet";
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "en"));
    EXPECT_EQ("in global", NlsFile::GetText("x"));
    EXPECT_EQ("in global", NlsFile::GetText("Global.X"));
    EXPECT_EQ("one\ntwo\n", NlsFile::GetText("MULTI"));
    EXPECT_EQ("Copy", NlsFile::GetText("Printer.CopyString"));
    EXPECT_EQ("dotted", NlsFile::GetText("Printer.Name.With.Dots"));
    EXPECT_EQ("", NlsFile::GetText("Printer.Missing"));
    EXPECT_EQ("", NlsFile::GetText("Missing.x"));
    EXPECT_EQ("", NlsFile::GetText(""));
    EXPECT_EQ("", NlsFile::GetText(".x"));
}

TEST_F(NlsTest, SwitchingLanguageReplacesTheTexts) {
    write("de.nls", "[Global]\nT=deutsch\nONLY_DE=nur\n");
    write("fr.nls", "[Global]\nT=francais\n");
    write("en.nls", "[Global]\nT=english\n");
    EXPECT_FALSE(NlsFile::SwitchLanguage("fr")) << "no folder is known yet";
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "de"));
    {
        LogCapture log(machine);
        ASSERT_TRUE(NlsFile::SwitchLanguage("fr"));
        EXPECT_TRUE(log.Holds("NlsFile::SwitchLanguage: Language changed from 'de' to 'fr'"));
    }
    EXPECT_EQ("fr", NlsFile::GetLanguage());
    EXPECT_EQ("francais", NlsFile::GetText("T"));
    EXPECT_EQ("", NlsFile::GetText("ONLY_DE"));
}

TEST_F(NlsTest, LoadingTheSameFileAgainMergesOverTheTextsInMemory) {
    write("de.nls", "[Global]\nA=1\nB=2\n");
    write("fr.nls", "[Global]\nA=un\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "de"));
    write("de.nls", "[Global]\nA=eins\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "de"));
    EXPECT_EQ("eins", NlsFile::GetText("A"));
    EXPECT_EQ("2", NlsFile::GetText("B"));
    // Another language in between starts afresh.
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "fr"));
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "de"));
    EXPECT_EQ("", NlsFile::GetText("B"));
}

TEST_F(NlsTest, CodesAndCodePagesOfTheCurrentLanguage) {
    for (const char* name : {"pt_BR", "ru", "es", "es_MX", "en", "sr"}) {
        write(std::string(name) + ".nls", "[Global]\nT=x\n");
    }
    struct Case {
        const char* language;
        std::uint32_t winCode;
        int codePage;
    };
    // Spanish is not in the language table; the system's data of its locales describe it.
    for (const Case& c :
         {Case{"pt_BR", 0x416, 1252}, Case{"ru", 0x19, 1251}, Case{"sr", 0x081a, 1250},
          Case{"es", 0x0a, 1252}, Case{"es_MX", 0x080a, 1252}, Case{"en_GB", 0x09, 1252}}) {
        ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, c.language)) << c.language;
        EXPECT_EQ(c.winCode, NlsFile::GetWinCode()) << c.language;
        EXPECT_EQ(c.codePage, NlsFile::GetCodePage()) << c.language;
    }
    NlsFile::Reset();
    EXPECT_EQ(0u, NlsFile::GetWinCode());
    EXPECT_EQ(0, NlsFile::GetCodePage());
}

TEST_F(NlsTest, CleanHtmlKeepsLineBreaksAndDropsTags) {
    EXPECT_EQ("plain", NlsFile::CleanHtml("plain"));
    EXPECT_EQ("one <BR> two <BR> three", NlsFile::CleanHtml("one<br>two<BR>three"));
    EXPECT_EQ("bold and  text", NlsFile::CleanHtml("<b>bold</b> and <img src=\"x.gif\"> text"));
    EXPECT_EQ("a b", NlsFile::CleanHtml("a&#160;b"));
    EXPECT_EQ("before after", NlsFile::CleanHtml("before<DMY> after"));
    EXPECT_EQ("1 < 2 and 3 > 2", NlsFile::CleanHtml("1 < 2 and 3 > 2"));
    EXPECT_EQ("open <tag", NlsFile::CleanHtml("open <tag"));
    EXPECT_EQ("", NlsFile::CleanHtml(""));
}

TEST_F(NlsTest, TheFolderOfTheBestLanguage) {
    CStdStringList folders{"en", "pt", "PT_br", "zh_HK", "zh"};
    EXPECT_EQ("default", NlsFile::GetLanguageForDirectory(folders, "default"))
            << "no language is loaded";
    write("pt_BR.nls", "[Global]\nT=x\n");
    write("zh_TW.nls", "[Global]\nT=x\n");
    write("en_US.nls", "[Global]\nT=x\n");
    write("fr.nls", "[Global]\nT=x\n");

    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "pt_BR"));
    EXPECT_EQ("PT_br", NlsFile::GetLanguageForDirectory(folders, "default"));
    EXPECT_EQ("pt", NlsFile::GetLanguageForDirectory({"en", "pt"}, "default"));
    EXPECT_EQ("", NlsFile::GetLanguageForDirectory({"en", "de"}, ""));

    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "zh_TW"));
    EXPECT_EQ("zh_HK", NlsFile::GetLanguageForDirectory(folders, "default"));
    EXPECT_EQ("zh", NlsFile::GetLanguageForDirectory({"zh", "en"}, "default"));

    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "en_US"));
    EXPECT_EQ("en", NlsFile::GetLanguageForDirectory({"de", "en"}, "default"));
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "fr"));
    EXPECT_EQ("default", NlsFile::GetLanguageForDirectory(folders, "default"));
    EXPECT_EQ("default", NlsFile::GetLanguageForDirectory({}, "default"));
}

TEST_F(NlsTest, AnEmptyLanguageIsTheUsersLanguage) {
    write("en.nls", "[Global]\nT=english\n");
    write("de.nls", "[Global]\nT=deutsch\n");
    write("ja.nls", "[Global]\nT=nihongo\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, ""));
    EXPECT_EQ("en", NlsFile::GetLanguage());
    EXPECT_EQ("en_US", NlsFile::GetDefaultLocaleName());

    nlstest::SetMachineLocale(machine, 0x0407);
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, ""));
    EXPECT_EQ("de", NlsFile::GetLanguage());
    EXPECT_EQ("de_DE", NlsFile::GetDefaultLocaleName());

    nlstest::SetMachineLocale(machine, 0x0411);
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, ""));
    EXPECT_EQ("ja", NlsFile::GetLanguage());
}

TEST_F(NlsTest, ALocaleThatTheSystemCannotNameGivesEnglish) {
    // The simulated machine has no locale data for Swahili of Tanzania.
    nlstest::SetMachineLocale(machine, 0x0841);
    EXPECT_EQ("en", NlsFile::GetDefaultLocaleName());
    write("en.nls", "[Global]\nT=english\n");
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, ""));
    EXPECT_EQ("en", NlsFile::GetLanguage());
}

TEST_F(NlsTest, TheLanguageOfTheSystem) {
    EXPECT_EQ(0x0409, NlsFile::GetOSLanguage());
    nlstest::SetMachineLocale(machine, 0x0c0a);
    EXPECT_EQ(0x0c0a, NlsFile::GetOSLanguage());
    LanguageEntry entry;
    ASSERT_TRUE(NlsFile::DescribeLanguageId(NlsFile::GetOSLanguage(), entry));
    EXPECT_EQ("es", entry.isoCode);
    EXPECT_EQ(1252, entry.codePage);
    EXPECT_EQ(-1, entry.macCode);
    EXPECT_FALSE(NlsFile::DescribeLanguageId(0, entry));
    EXPECT_FALSE(NlsFile::DescribeLanguage("", entry));
    EXPECT_FALSE(NlsFile::DescribeLanguage("qq", entry));
}

class NlsOnWindows98Test : public NlsTest {
protected:
    NlsOnWindows98Test() : NlsTest("win98") {}
};

TEST_F(NlsOnWindows98Test, TheLanguageOfTheSystemIsItsDefaultLanguage) {
    nlstest::SetMachineLocale(machine, 0x0419);
    EXPECT_EQ(0x0419, NlsFile::GetOSLanguage());
}

} // namespace
