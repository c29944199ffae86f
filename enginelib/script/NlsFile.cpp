#include "script/NlsFile.h"

#include "os/Locale.h"
#include "script/IniFile.h"
#include "script/LocaleNameTable.h"
#include "script/OSInfo.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"
#include "system/PathObject.h"

#include <cctype>
#include <cstdlib>
#include <memory>
#include <mutex>

namespace {

const char* const kComponent = "NlsFile";
constexpr std::uint32_t kMask = logmask::General;

struct NlsState {
    std::unique_ptr<IniFile> model = std::make_unique<IniFile>();
    CStdStr languageName;
    CStdStr currentFile;
    CStdStr lastPath;
    std::uint32_t winCode = 0;
    int codePage = 0;
};

std::mutex gLock;

NlsState& State() {
    static NlsState state;
    return state;
}

// Languages that stand in for each other, each group in order of preference.
const char* const kSimilarLanguages[][3] = {
        {"zh_TW", "zh_HK", "zh_MO"}, {"zh", "zh_CN", "zh_SG"}, {"no", "nb", "nn"},
        {"he", "iw", nullptr},       {"en", "en_US", "en_gb"},
};

CStdStringList SimilarLanguages(const CStdStr& language) {
    CStdStringList similar;
    for (const auto& group : kSimilarLanguages) {
        bool member = false;
        for (const char* name : group) {
            member = member || (name != nullptr && language.EqualsNoCase(name));
        }
        if (!member) {
            continue;
        }
        for (const char* name : group) {
            if (name != nullptr && !language.EqualsNoCase(name)) {
                similar.Add(name);
            }
        }
    }
    return similar;
}

CStdStr WithoutRegion(const CStdStr& language) {
    int cut = language.FindOneOf("_-");
    return cut > 0 ? language.Left(cut) : language;
}

void AddOnce(CStdStringList& list, const CStdStr& name) {
    if (!name.empty() && !list.ContainsNoCase(name)) {
        list.Add(name);
    }
}

bool IsDecimalNumber(const CStdStr& text) {
    if (text.empty()) {
        return false;
    }
    for (char c : text) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return true;
}

CStdStr FileIn(const CStdStr& folder, const CStdStr& name) {
    PathObject path;
    path.SetDirectory(folder);
    path.SetName(name);
    return path.GetFullPath();
}

CStdStr LocaleText(std::uint32_t lcid, std::uint32_t type) {
    std::string value;
    return os::GetLocaleInfo(lcid, type, value) == os::error::Success ? CStdStr(value) : CStdStr();
}

// A language outside the language table, described by the system's data of one of its locales.
bool FromLocale(std::uint32_t lcid, std::uint32_t winCode, const CStdStr& isoCode,
                LanguageEntry& entry) {
    CStdStr iso = isoCode.empty() ? LocaleText(lcid, os::localeinfo::Iso639LangName) : isoCode;
    if (iso.empty()) {
        return false;
    }
    CStdStr name = LocaleText(lcid, os::localeinfo::EnglishLanguageName);
    entry.language = name.empty() ? iso : name;
    entry.isoCode = iso;
    entry.winCode = winCode;
    entry.macCode = -1;
    entry.codePage = std::atoi(LocaleText(lcid, os::localeinfo::DefaultAnsiCodePage).c_str());
    return true;
}

CStdStr UserDefaultLanguage() {
    CStdStr name = LocaleNameTable::GetName(os::GetUserDefaultLCID());
    LanguageEntry entry;
    if (name.empty() && NlsFile::DescribeLanguageId(os::GetUserDefaultLangID(), entry)) {
        name = entry.isoCode;
    }
    return name.empty() ? CStdStr("en") : name;
}

// The name of the language to load: the user's language for an empty one, converted by
// LangConv.ini, a locale number turned into a name.
CStdStr ResolveName(const CStdStr& path, const CStdStr& language, LogScope& scope) {
    CStdStr name = language;
    name.Trim();
    if (name.empty()) {
        name = UserDefaultLanguage();
    }
    IniFile conversions;
    CStdStr conversionFile = FileIn(path, "LangConv.ini");
    if (PathObject(conversionFile).Exists()) {
        conversions.Read(conversionFile, false);
    }
    CStdStr converted = conversions.GetValue("Conversion", name);
    if (!converted.empty()) {
        name = converted;
    }
    scope.Log(kMask, "- Passed in language: %s, using language %s", language.c_str(), name.c_str());
    if (IsDecimalNumber(name)) {
        CStdStr byLocale = conversions.GetValue("LocaleToName", name);
        if (byLocale.empty()) {
            byLocale = LocaleNameTable::GetName(
                    static_cast<std::uint32_t>(std::strtoul(name.c_str(), nullptr, 10)));
        }
        if (byLocale.empty()) {
            scope.Log(kMask, "no language is known for the locale %s", name.c_str());
        } else {
            name = byLocale;
        }
    }
    return name;
}

// Finds the language's file, loads it with Common.nls and OEM.nls and makes it current. The
// lock is held by the caller.
bool LoadLanguage(const CStdStr& path, const CStdStr& language, LogScope& scope) {
    CStdStr name = ResolveName(path, language, scope);
    CStdStringList candidates;
    AddOnce(candidates, name);
    for (const CStdStr& similar : SimilarLanguages(name)) {
        AddOnce(candidates, similar);
    }
    CStdStr base = WithoutRegion(name);
    AddOnce(candidates, base);
    for (const CStdStr& similar : SimilarLanguages(base)) {
        AddOnce(candidates, similar);
    }
    AddOnce(candidates, "en");

    CStdStr chosen;
    CStdStr languageFile;
    for (const CStdStr& candidate : candidates) {
        // A name is a file name in the folder, and must not lead out of it.
        if (candidate.FindOneOf("\\/:*?\"<>|") >= 0) {
            continue;
        }
        CStdStr file = FileIn(path, candidate + ".nls");
        if (PathObject(file).Exists()) {
            chosen = candidate;
            languageFile = file;
            break;
        }
    }
    if (chosen.empty()) {
        scope.Log(0, "cannot load language %s", name.c_str());
        return false;
    }
    if (!chosen.EqualsNoCase(name)) {
        scope.Log(kMask, "no language file for %s, using %s", name.c_str(), chosen.c_str());
    }

    NlsState& state = State();
    // The same file again is merged over the texts in memory; another one replaces them, and
    // is read aside first, so that a file that cannot be read leaves the texts as they were.
    const bool reload = languageFile.EqualsNoCase(state.currentFile);
    std::unique_ptr<IniFile> fresh;
    IniFile* model = state.model.get();
    if (!reload) {
        fresh = std::make_unique<IniFile>();
        model = fresh.get();
    }
    if (!model->Read(languageFile, reload)) {
        scope.Log(0, "cannot load language %s", name.c_str());
        return false;
    }
    for (const char* extra : {"Common.nls", "OEM.nls"}) {
        CStdStr file = FileIn(path, extra);
        if (PathObject(file).Exists()) {
            model->Read(file, true);
        }
    }
    if (fresh) {
        state.model = std::move(fresh);
    }

    LanguageEntry entry;
    bool known = NlsFile::DescribeLanguage(chosen, entry);
    state.languageName = chosen;
    state.currentFile = languageFile;
    state.lastPath = path;
    state.winCode = known ? entry.winCode : 0;
    state.codePage = known ? entry.codePage : 0;
    scope.Log(kMask, "language %s loaded from %s (id 0x%x, code page %d)", chosen.c_str(),
              languageFile.c_str(), state.winCode, state.codePage);
    return true;
}

} // namespace

bool NlsFile::InitializeFromFiles(const CStdStr& path, const CStdStr& language) {
    LogScope scope(kComponent, "NlsFile::InitializeFromFiles", kMask);
    scope.Log(kMask, "path:%s, language:%s", path.c_str(), language.c_str());
    std::lock_guard<std::mutex> guard(gLock);
    bool loaded = LoadLanguage(path, language, scope);
    scope.SetResult(loaded);
    return loaded;
}

bool NlsFile::SwitchLanguage(const CStdStr& language) {
    LogScope scope(kComponent, "NlsFile::SwitchLanguage", kMask);
    std::lock_guard<std::mutex> guard(gLock);
    NlsState& state = State();
    if (state.lastPath.empty()) {
        scope.Log(0, "cannot load language %s", language.c_str());
        scope.Log(0, "no language folder has been loaded yet");
        scope.SetResult(false);
        return false;
    }
    CStdStr previous = state.languageName;
    bool loaded = LoadLanguage(state.lastPath, language, scope);
    if (loaded) {
        scope.Log(kMask, "NlsFile::SwitchLanguage: Language changed from '%s' to '%s'",
                  previous.c_str(), state.languageName.c_str());
    }
    scope.SetResult(loaded);
    return loaded;
}

CStdStr NlsFile::GetText(const CStdStr& key) {
    int dot = key.Find('.');
    CStdStr section = dot < 0 ? CStdStr("Global") : key.Left(dot);
    CStdStr name = dot < 0 ? key : key.Mid(dot + 1);
    CStdStr text;
    {
        std::lock_guard<std::mutex> guard(gLock);
        text = State().model->GetValue(section, name);
    }
    text.Replace("\\n", "\n");
    return text;
}

CStdStr NlsFile::CleanHtml(const CStdStr& text) {
    // Line breaks are kept through a marker, since every other tag goes.
    CStdStr marked = text;
    marked.Replace("<BR>", " @@@ ");
    marked.Replace("<br>", " @@@ ");
    CStdStr plain;
    size_t at = 0;
    while (at < marked.size()) {
        // A tag opens with a letter, "/" or "!"; "a < b" is text. An image or a <DMY>
        // placeholder goes like any other tag, and an unclosed "<" stays as text.
        if (marked[at] == '<' && at + 1 < marked.size()) {
            unsigned char next = static_cast<unsigned char>(marked[at + 1]);
            bool opensTag = std::isalpha(next) != 0 || next == '/' || next == '!';
            size_t close = opensTag ? marked.find('>', at + 1) : std::string::npos;
            if (close != std::string::npos) {
                at = close + 1;
                continue;
            }
        }
        plain += marked[at];
        ++at;
    }
    plain.Replace("&#160;", " ");
    plain.Replace("@@@", "<BR>");
    return plain;
}

CStdStr NlsFile::GetLanguageForDirectory(const CStdStringList& list, const CStdStr& defaultName) {
    LogScope scope(kComponent, "NlsFile::GetLanguageForDirectory", kMask);
    CStdStr current = GetLanguage();
    CStdStringList wanted;
    if (!current.empty()) {
        AddOnce(wanted, current);
        for (const CStdStr& similar : SimilarLanguages(current)) {
            AddOnce(wanted, similar);
        }
        AddOnce(wanted, WithoutRegion(current));
    }
    for (const CStdStr& language : wanted) {
        for (const CStdStr& folder : list) {
            if (folder.EqualsNoCase(language)) {
                scope.SetResult(folder);
                return folder;
            }
        }
    }
    scope.Log(kMask, "no folder for language %s, using '%s'", current.c_str(), defaultName.c_str());
    scope.SetResult(defaultName);
    return defaultName;
}

std::uint16_t NlsFile::GetOSLanguage() {
    // The user interface language can be asked for from Windows 2000 on; before, the system's
    // language is the language of its interface.
    OSInfo system;
    if (system.Is9x() || system.GetOSCode() == OSInfo::NT4) {
        return os::GetSystemDefaultLangID();
    }
    return os::GetUserDefaultUILanguage();
}

bool NlsFile::IsLoaded() {
    std::lock_guard<std::mutex> guard(gLock);
    return !State().languageName.empty();
}

CStdStr NlsFile::GetLanguage() {
    std::lock_guard<std::mutex> guard(gLock);
    return State().languageName;
}

std::uint32_t NlsFile::GetWinCode() {
    std::lock_guard<std::mutex> guard(gLock);
    return State().winCode;
}

int NlsFile::GetCodePage() {
    std::lock_guard<std::mutex> guard(gLock);
    return State().codePage;
}

bool NlsFile::DescribeLanguage(const CStdStr& isoCode, LanguageEntry& entry) {
    if (isoCode.empty()) {
        return false;
    }
    CStdStr base = WithoutRegion(isoCode);
    if (LanguageTable::FindByIsoCode(isoCode, entry) || LanguageTable::FindByIsoCode(base, entry)) {
        return true;
    }
    // A locale of that very name carries its full identifier; one of the language alone, the
    // primary language, as the table writes languages without region.
    if (std::uint32_t lcid = LocaleNameTable::GetLocale(isoCode)) {
        return FromLocale(lcid, lcid, isoCode, entry);
    }
    if (std::uint32_t lcid = LocaleNameTable::GetLocaleOfLanguage(base)) {
        return FromLocale(lcid, lcid & 0x3FF, base, entry);
    }
    return false;
}

bool NlsFile::DescribeLanguageId(std::uint32_t languageId, LanguageEntry& entry) {
    return LanguageTable::FindByWinCode(languageId, entry) ||
           (languageId != 0 && FromLocale(languageId, languageId, CStdStr(), entry));
}

CStdStr NlsFile::GetDefaultLocaleName() {
    std::uint32_t lcid = os::GetUserDefaultLCID();
    CStdStr language = LocaleText(lcid, os::localeinfo::Iso639LangName);
    CStdStr country = LocaleText(lcid, os::localeinfo::Iso3166CountryName);
    if (language.empty()) {
        ENGINE_LOG(kMask, "the user's locale 0x%x has no language name, using en", lcid);
        return "en";
    }
    if (country.empty()) {
        return language;
    }
    return CStdStr::Formatted("%s_%s", language.c_str(), country.c_str());
}

void NlsFile::Reset() {
    std::lock_guard<std::mutex> guard(gLock);
    NlsState& state = State();
    state.model = std::make_unique<IniFile>();
    state.languageName.clear();
    state.currentFile.clear();
    state.lastPath.clear();
    state.winCode = 0;
    state.codePage = 0;
}
