// The locale group of the seam: the machine's locale and code pages from machine.ini.
#include "os/Locale.h"

#include "sim/LocaleTable.h"
#include "sim/MachineCall.h"

#include <cstdio>

namespace os {

using sim::CodePage;
using sim::MachineCall;

namespace {

constexpr std::uint32_t kUserDefault = 0x0400;
constexpr std::uint32_t kSystemDefault = 0x0800;
constexpr Error kInvalidFlags = 1004;

const CodePage& Resolve(std::uint32_t codePage) {
    MachineCall machine;
    if (machine && codePage == codepage::Ansi) {
        return machine->Ansi();
    }
    if (machine && codePage == codepage::Oem) {
        return machine->Oem();
    }
    return CodePage::Get(codePage == codepage::Ansi  ? 1252
                         : codePage == codepage::Oem ? 437
                                                     : codePage);
}

std::uint32_t MachineLcid() {
    MachineCall machine;
    return machine ? machine->Identity().lcid : 0x0409;
}

} // namespace

std::uint32_t GetACP() {
    MachineCall machine;
    return machine ? machine->Identity().ansiCodePage : 1252;
}

std::uint32_t GetOEMCP() {
    MachineCall machine;
    return machine ? machine->Identity().oemCodePage : 437;
}

std::string WideCharToMultiByte(std::uint32_t codePage, std::u16string_view text) {
    return Resolve(codePage).FromUnicode(text);
}

std::u16string MultiByteToWideChar(std::uint32_t codePage, std::string_view text) {
    return Resolve(codePage).ToUnicode(text);
}

std::uint32_t GetUserDefaultLCID() {
    return MachineLcid();
}

std::uint32_t GetSystemDefaultLCID() {
    return MachineLcid();
}

std::uint16_t GetUserDefaultLangID() {
    return static_cast<std::uint16_t>(MachineLcid() & 0xFFFF);
}

std::uint16_t GetSystemDefaultLangID() {
    return static_cast<std::uint16_t>(MachineLcid() & 0xFFFF);
}

std::uint16_t GetUserDefaultUILanguage() {
    return static_cast<std::uint16_t>(MachineLcid() & 0xFFFF);
}

Error GetLocaleInfo(std::uint32_t lcid, std::uint32_t type, std::string& value) {
    if (lcid == 0 || lcid == kUserDefault || lcid == kSystemDefault) {
        lcid = MachineLcid();
    }
    const sim::LocaleData* locale = sim::LocaleTable::Find(lcid);
    if (locale == nullptr) {
        return error::InvalidParameter;
    }
    char number[16];
    switch (type) {
    case localeinfo::DefaultAnsiCodePage:
        value = std::to_string(locale->ansiCodePage);
        return error::Success;
    case 0xB: // LOCALE_IDEFAULTCODEPAGE
        value = std::to_string(locale->oemCodePage);
        return error::Success;
    case 0x1: // LOCALE_ILANGUAGE
        std::snprintf(number, sizeof number, "%04x", locale->lcid);
        value = number;
        return error::Success;
    case 0x3: // LOCALE_SABBREVLANGNAME
        value = locale->abbreviation;
        return error::Success;
    case localeinfo::Iso639LangName:
        value = locale->iso639;
        return error::Success;
    case localeinfo::Iso3166CountryName:
        value = locale->iso3166;
        return error::Success;
    case localeinfo::EnglishLanguageName:
        value = locale->englishName;
        return error::Success;
    default:
        return kInvalidFlags;
    }
}

void GetAnsiCaseTables(unsigned char lower[256], unsigned char upper[256]) {
    MachineCall machine;
    const CodePage& codePage = machine ? machine->Ansi() : CodePage::Get(1252);
    codePage.CaseTables(lower, upper);
}

void SetUserLocale() {
    // The host's C runtime stays in the "C" locale: the machine's own code page decides case
    // and conversions, through the calls above.
}

} // namespace os
