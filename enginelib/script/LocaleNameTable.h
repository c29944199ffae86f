// Windows locale identifiers and the region-qualified names by which the package names its
// languages ("de_DE", "es_HN", "en_UK"): one row per locale. Several locales of one country in
// different scripts share a name.
#pragma once

#include "core/CStdStr.h"

#include <cstdint>

class LocaleNameTable {
public:
    // The name of a locale identifier; empty when the table lacks it.
    static CStdStr GetName(std::uint32_t lcid);
    // The first locale of a name, compared without regard to case; 0 when there is none.
    static std::uint32_t GetLocale(const CStdStr& name);
    // The first locale whose name has this language part ("es" finds es_ES); 0 when none.
    static std::uint32_t GetLocaleOfLanguage(const CStdStr& languageCode);
    static int GetRowCount();
};
