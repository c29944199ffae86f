#include "script/LanguageTable.h"
#include "script/LocaleNameTable.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace {

TEST(LanguageTable, HoldsItsRowsInTheOrderOfThePublishedTable) {
    const char* expected =
            "af sq am ar hy as az az eu bn bg my be km ca zh zh_HK zh_TW hr cs da nl en et fo fa "
            "fi fr fy gl gd gd ka de el el gn gu ha he iw hi hu is id in iu ga ga it ja kn ks kk "
            "ky ko lo la lv lt mk ms ms ml mt mr mn mn ne no or om ps pl pt pt_BR pt_PT pa rm ro "
            "ru sa sr sr sr sd si sk sl";
    std::ostringstream codes;
    for (int row = 1; row < LanguageTable::kRows; ++row) {
        codes << (row > 1 ? " " : "") << LanguageTable::GetCell(row, LanguageTable::IsoCode);
    }
    EXPECT_EQ(expected, codes.str());
    EXPECT_STREQ("Language", LanguageTable::GetCell(0, LanguageTable::Language));
    EXPECT_STREQ("CodePage", LanguageTable::GetCell(0, LanguageTable::CodePage));
    EXPECT_EQ(nullptr, LanguageTable::GetCell(LanguageTable::kRows, 0));
    EXPECT_EQ(nullptr, LanguageTable::GetCell(1, LanguageTable::kColumns));
    LanguageEntry entry;
    EXPECT_FALSE(LanguageTable::GetEntry(0, entry)) << "the header is no language";
}

TEST(LanguageTable, EveryRowIsWellFormed) {
    for (int row = 1; row < LanguageTable::kRows; ++row) {
        LanguageEntry entry;
        ASSERT_TRUE(LanguageTable::GetEntry(row, entry));
        EXPECT_FALSE(entry.language.empty()) << row;
        EXPECT_EQ(0, CStdStr(LanguageTable::GetCell(row, LanguageTable::WinCode)).Find("0x"))
                << row;
        EXPECT_NE(0u, entry.winCode) << row;
        EXPECT_GE(entry.macCode, -1) << row;
        EXPECT_GE(entry.codePage, -1) << row;
    }
}

TEST(LanguageTable, TellingRows) {
    struct Row {
        const char* language;
        const char* iso;
        std::uint32_t win;
        int mac;
        int codePage;
    };
    LanguageEntry entry;
    for (const Row& row :
         {Row{"Afrikaans", "af", 0x36, 141, 1252}, Row{"Albanian", "sq", 0x1c, 36, 1250},
          Row{"Arabic", "ar", 0x01, 12, 1256}, Row{"Portuguese (Brazil)", "pt_BR", 0x416, 8, 1252},
          Row{"Russian", "ru", 0x19, 32, 1251}, Row{"Serbian", "sr", 0x081a, 42, 1250},
          Row{"German", "de", 0x07, 2, 1252}, Row{"Japanese", "ja", 0x11, 11, 932}}) {
        ASSERT_TRUE(LanguageTable::FindByIsoCode(row.iso, entry)) << row.iso;
        EXPECT_EQ(row.language, entry.language);
        EXPECT_EQ(row.win, entry.winCode) << row.iso;
        EXPECT_EQ(row.mac, entry.macCode) << row.iso;
        EXPECT_EQ(row.codePage, entry.codePage) << row.iso;
    }
    ASSERT_TRUE(LanguageTable::FindByIsoCode("PT_br", entry));
    EXPECT_EQ("pt_BR", entry.isoCode);
    EXPECT_FALSE(LanguageTable::FindByIsoCode("es", entry)) << "the table ends with Slovenian";
    EXPECT_FALSE(LanguageTable::FindByIsoCode("", entry));
}

TEST(LanguageTable, WindowsLanguageIdentifiersFindTheirRows) {
    struct Case {
        std::uint32_t id;
        const char* iso;
        int codePage;
    };
    LanguageEntry entry;
    for (const Case& c :
         {Case{0x0416, "pt_BR", 1252}, Case{0x0816, "pt_PT", 1252}, Case{0x0407, "de", 1252},
          Case{0x0c1a, "sr", 1251}, Case{0x081a, "sr", 1250}, Case{0x041a, "hr", 1250},
          Case{0x0404, "zh_TW", 950}, Case{0x0c04, "zh_HK", 950}, Case{0x0804, "zh", 936},
          Case{0x1004, "zh", 936}, Case{0x040d, "he", 1255}, Case{0x082c, "az", 1251},
          Case{0x042c, "az", 1254}, Case{0x09, "en", 1252}}) {
        ASSERT_TRUE(LanguageTable::FindByWinCode(c.id, entry)) << std::hex << c.id;
        EXPECT_EQ(c.iso, entry.isoCode) << std::hex << c.id;
        EXPECT_EQ(c.codePage, entry.codePage) << std::hex << c.id;
    }
    EXPECT_FALSE(LanguageTable::FindByWinCode(0, entry));
    EXPECT_FALSE(LanguageTable::FindByWinCode(0x040a, entry));
}

TEST(LocaleNameTable, NamesOfWindowsLocales) {
    EXPECT_EQ("es_HN", LocaleNameTable::GetName(0x480a));
    EXPECT_EQ("en_TT", LocaleNameTable::GetName(0x2c09));
    EXPECT_EQ("fr_LU", LocaleNameTable::GetName(0x140c));
    EXPECT_EQ("de_LI", LocaleNameTable::GetName(0x1407));
    EXPECT_EQ("zh_SG", LocaleNameTable::GetName(0x1004));
    EXPECT_EQ("sr_YU", LocaleNameTable::GetName(0x081a));
    EXPECT_EQ("sr_YU", LocaleNameTable::GetName(0x0c1a));
    EXPECT_EQ("en_UK", LocaleNameTable::GetName(0x0809));
    EXPECT_EQ("en_US", LocaleNameTable::GetName(0x0409));
    EXPECT_EQ("", LocaleNameTable::GetName(0));
    EXPECT_EQ("", LocaleNameTable::GetName(0x9999));

    EXPECT_EQ(0x0809u, LocaleNameTable::GetLocale("EN_uk"));
    EXPECT_EQ(0x040au, LocaleNameTable::GetLocale("es_ES")) << "the first of two sort orders";
    EXPECT_EQ(0u, LocaleNameTable::GetLocale("es"));
    EXPECT_EQ(0x040au, LocaleNameTable::GetLocaleOfLanguage("es"));
    EXPECT_EQ(0x0409u, LocaleNameTable::GetLocaleOfLanguage("EN"));
    EXPECT_EQ(0u, LocaleNameTable::GetLocaleOfLanguage("e"));
    EXPECT_EQ(0u, LocaleNameTable::GetLocaleOfLanguage(""));
}

TEST(LocaleNameTable, OneRowPerLocale) {
    std::set<std::uint32_t> seen;
    for (std::uint32_t lcid = 0; lcid <= 0xFFFF; ++lcid) {
        CStdStr name = LocaleNameTable::GetName(lcid);
        if (name.empty()) {
            continue;
        }
        seen.insert(lcid);
        EXPECT_GT(name.Find('_'), 0) << name;
        // The primary language of every locale is a Windows language identifier.
        EXPECT_NE(0u, lcid & 0x3FF) << name;
    }
    EXPECT_EQ(static_cast<size_t>(LocaleNameTable::GetRowCount()), seen.size())
            << "an identifier stands in two rows";
}

} // namespace
