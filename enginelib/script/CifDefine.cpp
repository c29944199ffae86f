#include "script/CifDefine.h"

#include "core/ProductIni.h"
#include "core/RunState.h"
#include "script/DefineFunctions.h"
#include "script/IniFile.h"
#include "script/NlsFile.h"
#include "script/SystemPath.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"
#include "uninstall/UninstallLog.h"

namespace {

const char* const kComponent = "CifDefine";
constexpr std::uint32_t kMask = logmask::CifGf | logmask::Cgf; // 72
const char* const kInstallDir = "INSTALL_DIR";
const char* const kCurrentComp = "CURRENT_COMP";
const char* const kIsfFile = "ISF_FILE";

const char* const kAlwaysMutable[] = {kInstallDir, kCurrentComp, kIsfFile};

// A string is rescanned from the front after each replacement, so a value that brings back the
// reference it replaced would never end. No real script line holds this many references.
constexpr int kMaxReplacements = 4096;

const char* const kStandardDefines[] = {"WINDOWS_DRIVE",
                                        "WINDOWS_DIR",
                                        "SYSTEM_DIR",
                                        "PROGRAMFILES_DIR",
                                        "SYSTEMFONTS_DIR",
                                        "CD_ROOT_DIR",
                                        "CURRENT_DIR",
                                        "TEMP_DIR",
                                        "SENDTO_DIR",
                                        "CURRENTUSER_DESKTOP_DIR",
                                        "ALLUSERS_DESKTOP_DIR",
                                        "ALLUSERS_PROFILE_DIR",
                                        "LANGUAGE",
                                        "PRODUCT_KEY",
                                        "OEM_PRODUCT",
                                        "DRIVER_DIR",
                                        "DRIVER_MULTI_OS_DIR",
                                        "COMMONFILES_DIR",
                                        "OS_LANG",
                                        "OS_ARCH",
                                        "IS_OS_NT",
                                        "DRIVER_CAB"};

// A define's name without the dollar signs and blanks around it.
CStdStr BareName(const CStdStr& name) {
    CStdStr bare = name;
    size_t first = bare.find_first_not_of("$ ");
    if (first == CStdStr::npos) {
        return CStdStr();
    }
    size_t last = bare.find_last_not_of("$ ");
    return bare.substr(first, last - first + 1);
}

// Marks a define as being resolved for as long as its resolution lasts, and counts the depth.
class ResolvingGuard {
public:
    ResolvingGuard(std::map<CStdStr, int, NoCaseLess>& resolving, int& nesting, const CStdStr& name)
            : mResolving(resolving), mNesting(nesting), mName(name) {
        ++mResolving[mName];
        ++mNesting;
    }
    ~ResolvingGuard() {
        --mNesting;
        auto entry = mResolving.find(mName);
        if (--entry->second == 0) {
            mResolving.erase(entry);
        }
    }
    ResolvingGuard(const ResolvingGuard&) = delete;
    ResolvingGuard& operator=(const ResolvingGuard&) = delete;

private:
    std::map<CStdStr, int, NoCaseLess>& mResolving;
    int& mNesting;
    CStdStr mName;
};

// The names between pairs of dollar signs, as a scan from the front pairs them.
std::vector<CStdStr> ReferencedNames(const CStdStr& text) {
    std::vector<CStdStr> names;
    size_t first = text.find('$');
    while (first != CStdStr::npos) {
        size_t second = text.find('$', first + 1);
        if (second == CStdStr::npos) {
            break;
        }
        names.push_back(text.substr(first + 1, second - first - 1));
        first = text.find('$', second + 1);
    }
    return names;
}

bool IsAlwaysMutable(const CStdStr& name) {
    for (const char* always : kAlwaysMutable) {
        if (name.EqualsNoCase(always)) {
            return true;
        }
    }
    return false;
}

CStdStr SectionKey(const CStdStr& section, const CStdStr& name) {
    return section + "\n" + name;
}

void CutTrailingBackslash(CStdStr& path) {
    if (!path.empty() && path.back() == '\\') {
        path.pop_back();
    }
}

} // namespace

CifDefine::CifDefine(const DefineMap& rawDefines, IniFile& isf, bool hasComponentFile)
        : mRaw(rawDefines), mIsf(isf), mHasComponentFile(hasComponentFile) {
    createDefineMap();
}

CStdStr CifDefine::LanguageText(const CStdStr& key) {
    CStdStr text = NlsFile::GetText(key);
    text.Replace(",", "\\,");
    return text;
}

bool CifDefine::createDefineMap() {
    LogScope scope(kComponent, "CifDefine::createDefineMap", kMask);
    // INSTALL_DIR goes first, so that its value stands when the others are read.
    auto installDir = mRaw.find(kInstallDir);
    if (installDir != mRaw.end()) {
        storeDefine(installDir->first, installDir->second);
    }
    for (const auto& [name, value] : mRaw) {
        // A define that an earlier one refers to is resolved already.
        if (!name.EqualsNoCase(kInstallDir) && isPending(name, CStdStr())) {
            storeDefine(name, value);
        }
    }
    scope.SetResult(true);
    return true;
}

void CifDefine::storeDefine(const CStdStr& name, const CStdStr& rawValue) {
    CStdStr value = rawValue;
    ENGINE_LOG(kMask, "Value to resolve: %s-%s (defineVal)", name.c_str(), value.c_str());
    if (!resolveDefine(name, value, CStdStr())) {
        ENGINE_LOG(kMask, "Value for the current define: %s-%s (defineVal)", name.c_str(),
                   rawValue.c_str());
        mFailed.insert(name);
        return;
    }
    if (value == kMutable) {
        mMutableNames.Add(name);
        mMutableSet.insert(name);
        return;
    }
    if (name.EqualsNoCase(kInstallDir)) {
        CutTrailingBackslash(value);
    }
    mResolved["$" + name + "$"] = value;
    ENGINE_LOG(kMask, "Define:%s ResolvedValue:%s", name.c_str(), value.c_str());
}

bool CifDefine::resolveDefine(const CStdStr& name, CStdStr& value, const CStdStr& section) {
    LogScope scope(kComponent, "CifDefine::resolveDefine", kMask);
    scope.Log(kMask, "define:%s value:%s section:%s", name.c_str(), value.c_str(), section.c_str());
    Call outermost(*this);
    // A define that refers to itself, directly or through others, would recurse without end.
    if (!name.empty() && mResolving.count(BareName(name)) != 0) {
        ENGINE_LOG(0, "CifDefine::resolveDefine: define $%s$ refers to itself: %s", name.c_str(),
                   value.c_str());
        scope.SetResult(CStdStr("false"));
        return false;
    }
    if (mNesting >= kMaxNesting) {
        ENGINE_LOG(0, "CifDefine::resolveDefine: define $%s$ nests more than %d defines deep: %s",
                   name.c_str(), kMaxNesting, value.c_str());
        scope.SetResult(CStdStr("false"));
        return false;
    }
    ResolvingGuard guard(mResolving, mNesting, BareName(name));
    value.TrimRight();
    if (value.size() >= 2 && value.front() == '%' && value.back() == '%') {
        value = LanguageText(value.Mid(1, value.GetLength() - 2));
        scope.SetResult(value);
        return true;
    }
    if (value.empty() || value.front() != '<') {
        bool resolved = resolveStrDefine(value, section);
        scope.SetResult(resolved ? value : CStdStr("false"));
        return resolved;
    }
    CStdStr call = value;
    size_t first = call.find_first_not_of("< ");
    size_t last = call.find_last_not_of("> ");
    call = first == CStdStr::npos ? CStdStr() : call.substr(first, last - first + 1);
    CStdStringList items = Tokenizer::Split(call, ',', Tokenizer::Trim);
    DefineFunctions functions(*this, section);
    bool evaluated = functions.Evaluate(items, value);
    scope.SetResult(evaluated ? value : CStdStr("false"));
    return evaluated;
}

bool CifDefine::resolveStrDefine(CStdStr& str, const CStdStr& section) {
    Call outermost(*this);
    const CStdStr original = str;
    prepareReferences(str, section);
    int replacements = 0;
    auto endless = [&]() {
        if (++replacements <= kMaxReplacements) {
            return false;
        }
        ENGINE_LOG(0, "CifDefine::resolveStrDefine: String define -- %s -- does not come to an end",
                   original.c_str());
        return true;
    };
    auto tooLong = [&]() {
        if (str.size() <= kMaxValueLength) {
            return false;
        }
        ENGINE_LOG(0,
                   "CifDefine::resolveStrDefine: String define -- %s -- grows beyond %u characters",
                   original.Left(200).c_str(), static_cast<unsigned>(kMaxValueLength));
        return true;
    };
    for (;;) {
        int first = str.Find('$');
        if (first < 0) {
            break;
        }
        int second = str.Find('$', first + 1);
        if (second < 0) {
            break;
        }
        if (endless()) {
            return false;
        }
        CStdStr name = str.Mid(first + 1, second - first - 1);
        CStdStr value;
        bool known = false;
        if (!knownValue(name, section, known, value)) {
            ENGINE_LOG(0,
                       "CifDefine::resolveStrDefine: String define -- %s -- could not be "
                       "resolved for $%s$",
                       original.c_str(), name.c_str());
            return false;
        }
        if (known) {
            // Found among the values resolved before.
        } else if (IsMutable(name)) {
            if (section.empty()) {
                str = kMutable;
                return true;
            }
            if (!GetMutableDefine(section, name, value)) {
                ENGINE_LOG(0,
                           "CifDefine::resolveStrDefine: String define -- %s -- contains a "
                           "define $%s$ not resolved",
                           original.c_str(), name.c_str());
                return false;
            }
        } else {
            auto raw = mRaw.find(name);
            value = raw == mRaw.end() ? CStdStr() : raw->second;
            if (!resolveDefine(name, value, section)) {
                ENGINE_LOG(0,
                           "CifDefine::resolveStrDefine: String define -- %s -- could not be "
                           "resolved for $%s$",
                           original.c_str(), name.c_str());
                if (section.empty() && raw != mRaw.end()) {
                    mFailed.insert(name);
                }
                return false;
            }
        }
        if (value == kMutable) {
            str = kMutable;
            return true;
        }
        // The scan starts again from the front, so that a value that holds a reference is
        // resolved in the next round.
        str = str.Left(first) + value + str.Mid(second + 1);
        if (tooLong()) {
            return false;
        }
    }
    for (;;) {
        int first = str.Find('%');
        if (first < 0) {
            break;
        }
        int second = str.Find('%', first + 1);
        if (second < 0) {
            break;
        }
        if (endless()) {
            return false;
        }
        CStdStr text = LanguageText(str.Mid(first + 1, second - first - 1));
        str = str.Left(first) + text + str.Mid(second + 1);
        if (tooLong()) {
            return false;
        }
    }
    return true;
}

bool CifDefine::knownValue(const CStdStr& name, const CStdStr& section, bool& found,
                           CStdStr& value) {
    found = false;
    CStdStr key = BareName(name);
    if (IsAlwaysMutable(key) || key.empty()) {
        return true;
    }
    if (IsMutable(key)) {
        if (section.empty()) {
            return true;
        }
        auto remembered = mSectionValues.find(SectionKey(section, key));
        if (remembered == mSectionValues.end()) {
            return true;
        }
        found = true;
        value = remembered->second.second;
        return remembered->second.first;
    }
    // A name of the machine's own comes before a define of the same name.
    if (GetBuiltinDefine(key, value)) {
        found = true;
        return true;
    }
    auto stored = mResolved.find("$" + name + "$");
    if (stored != mResolved.end()) {
        found = true;
        value = stored->second;
        return true;
    }
    return !(section.empty() && mFailed.count(name) != 0);
}

bool CifDefine::isPending(const CStdStr& name, const CStdStr& section) const {
    if (name.empty() || IsAlwaysMutable(name) || mRaw.count(name) == 0 ||
        mResolving.count(name) != 0) {
        return false;
    }
    if (section.empty()) {
        return mResolved.count("$" + name + "$") == 0 && mMutableSet.count(name) == 0 &&
               mFailed.count(name) == 0;
    }
    return mMutableSet.count(name) != 0 && mSectionValues.count(SectionKey(section, name)) == 0;
}

void CifDefine::resolvePending(const CStdStr& name, const CStdStr& section) {
    const CStdStr& raw = mRaw.find(name)->second;
    if (section.empty()) {
        storeDefine(mRaw.find(name)->first, raw);
        return;
    }
    CStdStr value = raw;
    bool resolved = resolveDefine(name, value, section);
    mSectionValues[SectionKey(section, name)] = {resolved, resolved ? value : CStdStr()};
}

void CifDefine::prepareReferences(const CStdStr& text, const CStdStr& section) {
    struct Frame {
        CStdStr name;
        bool expanded;
    };
    std::vector<Frame> stack;
    std::set<CStdStr, NoCaseLess> onStack;
    auto pushReferences = [&](const CStdStr& value) {
        std::vector<CStdStr> names = ReferencedNames(value);
        for (auto name = names.rbegin(); name != names.rend(); ++name) {
            CStdStr key = BareName(*name);
            if (onStack.count(key) == 0 && isPending(key, section)) {
                onStack.insert(key);
                stack.push_back({key, false});
            }
        }
    };
    pushReferences(text);
    while (!stack.empty()) {
        if (!stack.back().expanded) {
            stack.back().expanded = true;
            pushReferences(mRaw.find(stack.back().name)->second);
            continue;
        }
        CStdStr name = stack.back().name;
        stack.pop_back();
        onStack.erase(name);
        if (isPending(name, section)) {
            resolvePending(name, section);
        }
    }
}

CStdStr CifDefine::componentOfSection(const CStdStr& section) {
    CStdStr base = section;
    int hash = base.Find('#');
    if (hash > 0) {
        base = base.Left(hash);
    }
    int dot = base.ReverseFind('.');
    return dot > 0 ? base.Left(dot) : base;
}

CStdStr CifDefine::scriptComponent(const CStdStr& component) const {
    if (!mHasComponentFile || mIsf.FindSection(component) != nullptr) {
        return component;
    }
    // A section of a CIF (an action list, a requirement section) is not a component of the
    // script: the component is the one being worked on.
    CStdStr current = RunState::GetCurrentComponent();
    return current.empty() ? component : current;
}

bool CifDefine::installDirFor(const CStdStr& component, const CStdStr& section, CStdStr& value) {
    CStdStr found;
    bool present = false;
    // The component's own section of the script is more particular than Install.
    for (const CStdStr& sectionName : {scriptComponent(component), CStdStr("Install")}) {
        IniSection* script = mIsf.FindSection(sectionName);
        if (script != nullptr && script->GetValue("InstallDir", found) && !found.empty()) {
            present = true;
            break;
        }
    }
    if (present) {
        if (!resolveDefine(kInstallDir, found, section)) {
            return false;
        }
        CutTrailingBackslash(found);
        value = found;
        return true;
    }
    auto stored = mResolved.find("$INSTALL_DIR$");
    if (stored != mResolved.end() && !stored->second.empty()) {
        value = stored->second;
        return true;
    }
    CStdStr product = ProductIni::DisplayName();
    if (product.empty()) {
        product = ProductIni::ProductKey();
    }
    PathObject folder = SystemPath(SystemPath::ProgramFiles);
    if (!product.empty()) {
        folder.AppendDirectory(product);
    }
    value = folder.GetFullPath();
    return true;
}

bool CifDefine::GetMutableDefine(const CStdStr& section, const CStdStr& name, CStdStr& value) {
    LogScope scope(kComponent, "CifDefine::GetMutableDefine", kMask);
    Call outermost(*this);
    scope.Log(kMask, "section:%s name:%s", section.c_str(), name.c_str());
    CStdStr component = componentOfSection(section);
    CStdStr key = BareName(name);
    bool answered = false;
    auto raw = mRaw.find(key);
    if (raw != mRaw.end() && !key.EqualsNoCase(kInstallDir)) {
        CStdStr resolved = raw->second;
        answered = resolveDefine(key, resolved, section);
        if (answered) {
            value = resolved;
        }
    } else if (key.EqualsNoCase(kInstallDir)) {
        answered = installDirFor(component, section, value);
    } else if (key.EqualsNoCase(kCurrentComp)) {
        value = scriptComponent(component);
        answered = true;
    } else if (key.EqualsNoCase(kIsfFile)) {
        value = RunState::GetScriptPath();
        if (value.empty()) {
            value = mIsf.GetFileName();
        }
        answered = true;
    }
    scope.SetResult(answered ? value : CStdStr("false"));
    return answered;
}

bool CifDefine::GetBuiltinDefine(const CStdStr& name, CStdStr& value) {
    CStdStr key = BareName(name);
    CStdStr builtin = SystemPath::GetDefine(key);
    if (!builtin.empty()) {
        value = builtin;
        return true;
    }
    if (key.EqualsNoCase(kInstallDir)) {
        auto stored = mResolved.find("$INSTALL_DIR$");
        if (stored != mResolved.end() && !stored->second.empty()) {
            value = stored->second;
            return true;
        }
        auto raw = mRaw.find(kInstallDir);
        CStdStr resolved = raw == mRaw.end() ? CStdStr() : raw->second;
        if (!resolveDefine(kInstallDir, resolved, CStdStr())) {
            return false;
        }
        value = resolved;
        return true;
    }
    if (key.EqualsNoCase(kCurrentComp)) {
        value = RunState::GetCurrentComponent();
        return true;
    }
    if (key.EqualsNoCase("PRODUCT_KEY")) {
        value = ProductIni::ProductKey();
        return true;
    }
    if (key.EqualsNoCase("OEM_PRODUCT")) {
        value = CStdStr::Formatted("^%s^", "OEM_PRODUCT");
        return true;
    }
    return false;
}

bool CifDefine::IsMutable(const CStdStr& name) const {
    CStdStr key = BareName(name);
    return IsAlwaysMutable(key) || mMutableSet.count(key) != 0;
}

void CifDefine::CopyStandardDefines(std::map<CStdStr, CStdStr>& toMap) {
    for (const char* name : kStandardDefines) {
        CStdStr value;
        GetBuiltinDefine(name, value);
        toMap[CStdStr::Formatted("$%s$", name)] = value;
    }
}

bool CifDefine::GetDefine(const CStdStr& name, const CStdStr& section, CStdStr& value) {
    CStdStr key = BareName(name);
    if (key.empty()) {
        return false;
    }
    // INSTALL_DIR has a stored value too, but that is only its default for a section.
    if (IsMutable(key) && !section.empty()) {
        return GetMutableDefine(section, key, value);
    }
    auto stored = mResolved.find("$" + key + "$");
    if (stored != mResolved.end()) {
        value = stored->second;
        return true;
    }
    return !IsMutable(key) && GetBuiltinDefine(key, value);
}

bool CifDefine::IsComponentInstalled(const CStdStr& component) const {
    return !component.empty() && UninstallLog::Installed().IsComponentInstalled(component);
}
