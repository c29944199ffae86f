#include "uninstall/LogSnapshot.h"

#include "script/IniFile.h"

namespace {

bool IsListKey(const CStdStr& key) {
    return key.EqualsNoCase("InstalledBy") || key.EqualsNoCase("RequiredBy") ||
           CStdStr(key.Left(12)).EqualsNoCase("OEMSharedBy,");
}

std::vector<CStdStr> SplitList(const CStdStr& list) {
    std::vector<CStdStr> names;
    size_t start = 0;
    while (start <= list.size()) {
        size_t comma = list.find(',', start);
        CStdStr name = list.substr(start, comma == CStdStr::npos ? CStdStr::npos : comma - start);
        if (!name.empty()) {
            names.push_back(name);
        }
        if (comma == CStdStr::npos) {
            break;
        }
        start = comma + 1;
    }
    return names;
}

bool Holds(const std::vector<CStdStr>& names, const CStdStr& name) {
    for (const CStdStr& present : names) {
        if (present.EqualsNoCase(name)) {
            return true;
        }
    }
    return false;
}

// Their list with the names mine added since base, and without those mine removed.
CStdStr MergeList(const CStdStr& base, const CStdStr& mine, const CStdStr& theirs) {
    std::vector<CStdStr> baseNames = SplitList(base);
    std::vector<CStdStr> mineNames = SplitList(mine);
    std::vector<CStdStr> merged;
    for (const CStdStr& name : SplitList(theirs)) {
        if (!(Holds(baseNames, name) && !Holds(mineNames, name)) && !Holds(merged, name)) {
            merged.push_back(name);
        }
    }
    for (const CStdStr& name : mineNames) {
        if (!Holds(merged, name) && !Holds(baseNames, name)) {
            merged.push_back(name);
        }
    }
    CStdStr text;
    for (const CStdStr& name : merged) {
        text += (text.empty() ? "" : ",") + name;
    }
    return text;
}

void RemoveKey(IniFile& target, const CStdStr& section, const CStdStr& key) {
    IniSection* found = target.FindSection(section);
    if (found == nullptr) {
        return;
    }
    found->RemoveValue(key);
    if (found->ValueCount() == 0) {
        target.RemoveSection(section, false);
    }
}

} // namespace

const CStdStr* LogSnapshot::Section::Find(const CStdStr& key) const {
    auto found = index.find(key);
    return found == index.end() ? nullptr : &keys[found->second].second;
}

LogSnapshot LogSnapshot::Of(IniFile& file) {
    LogSnapshot snapshot;
    for (int i = 0; i < file.SectionCount(); ++i) {
        IniSection* section = file.GetSection(i);
        Section copy;
        copy.name = section->GetName();
        for (const CStdStr& key : section->Names()) {
            CStdStr value;
            section->GetValue(key, value);
            copy.index.emplace(key, copy.keys.size());
            copy.keys.emplace_back(key, value);
        }
        snapshot.mIndex.emplace(copy.name, snapshot.mSections.size());
        snapshot.mSections.push_back(std::move(copy));
    }
    return snapshot;
}

bool LogSnapshot::operator==(const LogSnapshot& other) const {
    if (mSections.size() != other.mSections.size()) {
        return false;
    }
    for (size_t i = 0; i < mSections.size(); ++i) {
        if (mSections[i].name != other.mSections[i].name ||
            mSections[i].keys != other.mSections[i].keys) {
            return false;
        }
    }
    return true;
}

const LogSnapshot::Section* LogSnapshot::find(const CStdStr& name) const {
    auto found = mIndex.find(name);
    return found == mIndex.end() ? nullptr : &mSections[found->second];
}

void LogSnapshot::CarryChanges(const LogSnapshot& base, IniFile& target) const {
    for (const Section& section : mSections) {
        const Section* before = base.find(section.name);
        for (const auto& [key, value] : section.keys) {
            const CStdStr* old = before != nullptr ? before->Find(key) : nullptr;
            if (old != nullptr && *old == value) {
                continue;
            }
            CStdStr merged = value;
            if (IsListKey(key)) {
                CStdStr theirs;
                if (IniSection* present = target.FindSection(section.name);
                    present != nullptr && present->GetValue(key, theirs)) {
                    merged = MergeList(old != nullptr ? *old : CStdStr(), value, theirs);
                }
            }
            target.GetOrCreateSection(section.name)->AddValue(key, merged);
        }
        if (before != nullptr) {
            for (const auto& [key, value] : before->keys) {
                if (section.Find(key) == nullptr) {
                    RemoveKey(target, section.name, key);
                }
            }
        }
    }
    for (const Section& section : base.mSections) {
        if (find(section.name) != nullptr) {
            continue;
        }
        for (const auto& [key, value] : section.keys) {
            RemoveKey(target, section.name, key);
        }
    }
}

void LogSnapshot::ReplaceContent(IniFile& target) const {
    target.Clear();
    for (const Section& section : mSections) {
        IniSection* into = target.GetOrCreateSection(section.name);
        for (const auto& [key, value] : section.keys) {
            into->AddValue(key, value);
        }
    }
}
