#include "script/IniSection.h"

#include "script/IniFile.h"
#include "system/DebugLogger.h"

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
    auto found = mValues.find(name);
    if (found == mValues.end()) {
        mNames.push_back(name);
        mValues.emplace(name, value);
    } else {
        found->second = value;
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

void IniSection::Merge(const IniSection& other, bool overwrite) {
    for (const auto& [name, value] : other.mValues) {
        if (overwrite || mValues.find(name) == mValues.end()) {
            AddValue(name, value);
        }
    }
}

void IniSection::ReplaceText(const CStdStr& from, const CStdStr& to, bool withNames) {
    std::vector<std::pair<CStdStr, CStdStr>> renames;
    for (auto& [name, value] : mValues) {
        value.Replace(from.c_str(), to.c_str());
        if (withNames) {
            CStdStr renamed = name;
            if (renamed.Replace(from.c_str(), to.c_str()) > 0) {
                renames.emplace_back(name, renamed);
            }
        }
    }
    for (auto& occurrence : mOccurrences) {
        occurrence.second.Replace(from.c_str(), to.c_str());
    }
    if (!withNames) {
        return;
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
