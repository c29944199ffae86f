// The texts that a user sees, from the language files of the package: the language's own
// `<code>.nls`, then Common.nls, then OEM.nls, merged into one model in that order. The model and
// the current language are process-wide and survive from run to run.
#pragma once

#include "core/CStdStringList.h"
#include "script/LanguageTable.h"

#include <cstdint>

class NlsFile {
public:
    // Loads the texts of `language` from the folder `path`. An empty language is the user's
    // default one; LangConv.ini of the folder may convert the name, and a locale number becomes
    // a name. A language without a file falls back to a similar language, to its code without
    // region, then to en. False, with the model left as it was, when not even en can be loaded.
    static bool InitializeFromFiles(const CStdStr& path, const CStdStr& language);
    // Loads another language from the folder of the last load, in the same way.
    static bool SwitchLanguage(const CStdStr& language);

    // `Section.Name`, or `Name` of section Global; "\n" in the text becomes a line break. Empty
    // when the key or the model is missing.
    static CStdStr GetText(const CStdStr& key);
    // Plain text of a text with simple HTML: tags go, line breaks stay as "<BR>", "&#160;" is a
    // blank.
    static CStdStr CleanHtml(const CStdStr& text);
    // The folder name of `list` that suits the current language best: the language itself, a
    // similar language, the language without its region; else `defaultName`.
    static CStdStr GetLanguageForDirectory(const CStdStringList& list, const CStdStr& defaultName);
    // The language identifier of the system's user interface.
    static std::uint16_t GetOSLanguage();

    // A current language is set.
    static bool IsLoaded();
    // The ISO code of the current language, the one whose file was loaded.
    static CStdStr GetLanguage();
    // The Windows language identifier and the code page of the current language; 0 when unknown.
    static std::uint32_t GetWinCode();
    static int GetCodePage();

    // The row of the language table for an ISO code (with or without region). A language that
    // the table lacks is described by the system's data of its first locale.
    static bool DescribeLanguage(const CStdStr& isoCode, LanguageEntry& entry);
    // The same for a Windows language identifier.
    static bool DescribeLanguageId(std::uint32_t languageId, LanguageEntry& entry);

    // The user's default locale as "language_COUNTRY" from the system's locale names; the
    // language alone when the country is not known, en when the language is not.
    static CStdStr GetDefaultLocaleName();

    // Forgets the texts and the language, as in a fresh process.
    static void Reset();
};
