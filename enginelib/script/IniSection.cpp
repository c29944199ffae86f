#include "script/IniSection.h"

#include "script/IniFile.h"
#include "system/DebugLogger.h"

#include <algorithm>

std::size_t IniNameHash::operator()(const std::string& name) const {
    // FNV-1a over the length and the last folded bytes: the names of one section (paths above
    // all) tend to share their beginnings and differ towards their ends.
    constexpr std::size_t kTail = 32;
    std::uint64_t hash = 14695981039346656037ull ^ name.size();
    std::size_t first = name.size() > kTail ? name.size() - kTail : 0;
    for (std::size_t i = first; i < name.size(); ++i) {
        hash ^= static_cast<unsigned char>(CStdStr::ToLower(name[i]));
        hash *= 1099511628211ull;
    }
    return static_cast<std::size_t>(hash);
}

IniSection::IniSection(const CStdStr& name) : mName(name) {}

IniSection::~IniSection() = default;

void IniSection::SetName(const CStdStr& name) {
    CStdStr old = mName;
    mName = name;
    if (mOwner != nullptr) {
        mOwner->sectionRenamed(this, old);
    }
}

const CStdStr* IniSection::findValue(const CStdStr& name) const {
    auto found = mValues.find(name);
    return found == mValues.end() ? nullptr : &found->second;
}

bool IniSection::GetValue(const CStdStr& name, CStdStr& value) {
    const CStdStr* found = findValue(name);
    if (found == nullptr) {
        return false;
    }
    value = *found;
    return true;
}

bool IniSection::GetCurrentValue(CStdStr& name, CStdStr& value) {
    if (mValueCursor >= mNames.size()) {
        return false;
    }
    auto found = mValues.find(mNames[mValueCursor]);
    if (found == mValues.end()) {
        ENGINE_LOG(0, "internal breakdown on item ");
        return false;
    }
    name = found->first;
    value = found->second;
    return true;
}

bool IniSection::GetCurrentValueWithDups(CStdStr& name, CStdStr& value) {
    if (mIdCursor < 0 || static_cast<size_t>(mIdCursor) >= mOccurrences.size()) {
        if (mIdCursor < 0) {
            ENGINE_LOG(0, "internal breakdown on ID %d", mIdCursor);
        }
        return false;
    }
    name = mOccurrences[static_cast<size_t>(mIdCursor)].first;
    value = mOccurrences[static_cast<size_t>(mIdCursor)].second;
    return true;
}

void IniSection::AddValue(const CStdStr& name, const CStdStr& value) {
    auto [entry, added] = mValues.try_emplace(name, value);
    if (added) {
        mNames.push_back(name);
    } else {
        entry->second = value;
    }
    mOccurrences.emplace_back(name, value);
}

void IniSection::RemoveValue(const CStdStr& name) {
    mValues.erase(name);
    for (auto it = mNames.begin(); it != mNames.end(); ++it) {
        if (it->EqualsNoCase(name)) {
            mNames.erase(it);
            break;
        }
    }
}

bool IniSection::Reset() {
    mValueCursor = 0;
    return !mNames.empty();
}

void IniSection::Next() {
    ++mValueCursor;
    ++mIdCursor;
}

std::vector<CStdStr> IniSection::sortedNames() const {
    std::vector<CStdStr> names;
    names.reserve(mValues.size());
    for (const auto& entry : mValues) {
        names.push_back(entry.first);
    }
    std::sort(names.begin(), names.end(), NoCaseLess());
    return names;
}

void IniSection::Merge(const IniSection& other, bool overwrite) {
    for (const CStdStr& name : other.sortedNames()) {
        if (overwrite || mValues.find(name) == mValues.end()) {
            AddValue(name, other.mValues.at(name));
        }
    }
}

void IniSection::ReplaceText(const CStdStr& from, const CStdStr& to, bool withNames) {
    for (auto& entry : mValues) {
        entry.second.Replace(from.c_str(), to.c_str());
    }
    for (auto& occurrence : mOccurrences) {
        occurrence.second.Replace(from.c_str(), to.c_str());
    }
    if (!withNames) {
        return;
    }
    std::vector<std::pair<CStdStr, CStdStr>> renames;
    for (const CStdStr& name : sortedNames()) {
        CStdStr renamed = name;
        if (renamed.Replace(from.c_str(), to.c_str()) > 0) {
            renames.emplace_back(name, renamed);
        }
    }
    for (const auto& [oldName, newName] : renames) {
        auto found = mValues.find(oldName);
        if (found == mValues.end()) {
            continue;
        }
        CStdStr value = found->second;
        mValues.erase(found);
        mValues[newName] = value;
    }
    for (CStdStr& name : mNames) {
        name.Replace(from.c_str(), to.c_str());
    }
}
