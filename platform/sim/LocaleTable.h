// What the simulated machine knows of locales: the data of GetLocaleInfo for the locale
// identifiers that Windows of these versions shipped.
#pragma once

#include <cstdint>

namespace sim {

struct LocaleData {
    std::uint32_t lcid;
    const char* iso639;  // LOCALE_SISO639LANGNAME
    const char* iso3166; // LOCALE_SISO3166CTRYNAME
    std::uint32_t ansiCodePage;
    std::uint32_t oemCodePage;
    const char* abbreviation; // LOCALE_SABBREVLANGNAME
    const char* englishName;  // LOCALE_SENGLANGUAGE
};

class LocaleTable {
public:
    // Null for an identifier that the table lacks.
    static const LocaleData* Find(std::uint32_t lcid);
};

} // namespace sim
