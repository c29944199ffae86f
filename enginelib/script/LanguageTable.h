// The fixed table of languages that the package knows: English name, ISO code, Windows language
// identifier, Macintosh language code and ANSI code page. Rows keep the order of the table; a
// code may stand in more than one row (Serbian in Latin and Cyrillic script), and the first row
// of a code is its answer.
#pragma once

#include "core/CStdStr.h"

#include <cstdint>

struct LanguageEntry {
    CStdStr language;          // English name
    CStdStr isoCode;           // "de", "pt_BR"
    std::uint32_t winCode = 0; // a primary language id (0x07) or a full one (0x416)
    int macCode = -1;          // -1 when unknown
    int codePage = 0;          // -1 or 0 when unknown
};

class LanguageTable {
public:
    enum Column { Language = 0, IsoCode = 1, WinCode = 2, MacCode = 3, CodePage = 4 };
    // The header row and the rows of the languages.
    static constexpr int kRows = 90;
    static constexpr int kColumns = 5;

    // The text of a cell; row 0 is the header. Null outside the table.
    static const char* GetCell(int row, int column);
    // The language of a row, 1 to kRows - 1.
    static bool GetEntry(int row, LanguageEntry& entry);

    // The first row of an ISO code, compared without regard to case.
    static bool FindByIsoCode(const CStdStr& isoCode, LanguageEntry& entry);
    // The row of a Windows language identifier: the row that carries the full identifier, then
    // the row of its primary language, then the first row of any identifier of that primary
    // language.
    static bool FindByWinCode(std::uint32_t languageId, LanguageEntry& entry);
};
