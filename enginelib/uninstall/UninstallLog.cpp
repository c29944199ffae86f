#include "uninstall/UninstallLog.h"

#include "core/ProductIni.h"
#include "core/RunState.h"
#include "os/Files.h"
#include "os/Locale.h"
#include "os/Sync.h"
#include "script/SystemPath.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <unordered_set>

namespace {

const char* const kComponent = "UninstallLog";
constexpr std::uint32_t kMask = logmask::Uninstall;

const char* const kSectionSuffix[itemtype::Count] = {
        "", "_Files", "_Files", "_Reg", "_Reg", "_Start", "_Start", "_Special", "_Service"};
// The value a record of the type stores; 0 for the types whose caller gives the value.
const int kStoredValue[itemtype::Count] = {0, 1, 2, 1, 2, 1, 2, 0, 1};
const char* const kOwnSuffixes[] = {"_Files", "_Reg", "_Start", "_Special", "_Service"};

const char* const kShared = "Shared";
const char* const kInstalledBy = "InstalledBy";
const char* const kRequiredBy = "RequiredBy";
const char* const kOemSharedBy = "OEMSharedBy,";

constexpr os::Error kCallNotImplemented = 120;
// Processes that commit a log of this machine take turns by this mutex. A name without a
// backslash: Windows before 2000 has no namespaces of kernel objects.
const char* const kCommitMutex = "QorFiles.ulf-commit";
constexpr std::uint32_t kCommitWaitMs = 60000;

// Every successful write or deletion of a log, so that the installed view reads it again.
std::atomic<unsigned> gCommits{0};

CStdStr Scoped(const CStdStr& name, const CStdStr& scope) {
    return scope.empty() ? name : CStdStr(name + "," + scope);
}

bool HasOuterBlank(const CStdStr& text) {
    return !text.empty() && (CStdStr::IsSpace(text.front()) || CStdStr::IsSpace(text.back()));
}

// The file's bytes: CR LF lines, in the code page or, for a log that was UTF-16, in UTF-16.
std::string Encode(const CStdStr& text, int encoding) {
    CStdStr lines = text;
    lines.Replace("\n", "\r\n");
    if (encoding != 2) {
        return lines;
    }
    std::u16string units = os::MultiByteToWideChar(os::codepage::Ansi, lines);
    std::string bytes = "\xFF\xFE";
    bytes.reserve(2 + units.size() * 2);
    for (char16_t unit : units) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

// What identifies one state of a file: its size and time of last write; empty when missing.
CStdStr FileStamp(const CStdStr& path) {
    std::uint32_t attributes = 0;
    if (path.empty() || os::GetFileAttributes(path, attributes) != os::error::Success) {
        return CStdStr();
    }
    std::uint64_t size = 0;
    os::FileTimes times;
    os::GetFileSize(path, size);
    os::GetFileTime(path, times);
    return CStdStr::Formatted("%llu:%llu", static_cast<unsigned long long>(size),
                              static_cast<unsigned long long>(times.lastWrite.ticks));
}

} // namespace

UninstallLog::UninstallLog(int mode) : IniFile(false) {
    if (mode != StartEmpty) {
        ReadAllRelevant(false, false);
    }
}

UninstallLog& UninstallLog::Global() {
    // Never destroyed, like the debug log: a record made while the process ends is not lost.
    static UninstallLog* log = new UninstallLog(StartEmpty);
    return *log;
}

UninstallLog& UninstallLog::Installed() {
    static UninstallLog* view = [] {
        auto* log = new UninstallLog(StartEmpty);
        log->mReadOnly = true;
        return log;
    }();
    view->refreshFromMachine();
    return *view;
}

void UninstallLog::refreshFromMachine() {
    const UninstallLog& run = Global();
    mProduct = run.mProduct;
    mManufacturer = run.mManufacturer;
    CStdStr path = GetLogPath();
    CStdStr stamp = CStdStr::Formatted("%s|%u|", path.c_str(), gCommits.load()) + FileStamp(path);
    if (stamp == mStamp) {
        return;
    }
    mStamp = stamp;
    Clear();
    SetFileName(path);
    if (!path.empty() && FileStamp(path).size() > 0) {
        Read(path);
    }
}

CStdStr UninstallLog::GetLogPath() {
    SystemPath system(SystemPath::SystemFolder);
    if (system.GetDirectory().empty()) {
        return CStdStr();
    }
    PathObject path;
    path.SetDirectory(system.GetDirectory());
    path.SetName(kLogFileName);
    return path.GetFullPath();
}

void UninstallLog::SetParentComponent(const CStdStr& component) {
    RunState::SetCurrentComponent(component);
}

CStdStr UninstallLog::GetParentComponent() {
    return RunState::GetCurrentComponent();
}

// ---- naming ----

CStdStr UninstallLog::resolveComponent(const CStdStr& component) const {
    return component.empty() ? GetParentComponent() : component;
}

UninstallLog::Reference UninstallLog::splitReference(const CStdStr& component) const {
    Reference reference;
    CStdStr resolved = resolveComponent(component);
    int comma = resolved.Find(',');
    if (comma < 0) {
        reference.name = resolved;
        return reference;
    }
    reference.name = resolved.Left(comma);
    reference.scope = resolved.Mid(comma + 1);
    reference.scoped = true;
    return reference;
}

CStdStr UninstallLog::scopeOf(const Reference& reference) {
    if (reference.scoped) {
        return reference.scope;
    }
    return IsShared(reference.name, true) ? mManufacturer : mProduct;
}

CStdStr UninstallLog::componentKey(const CStdStr& component) {
    Reference reference = splitReference(component);
    if (reference.scoped) {
        return reference.name + "," + reference.scope;
    }
    return Scoped(reference.name, scopeOf(reference));
}

CStdStr UninstallLog::treeSectionName(const CStdStr& component) {
    Reference reference = splitReference(component);
    if (!reference.scoped && reference.name.EqualsNoCase(kRoot)) {
        return kRoot;
    }
    return componentKey(component);
}

CStdStr UninstallLog::GetSectionName(unsigned type, const CStdStr& component) {
    if (type >= itemtype::Count) {
        ENGINE_LOG(0, "invalid item type %d", static_cast<int>(type));
        return CStdStr();
    }
    Reference reference = splitReference(component);
    if (reference.name.empty()) {
        return CStdStr();
    }
    CStdStr section = reference.name + kSectionSuffix[type];
    if (reference.scoped) {
        return section + "," + reference.scope;
    }
    if (IsShared(reference.name, true)) {
        if (!reference.name.EqualsNoCase(kRoot)) {
            section = Scoped(section, mManufacturer);
        }
    } else {
        section = Scoped(section, mProduct);
    }
    if (type != itemtype::Special) {
        section = Scoped(section, mOemProduct);
    }
    return section;
}

bool UninstallLog::IsShared(const CStdStr& component, bool useManufacturer) {
    LogScope scope(kComponent, "UninstallLog::IsShared", kMask);
    scope.Log(kMask, "comp:%s, bManfName:%d", component.c_str(), useManufacturer ? 1 : 0);
    Reference reference = splitReference(component);
    if (reference.name.EqualsNoCase(kRoot)) {
        scope.SetResult(true);
        return true;
    }
    CStdStr special = reference.name + kSectionSuffix[itemtype::Special];
    if (useManufacturer && reference.scoped) {
        special += "," + reference.scope;
    } else if (useManufacturer) {
        special = Scoped(special, mManufacturer);
    }
    bool shared = std::atoi(GetValue(special, kShared).c_str()) == 1;
    scope.SetResult(shared);
    return shared;
}

// ---- records ----

bool UninstallLog::canRecord(const CStdStr& name, const CStdStr& value) const {
    const char* why = nullptr;
    CStdStr line = value.empty() ? name : CStdStr(name + "=" + value);
    if (name.empty()) {
        why = "the name is empty";
    } else if (line.FindOneOf("\r\n") >= 0) {
        why = "it holds a line break";
    } else if (name.Find('=') >= 0) {
        why = "the name holds '='";
    } else if (name[0] == ';' || name[0] == '#') {
        why = "the name would read as a comment";
    } else if (line.front() == '[' && line.back() == ']') {
        why = "the line would read as a section";
    } else if (HasOuterBlank(name) || HasOuterBlank(value)) {
        why = "blanks at either end would be lost";
    } else if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        why = "the quotes around the value would be lost";
    }
    if (why == nullptr) {
        return true;
    }
    ENGINE_LOG(0, "UninstallLog: cannot record \"%s\" = \"%s\": %s", name.c_str(), value.c_str(),
               why);
    return false;
}

bool UninstallLog::AddItem(unsigned type, const CStdStr& component, const CStdStr& name,
                           const CStdStr& value) {
    LogScope scope(kComponent, "UninstallLog::AddItem", kMask);
    scope.Log(kMask, "comp:%s, itemType:%d, itemName:%s", component.c_str(), static_cast<int>(type),
              name.c_str());
    CStdStr sectionName = GetSectionName(type, component);
    if (sectionName.empty()) {
        scope.Log(0, "no section for item %s of type %d (component \"%s\")", name.c_str(),
                  static_cast<int>(type), component.c_str());
        scope.SetResult(false);
        return false;
    }
    CStdStr stored = value;
    if (kStoredValue[type] != 0) {
        stored.Format("%d", kStoredValue[type]);
    }
    if (!canRecord(name, stored)) {
        scope.SetResult(false);
        return false;
    }
    GetOrCreateSection(sectionName)->AddValue(name, stored);
    scope.SetResult(true);
    return true;
}

bool UninstallLog::RemoveItem(unsigned type, const CStdStr& component, const CStdStr& name) {
    LogScope scope(kComponent, "UninstallLog::RemoveItem", kMask);
    scope.Log(kMask, "comp:%s, itemType:%d, itemName:%s", component.c_str(), static_cast<int>(type),
              name.c_str());
    CStdStr sectionName = GetSectionName(type, component);
    IniSection* section = sectionName.empty() ? nullptr : FindSection(sectionName);
    if (section == nullptr || !section->HasValue(name)) {
        scope.SetResult(false);
        return false;
    }
    section->RemoveValue(name);
    if (section->ValueCount() == 0) {
        RemoveSection(sectionName, false);
    }
    scope.SetResult(true);
    return true;
}

namespace {

// Whether a record's value is the one its type stores: "1" for a file and "2" for a folder share
// the _Files section, and so on.
bool IsOfType(unsigned type, const CStdStr& value) {
    return kStoredValue[type] == 0 || std::atoi(value.c_str()) == kStoredValue[type];
}

// Start menu records of an older tool hold the product's naming defines in their text; they read
// as the names they stand for.
CStdStr FixedStartName(unsigned type, const CStdStr& name) {
    if (type != itemtype::Shortcut && type != itemtype::StartFolder) {
        return name;
    }
    CStdStr fixed = name;
    const std::pair<const char*, CStdStr> defines[] = {
            {"$DynamicNaming$", ProductIni::DynamicNaming()},
            {"$PRINTER_FAMILY$", ProductIni::PrinterFamily()}};
    for (const auto& [define, value] : defines) {
        if (!value.empty()) {
            fixed.Replace(define, value.c_str());
        }
    }
    return fixed;
}

} // namespace

bool UninstallLog::GetItems(unsigned type, const CStdStr& component, CStdStringList& items) {
    items.clear();
    CStdStr sectionName = GetSectionName(type, component);
    IniSection* section = sectionName.empty() ? nullptr : FindSection(sectionName);
    if (section == nullptr) {
        return false;
    }
    for (const CStdStr& name : section->Names()) {
        CStdStr value;
        section->GetValue(name, value);
        if (IsOfType(type, value)) {
            items.Add(FixedStartName(type, name));
        }
    }
    return true;
}

bool UninstallLog::HasItem(unsigned type, const CStdStr& component, const CStdStr& name) {
    CStdStr sectionName = GetSectionName(type, component);
    IniSection* section = sectionName.empty() ? nullptr : FindSection(sectionName);
    CStdStr value;
    return section != nullptr && section->GetValue(name, value) && IsOfType(type, value);
}

CStdStr UninstallLog::GetSpecial(const CStdStr& component, const CStdStr& key) {
    CStdStr sectionName = GetSectionName(itemtype::Special, component);
    return sectionName.empty() ? CStdStr() : GetValue(sectionName, key);
}

bool UninstallLog::SetSpecial(const CStdStr& component, const CStdStr& key, const CStdStr& value) {
    CStdStr sectionName = GetSectionName(itemtype::Special, component);
    if (sectionName.empty() || !canRecord(key, value)) {
        return false;
    }
    GetOrCreateSection(sectionName)->AddValue(key, value);
    return true;
}

// ---- lists ----

bool UninstallLog::GetList(const CStdStr& component, const CStdStr& key, CStdStringList& list) {
    list.clear();
    for (const CStdStr& item : Tokenizer::Split(GetSpecial(component, key), ',', Tokenizer::Trim)) {
        if (!item.empty()) {
            list.Add(item);
        }
    }
    return !list.empty();
}

bool UninstallLog::IsInList(const CStdStr& component, const CStdStr& key, const CStdStr& name) {
    CStdStringList list;
    GetList(component, key, list);
    return list.ContainsNoCase(name);
}

bool UninstallLog::AddToList(const CStdStr& component, const CStdStr& key, const CStdStr& name) {
    if (name.empty() || name.Find(',') >= 0) {
        ENGINE_LOG(0, "UninstallLog: \"%s\" cannot stand in the list %s", name.c_str(),
                   key.c_str());
        return false;
    }
    CStdStringList list;
    GetList(component, key, list);
    if (list.ContainsNoCase(name)) {
        return true;
    }
    list.Add(name);
    return SetSpecial(component, key, list.Join(","));
}

bool UninstallLog::RemoveFromList(const CStdStr& component, const CStdStr& key,
                                  const CStdStr& name) {
    CStdStringList list;
    GetList(component, key, list);
    CStdStringList kept;
    for (const CStdStr& item : list) {
        if (!item.EqualsNoCase(name)) {
            kept.Add(item);
        }
    }
    if (kept.size() == list.size()) {
        return false;
    }
    if (kept.empty()) {
        return RemoveItem(itemtype::Special, component, key);
    }
    return SetSpecial(component, key, kept.Join(","));
}

bool UninstallLog::AddRequiredBy(const CStdStr& item, const CStdStr& component) {
    return AddToList(item, kRequiredBy, resolveComponent(component));
}

bool UninstallLog::GetRequiredBy(const CStdStr& component, CStdStringList& list) {
    return GetList(component, kRequiredBy, list);
}

bool UninstallLog::AddOEMSharedBy(const CStdStr& component, const CStdStr& oem) {
    return AddToList(component, kOemSharedBy + mProduct, oem);
}

bool UninstallLog::RemoveOEMSharedBy(const CStdStr& component, const CStdStr& oem) {
    return RemoveFromList(component, kOemSharedBy + mProduct, oem);
}

bool UninstallLog::IsOEMShared(const CStdStr& component, const CStdStr& oem) {
    const CStdStr& brand = oem.empty() ? mOemProduct : oem;
    CStdStr holders = GetSpecial(component, kOemSharedBy + mProduct);
    return !holders.empty() && !holders.EqualsNoCase(brand) && !holders.EqualsNoCase(mProduct);
}

bool UninstallLog::IsInstalledByOther(const CStdStr& component) {
    CStdStr installers = GetSpecial(component, kInstalledBy);
    return !installers.empty() && !installers.EqualsNoCase(mProduct);
}

// ---- the component tree ----

bool UninstallLog::AddComponent(const CStdStr& name, const CStdStr& parent, bool bShared) {
    LogScope scope(kComponent, "UninstallLog::AddComponent", kMask);
    CStdStr component = resolveComponent(name);
    CStdStr parentName = resolveComponent(parent);
    scope.Log(kMask, "comp:%s, parent:%s, shared:%d", component.c_str(), parentName.c_str(),
              bShared ? 1 : 0);
    if (component.EqualsNoCase(parentName)) {
        scope.Log(0, "%s: cannot be the same as its parent", component.c_str());
        scope.SetResult(false);
        return false;
    }
    if (parentName.empty()) {
        scope.SetResult(true);
        return true;
    }
    CStdStr sectionName = treeSectionName(parentName);
    IniSection* section = sectionName.empty() ? nullptr : GetOrCreateSection(sectionName);
    if (section == nullptr) {
        scope.Log(0, "could not load or create parent section %s", sectionName.c_str());
        scope.SetResult(false);
        return false;
    }
    CStdStr key;
    if (component.Find(',') >= 0) {
        key = component;
    } else if (bShared) {
        CStdStr special = Scoped(component + kSectionSuffix[itemtype::Special], mManufacturer);
        GetOrCreateSection(special)->AddValue(kShared, "1");
        if (!mProduct.empty()) {
            AddToList(component, kInstalledBy, mProduct);
        }
        key = Scoped(component, mManufacturer);
    } else {
        key = Scoped(component, mProduct);
    }
    if (!canRecord(key, "1")) {
        scope.SetResult(false);
        return false;
    }
    section->AddValue(key, "1");
    scope.SetResult(true);
    return true;
}

IniSection* UninstallLog::findParentOf(const CStdStr& key, const CStdStr& start) {
    IniSection* root = FindSection(start);
    if (root == nullptr) {
        return nullptr;
    }
    // Breadth first; a section is visited once, so that a log whose tree loops still ends.
    std::deque<IniSection*> queue{root};
    std::unordered_set<IniSection*> visited{root};
    while (!queue.empty()) {
        IniSection* section = queue.front();
        queue.pop_front();
        if (section->HasValue(key)) {
            return section;
        }
        for (const CStdStr& child : section->Names()) {
            IniSection* below = FindSection(child);
            if (below != nullptr && visited.insert(below).second) {
                queue.push_back(below);
            }
        }
    }
    return nullptr;
}

bool UninstallLog::belongsTo(const CStdStr& sectionName, const CStdStr& name, bool shared,
                             const CStdStringList* keptBrands) const {
    int comma = sectionName.Find(',');
    CStdStr base = comma < 0 ? sectionName : sectionName.Left(comma);
    bool named = base.EqualsNoCase(name);
    for (const char* suffix : kOwnSuffixes) {
        named = named || base.EqualsNoCase(name + suffix);
    }
    if (!named) {
        return false;
    }
    if (comma < 0) {
        return shared;
    }
    auto ours = [this](const CStdStr& scope) {
        return scope.EqualsNoCase(mProduct) || scope.EqualsNoCase(mManufacturer);
    };
    CStdStr scopes = sectionName.Mid(comma + 1);
    int next = scopes.Find(',');
    CStdStr last = sectionName.Mid(sectionName.ReverseFind(',') + 1);
    if (next < 0 || keptBrands == nullptr) {
        return ours(next < 0 ? scopes : scopes.Left(next));
    }
    if (ours(last)) {
        return true;
    }
    // A section of an OEM brand (product, then brand) stays while that brand holds the
    // component; the brand's own uninstall takes it.
    return ours(scopes.Left(next)) && !keptBrands->ContainsNoCase(last);
}

void UninstallLog::removeSectionsOf(const CStdStr& name, bool shared,
                                    const CStdStringList& keptBrands) {
    CStdStringList doomed;
    for (int index = 0; index < SectionCount(); ++index) {
        CStdStr sectionName = IniFile::GetSectionName(index);
        if (belongsTo(sectionName, name, shared, &keptBrands)) {
            doomed.Add(sectionName);
        }
    }
    for (const CStdStr& sectionName : doomed) {
        RemoveSection(sectionName, false);
    }
}

void UninstallLog::renameSectionsOf(const CStdStr& name, const CStdStr& oldScope, bool shared,
                                    const CStdStr& newName, const CStdStr& newScope) {
    std::vector<std::pair<CStdStr, CStdStr>> moving;
    for (int index = 0; index < SectionCount(); ++index) {
        CStdStr sectionName = IniFile::GetSectionName(index);
        if (!belongsTo(sectionName, name, shared, nullptr)) {
            continue;
        }
        int comma = sectionName.Find(',');
        CStdStr base = comma < 0 ? sectionName : sectionName.Left(comma);
        CStdStr target = newName + base.Mid(name.GetLength());
        if (comma >= 0) {
            // The first scope is the component's; an OEM brand after it stays.
            CStdStr scopes = sectionName.Mid(comma + 1);
            int next = scopes.Find(',');
            if (!(next < 0 ? scopes : scopes.Left(next)).EqualsNoCase(oldScope)) {
                continue;
            }
            target += "," + newScope + (next < 0 ? CStdStr() : scopes.Mid(next));
        }
        if (!target.EqualsNoCase(sectionName)) {
            moving.emplace_back(sectionName, target);
        }
    }
    for (const auto& [sectionName, target] : moving) {
        IniSection* existing = FindSection(target);
        if (existing == nullptr) {
            RenameSection(sectionName, target);
            continue;
        }
        IniSection* old = RemoveSection(sectionName, true);
        existing->Merge(*old, true);
        delete old;
    }
}

bool UninstallLog::RemoveComponent(const CStdStr& name, bool justRemoveShare) {
    LogScope scope(kComponent, "UninstallLog::RemoveComponent", kMask);
    scope.Log(kMask, "comp:%s, justRemoveShare:%d", name.c_str(), justRemoveShare ? 1 : 0);
    if (justRemoveShare) {
        RemoveFromList(name, kInstalledBy, mProduct);
        scope.SetResult(true);
        return true;
    }
    Reference reference = splitReference(name);
    bool shared = IsShared(name, true);
    CStdStr key = componentKey(name);
    IniSection* parent = findParentOf(key, kRoot);
    if (parent == nullptr) {
        scope.SetResult(false);
        return false;
    }
    CStdStringList brands;
    GetList(name, kOemSharedBy + mProduct, brands);
    parent->RemoveValue(key);
    removeSectionsOf(reference.name, shared, brands);
    scope.SetResult(true);
    return true;
}

bool UninstallLog::ChangeComponent(const CStdStr& name, const CStdStr& newParent,
                                   const CStdStr& newName, bool bShared) {
    LogScope scope(kComponent, "UninstallLog::ChangeComponent", kMask);
    scope.Log(kMask, "comp:%s", name.c_str());
    CStdStr parentSection = treeSectionName(resolveComponent(newParent));
    if (parentSection.empty() || GetOrCreateSection(parentSection) == nullptr) {
        scope.SetResult(false);
        return false;
    }
    Reference reference = splitReference(name);
    bool wasShared = IsShared(name, true);
    bool shared = bShared || wasShared;
    CStdStr key = componentKey(name);
    IniSection* oldParent = findParentOf(key, kRoot);
    if (oldParent == nullptr) {
        scope.SetResult(false);
        return false;
    }
    // Every record of the component under its old parent goes, wherever the tree holds one.
    for (; oldParent != nullptr; oldParent = findParentOf(key, kRoot)) {
        oldParent->RemoveValue(key);
    }
    CStdStringList dependents;
    GetDependents(name, dependents, true);
    CStdStr target = newName.empty() ? reference.name : newName;
    if (!dependents.empty()) {
        scope.Log(kMask, "UninstallLog::ChangeComponent: need to remove %s", key.c_str());
    }
    // The records move with the component, its children included, so that none stays behind
    // under the old name or scope and nothing is lost.
    CStdStr oldScope = reference.scoped ? reference.scope : wasShared ? mManufacturer : mProduct;
    CStdStr newScope = shared ? mManufacturer : mProduct;
    if (!target.EqualsNoCase(reference.name) || !oldScope.EqualsNoCase(newScope)) {
        renameSectionsOf(reference.name, oldScope, wasShared, target, newScope);
    }
    bool added = AddComponent(target, resolveComponent(newParent), shared);
    scope.SetResult(added);
    return added;
}

bool UninstallLog::isInstalledHelper(const CStdStr& component, const CStdStr& parent, bool deep) {
    CStdStr key = componentKey(component);
    CStdStr start = treeSectionName(parent);
    if (deep) {
        return findParentOf(key, start) != nullptr;
    }
    IniSection* section = FindSection(start);
    return section != nullptr && section->HasValue(key);
}

bool UninstallLog::IsComponentInstalled(const CStdStr& name) {
    if (resolveComponent(name).empty()) {
        return false;
    }
    return isInstalledHelper(name, kRoot, true);
}

int UninstallLog::CountOtherUsers(unsigned type, const CStdStr& name) {
    LogScope scope(kComponent, "UninstallLog::CountOtherUsers", kMask);
    scope.Log(kMask, "itemType:%d, itemName:%s", static_cast<int>(type), name.c_str());
    IniSection* root = FindSection(kRoot);
    int count = 0;
    if (root != nullptr) {
        // Two levels and no deeper: a grandchild's records do not count.
        const CStdStringList top(root->Names().begin(), root->Names().end());
        for (const CStdStr& component : top) {
            count += HasItem(type, component, name) ? 1 : 0;
            IniSection* children = FindSection(component);
            if (children == nullptr || children == root) {
                continue;
            }
            const CStdStringList below(children->Names().begin(), children->Names().end());
            for (const CStdStr& child : below) {
                count += HasItem(type, child, name) ? 1 : 0;
            }
        }
    }
    scope.SetResult(count);
    return count;
}

bool UninstallLog::GetDependents(const CStdStr& component, CStdStringList& list, bool all) {
    LogScope scope(kComponent, "UninstallLog::GetDependents", kMask);
    scope.Log(kMask, "comp:%s, all:%d", component.c_str(), all ? 1 : 0);
    list.clear();
    IniSection* section = FindSection(treeSectionName(component));
    if (section == nullptr) {
        scope.SetResult(false);
        return false;
    }
    const CStdStringList children(section->Names().begin(), section->Names().end());
    for (const CStdStr& child : children) {
        if (IsShared(child, true)) {
            if (all || IsInList(child, kInstalledBy, mProduct)) {
                list.Add(child);
            }
            continue;
        }
        Reference reference = splitReference(child);
        if (reference.scoped && reference.scope.EqualsNoCase(mProduct)) {
            list.Add(child);
        }
    }
    scope.SetResult(static_cast<int>(list.size()));
    return true;
}

bool UninstallLog::MergeHostComponent(const CStdStr& name) {
    LogScope scope(kComponent, "UninstallLog::MergeHostComponent", kMask);
    scope.Log(kMask, "comp:%s", name.c_str());
    CStdStringList products;
    GetList(name, kInstalledBy, products);
    IniSection* root = FindSection(kRoot);
    for (const CStdStr& product : products) {
        if (product.EqualsNoCase(mProduct) || root == nullptr) {
            continue;
        }
        // Every component of that product below Install.
        CStdStringList components;
        std::deque<IniSection*> queue{root};
        std::unordered_set<IniSection*> visited{root};
        while (!queue.empty()) {
            IniSection* section = queue.front();
            queue.pop_front();
            for (const CStdStr& key : section->Names()) {
                Reference reference = splitReference(key);
                if (reference.scoped && reference.scope.EqualsNoCase(product)) {
                    components.Add(reference.name);
                }
                IniSection* below = FindSection(key);
                if (below != nullptr && visited.insert(below).second) {
                    queue.push_back(below);
                }
            }
        }
        for (const CStdStr& component : components) {
            CStdStr ours = Scoped(component, mProduct);
            if (mProduct.empty() || isInstalledHelper(ours, kRoot, true)) {
                continue;
            }
            CStdStr theirs = component + "," + product;
            for (unsigned type : {itemtype::File, itemtype::RegValue, itemtype::Shortcut,
                                  itemtype::Special, itemtype::Service}) {
                CStdStringList items;
                GetItems(type, theirs, items);
                for (const CStdStr& item : items) {
                    CStdStr value;
                    if (type == itemtype::Special) {
                        value = GetSpecial(theirs, item);
                    }
                    AddItem(type, ours, item, value);
                }
            }
            scope.Log(kMask, "%s of %s taken over for %s", component.c_str(), product.c_str(),
                      mProduct.c_str());
        }
    }
    bool added = mProduct.empty() || AddToList(name, kInstalledBy, mProduct);
    scope.SetResult(added);
    return added;
}

// ---- reading and writing ----

void UninstallLog::fixupNewItems() {
    // Components of the maker's earlier tools that moved under new parents would be moved here
    // by ChangeComponent; this product has no such components.
}

bool UninstallLog::ReadAllRelevant(bool convertOldest, bool commitAfter) {
    LogScope scope(kComponent, "UninstallLog::ReadAllRelevant", kMask);
    scope.Log(kMask, "convertOldest:%d, commitAfter:%d", convertOldest ? 1 : 0,
              commitAfter ? 1 : 0);
    CStdStr path = GetLogPath();
    Clear();
    mUnreadablePath.clear();
    SetFileName(path);
    bool ok = true;
    if (!FileStamp(path).empty() && !Read(path)) {
        // Taken as empty; but the file may hold the records of other products, so this run does
        // not replace it.
        scope.Log(0, "the uninstall log %s cannot be read; it will not be replaced", path.c_str());
        Clear();
        mUnreadablePath = path;
        ok = false;
    }
    mBase = LogSnapshot::Of(*this);
    mBasePath = path;
    // Not yet: the per-user QorFiles.usr (in the all-users folder under the manufacturer) is to
    // be converted here, and with convertOldest the Qorfiles.log beside this log (and, with
    // commitAfter, the registry records); after a commit the converted QorFiles.usr is deleted.
    // Until the converter exists those files are left untouched.
    if (convertOldest) {
        fixupNewItems();
        if (commitAfter) {
            Commit();
        }
    }
    scope.SetResult(ok);
    return ok;
}

bool UninstallLog::writeText(const CStdStr& path, const CStdStr& text) {
    PathObject target(path);
    CStdStr folder = target.GetDirectory().empty() ? CStdStr(".") : target.GetDirectory();
    std::string temporary;
    os::Error rc = os::GetTempFileName(folder, "ulf", temporary);
    if (rc != os::error::Success) {
        ENGINE_LOG(0, "cannot make a temporary file in %s (error %d)", folder.c_str(),
                   static_cast<int>(rc));
        return false;
    }
    std::string bytes = Encode(text, GetEncoding());
    std::FILE* stream = nullptr;
    rc = os::fsopen(temporary, "wb", os::Share::DenyWrite, stream);
    bool written = rc == os::error::Success;
    if (written) {
        // Every step is checked: a full disk may show only when the buffer is flushed.
        written =
                bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
        written = std::fflush(stream) == 0 && written;
        written = std::fclose(stream) == 0 && written;
    }
    if (!written) {
        ENGINE_LOG(0, "writing %s failed (error %d); %s is left as it was", temporary.c_str(),
                   static_cast<int>(rc), path.c_str());
        os::DeleteFile(temporary);
        return false;
    }
    rc = os::MoveFileEx(temporary, path, os::movefile::ReplaceExisting);
    if (rc == kCallNotImplemented) {
        // Windows 9x has no MoveFileEx: the old log goes first, for a moment there is none.
        rc = os::DeleteFile(path);
        if (rc == os::error::Success || rc == os::error::FileNotFound) {
            rc = os::MoveFile(temporary, path);
        }
    }
    if (rc != os::error::Success) {
        ENGINE_LOG(0, "cannot replace %s by %s (error %d); it is left as it was", path.c_str(),
                   temporary.c_str(), static_cast<int>(rc));
        os::DeleteFile(temporary);
        return false;
    }
    ++gCommits;
    return true;
}

bool UninstallLog::Commit() {
    return Commit(GetLogPath());
}

bool UninstallLog::Commit(const CStdStr& path) {
    LogScope scope(kComponent, "UninstallLog::Commit", kMask);
    scope.Log(kMask, "path:%s", path.c_str());
    bool ok = false;
    if (mReadOnly) {
        scope.Log(0, "the view of what is installed is never written");
    } else if (path.empty()) {
        scope.Log(0, "empty file name!");
    } else if (mNoWrite) {
        os::DeleteFile(path);
        ++gCommits;
        ok = true;
    } else if (!mUnreadablePath.empty() && path.EqualsNoCase(mUnreadablePath) &&
               !FileStamp(path).empty()) {
        scope.Log(0, "%s could not be read when the run started; it is not replaced", path.c_str());
    } else {
        ok = commitShared(path);
    }
    scope.SetResult(ok);
    return ok;
}

bool UninstallLog::commitShared(const CStdStr& path) {
    os::MutexHandle mutex;
    bool held = false;
    if (os::CreateMutex(kCommitMutex, mutex) == os::error::Success) {
        std::uint32_t waited = os::WaitForSingleObject(mutex, kCommitWaitMs);
        held = waited == os::wait::Object0 || waited == os::wait::Abandoned;
        if (!held) {
            ENGINE_LOG(0, "another process holds the uninstall log (wait result 0x%x); writing "
                          "%s without it",
                       static_cast<unsigned>(waited), path.c_str());
        }
    }
    // Only the file this log was read from (or last written to) has a base to merge against.
    if (path.EqualsNoCase(mBasePath) && !FileStamp(path).empty()) {
        IniFile theirs(false);
        if (theirs.Read(path)) {
            if (!(LogSnapshot::Of(theirs) == mBase)) {
                LogSnapshot::Of(*this).CarryChanges(mBase, theirs);
                LogSnapshot::Of(theirs).ReplaceContent(*this);
                ENGINE_LOG(kMask, "%s was changed by another process; this run's records are "
                                  "merged into it",
                           path.c_str());
            }
        }
    }
    bool ok = writeText(path, FormatText());
    if (ok) {
        mBase = LogSnapshot::Of(*this);
        mBasePath = path;
    }
    if (held) {
        os::ReleaseMutex(mutex);
    }
    if (mutex.value != 0) {
        os::CloseHandle(mutex);
    }
    return ok;
}
