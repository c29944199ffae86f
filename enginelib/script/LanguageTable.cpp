#include "script/LanguageTable.h"

#include <cstdlib>

namespace {

// Windows codes are hexadecimal text, Mac codes and code pages decimal text, as the table was
// published.
const char* const kTable[LanguageTable::kRows][LanguageTable::kColumns] = {
        {"Language", "ISO Code", "Win Code", "Mac Code", "CodePage"},
        {"Afrikaans", "af", "0x36", "141", "1252"},
        {"Albanian", "sq", "0x1c", "36", "1250"},
        {"Amharic", "am", "0x5e", "85", "0"},
        {"Arabic", "ar", "0x01", "12", "1256"},
        {"Armenian", "hy", "0x2b", "51", "0"},
        {"Assamese", "as", "0x4d", "68", "0"},
        {"Azeri (Latin)", "az", "0x042c", "150", "1254"},
        {"Azeri (Cyrillic)", "az", "0x082c", "49", "1251"},
        {"Basque", "eu", "0x2d", "129", "1252"},
        {"Bengali", "bn", "0x45", "67", "0"},
        {"Bulgarian", "bg", "0x02", "44", "1251"},
        {"Burmese", "my", "0x55", "77", "0"},
        {"Byelorussian", "be", "0x23", "46", "1251"},
        {"Cambodian", "km", "0x53", "78", "0"},
        {"Catalan", "ca", "0x03", "130", "1252"},
        {"Chinese (Simplified)", "zh", "0x804", "33", "936"},
        {"Chinese (Hong Kong)", "zh_HK", "0xc04", "19", "950"},
        {"Chinese (Traditional)", "zh_TW", "0x404", "19", "950"},
        {"Croatian", "hr", "0x1a", "18", "1250"},
        {"Czech", "cs", "0x05", "38", "1250"},
        {"Danish", "da", "0x06", "7", "1252"},
        {"Dutch", "nl", "0x13", "4", "1252"},
        {"English", "en", "0x09", "0", "1252"},
        {"Estonian", "et", "0x25", "27", "1257"},
        {"Faeroese", "fo", "0x38", "30", "1252"},
        {"Farsi", "fa", "0x29", "31", "1256"},
        {"Finnish", "fi", "0x0b", "13", "1252"},
        {"French", "fr", "0x0c", "1", "1252"},
        {"Frisian", "fy", "0x62", "-1", "1252"},
        {"Galician", "gl", "0x56", "140", "1252"},
        {"Gaelic", "gd", "0x3c", "144", "1252"},
        {"Gaelic (Scotland)", "gd", "0x91", "144", "1252"},
        {"Georgian", "ka", "0x37", "52", "0"},
        {"German", "de", "0x07", "2", "1252"},
        {"Greek", "el", "0x08", "14", "1253"},
        {"Greek (Ancient)", "el", "0x08", "148", "1253"},
        {"Guarani", "gn", "0x74", "133", "0"},
        {"Gujarati", "gu", "0x47", "69", "0"},
        {"Hausa", "ha", "0x68", "-1", "1252"},
        {"Hebrew", "he", "0x0d", "10", "1255"},
        {"Hebrew", "iw", "0x0d", "10", "1255"},
        {"Hindi", "hi", "0x39", "21", "0"},
        {"Hungarian", "hu", "0x0e", "26", "1250"},
        {"Icelandic", "is", "0x0f", "15", "1252"},
        {"Indonesian", "id", "0x21", "81", "1252"},
        {"Indonesian", "in", "0x21", "81", "1252"},
        {"Inuktitut", "iu", "0x5d", "143", "0"},
        {"Irish", "ga", "0x083c", "35", "1252"},
        {"Irish (Gaelic script)", "ga", "0x083c", "146", "1252"},
        {"Italian", "it", "0x10", "3", "1252"},
        {"Japanese", "ja", "0x11", "11", "932"},
        {"Kannada", "kn", "0x4b", "73", "0"},
        {"Kashmiri", "ks", "0x60", "61", "0"},
        {"Kazakh", "kk", "0x3f", "48", "1251"},
        {"Kirghiz", "ky", "0x40", "54", "1251"},
        {"Korean", "ko", "0x12", "23", "949"},
        {"Lao", "lo", "0x54", "79", "0"},
        {"Latin", "la", "0x76", "131", "1252"},
        {"Latvian", "lv", "0x26", "28", "1257"},
        {"Lithuanian", "lt", "0x27", "24", "1257"},
        {"Macedonian", "mk", "0x2f", "43", "1251"},
        {"Malay", "ms", "0x3e", "83", "1252"},
        {"Malay (Brunei Darussalam)", "ms", "0x083e", "83", "1252"},
        {"Malayalam", "ml", "0x4c", "72", "0"},
        {"Maltese", "mt", "0x3a", "16", "0"},
        {"Marathi", "mr", "0x4e", "66", "0"},
        {"Mongolian (Cyrillic)", "mn", "0x50", "58", "1251"},
        {"Mongolian (Traditional)", "mn", "0x0850", "57", "0"},
        {"Nepali", "ne", "0x61", "64", "0"},
        {"Norwegian", "no", "0x14", "9", "1252"},
        {"Oriya", "or", "0x48", "71", "0"},
        {"Oromo", "om", "0x72", "87", "0"},
        {"Pashto", "ps", "0x63", "59", "0"},
        {"Polish", "pl", "0x15", "25", "1250"},
        {"Portuguese", "pt", "0x16", "8", "1252"},
        {"Portuguese (Brazil)", "pt_BR", "0x416", "8", "1252"},
        {"Portuguese (Portugal)", "pt_PT", "0x816", "8", "1252"},
        {"Punjabi", "pa", "0x46", "70", "0"},
        {"Rhaeto-Romance", "rm", "0x17", "-1", "1252"},
        {"Romanian", "ro", "0x18", "37", "1250"},
        {"Russian", "ru", "0x19", "32", "1251"},
        {"Sanskrit", "sa", "0x4f", "65", "0"},
        {"Serbian", "sr", "0x081a", "42", "1250"},
        {"Serbian", "sr", "0x0c1a", "42", "1251"},
        {"Serbian", "sr", "0x241a", "42", "1250"},
        {"Sindhi", "sd", "0x59", "62", "0"},
        {"Sinhalese", "si", "0x5b", "76", "0"},
        {"Slovak", "sk", "0x1b", "39", "1250"},
        {"Slovenian", "sl", "0x24", "40", "1250"},
};

std::uint32_t WinCodeOf(int row) {
    return static_cast<std::uint32_t>(
            std::strtoul(kTable[row][LanguageTable::WinCode], nullptr, 16));
}

} // namespace

const char* LanguageTable::GetCell(int row, int column) {
    if (row < 0 || row >= kRows || column < 0 || column >= kColumns) {
        return nullptr;
    }
    return kTable[row][column];
}

bool LanguageTable::GetEntry(int row, LanguageEntry& entry) {
    if (row < 1 || row >= kRows) {
        return false;
    }
    entry.language = kTable[row][Language];
    entry.isoCode = kTable[row][IsoCode];
    entry.winCode = WinCodeOf(row);
    entry.macCode = std::atoi(kTable[row][MacCode]);
    entry.codePage = std::atoi(kTable[row][CodePage]);
    return true;
}

bool LanguageTable::FindByIsoCode(const CStdStr& isoCode, LanguageEntry& entry) {
    if (isoCode.empty()) {
        return false;
    }
    for (int row = 1; row < kRows; ++row) {
        if (isoCode.EqualsNoCase(kTable[row][IsoCode])) {
            return GetEntry(row, entry);
        }
    }
    return false;
}

bool LanguageTable::FindByWinCode(std::uint32_t languageId, LanguageEntry& entry) {
    if (languageId == 0) {
        return false;
    }
    const std::uint32_t primary = languageId & 0x3FF;
    for (std::uint32_t wanted : {languageId, primary}) {
        for (int row = 1; row < kRows; ++row) {
            if (WinCodeOf(row) == wanted) {
                return GetEntry(row, entry);
            }
        }
    }
    for (int row = 1; row < kRows; ++row) {
        if ((WinCodeOf(row) & 0x3FF) == primary) {
            return GetEntry(row, entry);
        }
    }
    return false;
}
