// Locale group of the platform seam: code pages, conversions and locale names.
#pragma once

#include "os/OsTypes.h"

#include <string_view>

namespace os {

namespace codepage {
constexpr std::uint32_t Ansi = 0; // CP_ACP
constexpr std::uint32_t Oem = 1;  // CP_OEMCP
constexpr std::uint32_t Utf8 = 65001;
} // namespace codepage

// GetLocaleInfo types in use.
namespace localeinfo {
constexpr std::uint32_t DefaultAnsiCodePage = 0x1004; // LOCALE_IDEFAULTANSICODEPAGE
constexpr std::uint32_t Iso639LangName = 0x59;        // LOCALE_SISO639LANGNAME
constexpr std::uint32_t Iso3166CountryName = 0x5A;    // LOCALE_SISO3166CTRYNAME
constexpr std::uint32_t EnglishLanguageName = 0x1001; // LOCALE_SENGLANGUAGE
} // namespace localeinfo

std::uint32_t GetACP();
std::uint32_t GetOEMCP();

// Characters with no mapping become the code page's default character, as Windows does.
std::string WideCharToMultiByte(std::uint32_t codePage, std::u16string_view text);
std::u16string MultiByteToWideChar(std::uint32_t codePage, std::string_view text);

std::uint32_t GetUserDefaultLCID();
std::uint32_t GetSystemDefaultLCID();
std::uint16_t GetUserDefaultLangID();
std::uint16_t GetSystemDefaultLangID();
std::uint16_t GetUserDefaultUILanguage();
Error GetLocaleInfo(std::uint32_t lcid, std::uint32_t type, std::string& value);

// CharLowerBuff and CharUpperBuff over every byte of the ANSI code page: the case mapping that
// comparisons without regard to case use.
void GetAnsiCaseTables(unsigned char lower[256], unsigned char upper[256]);

// setlocale(LC_ALL, ""): the character functions of the process follow the user's settings.
void SetUserLocale();

} // namespace os
