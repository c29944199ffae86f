#include "script/IniFile.h"

#include "os/Files.h"
#include "script/TextFile.h"
#include "system/DebugLogger.h"

#include <algorithm>
#include <cstdlib>

namespace {

std::string Folded(const CStdStr& name) {
    CStdStr folded = name;
    return folded.MakeLower();
}

// The line without a comment that starts at a ';' outside double quotes.
void CutInfComment(CStdStr& line) {
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"') {
            quoted = !quoted;
        } else if (line[i] == ';' && !quoted) {
            line.erase(i);
            line.Trim();
            return;
        }
    }
}

void Unquote(CStdStr& text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        text = text.Mid(1, text.GetLength() - 2);
    }
}

CStdStr KeylessName(unsigned number) {
    return CStdStr::Formatted("KEY#%03u", number);
}

} // namespace

IniFile::IniFile(bool keepKeylessLines) : mKeepKeylessLines(keepKeylessLines) {}

IniFile::IniFile(const CStdStr& fileName, bool keepKeylessLines)
        : mFileName(fileName), mKeepKeylessLines(keepKeylessLines) {
    Read(fileName, false);
}

IniFile::~IniFile() {
    for (auto& section : mSections) {
        section->mOwner = nullptr;
    }
}

void IniFile::SetFileName(const CStdStr& fileName) {
    mFileName = fileName;
    mDirectoryKnown = false;
}

IniSection* IniFile::GetOrCreateSection(const CStdStr& name) {
    if (IniSection* found = FindSection(name)) {
        return found;
    }
    auto* section = new IniSection(name);
    AddSection(section);
    return section;
}

void IniFile::AddSection(IniSection* section) {
    if (section == nullptr) {
        ENGINE_LOG(0, "attempted to add a NULL section!");
        return;
    }
    mSections.emplace_back(section);
    section->mOwner = this;
    indexAdd(section);
}

void IniFile::indexAdd(IniSection* section) {
    mIndex[Folded(section->GetName())].push_back(section);
}

void IniFile::indexRemove(IniSection* section, const CStdStr& name) {
    auto found = mIndex.find(Folded(name));
    if (found == mIndex.end()) {
        return;
    }
    auto& list = found->second;
    list.erase(std::remove(list.begin(), list.end(), section), list.end());
    if (list.empty()) {
        mIndex.erase(found);
    }
}

void IniFile::sectionRenamed(IniSection* section, const CStdStr& oldName) {
    indexRemove(section, oldName);
    // The order among sections of one name is the order in the file, not of renaming.
    auto& list = mIndex[Folded(section->GetName())];
    list.push_back(section);
    std::sort(list.begin(), list.end(), [this](IniSection* a, IniSection* b) {
        auto position = [this](IniSection* s) {
            return std::find_if(mSections.begin(), mSections.end(),
                                [s](const auto& owned) { return owned.get() == s; }) -
                   mSections.begin();
        };
        return position(a) < position(b);
    });
}

IniSection* IniFile::FindSection(const CStdStr& name) const {
    auto found = mIndex.find(Folded(name));
    return found == mIndex.end() || found->second.empty() ? nullptr : found->second.front();
}

IniSection* IniFile::RemoveSection(const CStdStr& name, bool detach) {
    IniSection* section = FindSection(name);
    if (section == nullptr) {
        return nullptr;
    }
    indexRemove(section, section->GetName());
    auto owned = std::find_if(mSections.begin(), mSections.end(),
                              [section](const auto& entry) { return entry.get() == section; });
    IniSection* released = owned->release();
    mSections.erase(owned);
    released->mOwner = nullptr;
    if (detach) {
        return released;
    }
    delete released;
    return nullptr;
}

bool IniFile::RenameSection(const CStdStr& name, const CStdStr& newName) {
    if (FindSection(newName) != nullptr) {
        return false;
    }
    IniSection* section = FindSection(name);
    if (section == nullptr) {
        return false;
    }
    section->SetName(newName);
    return true;
}

CStdStr IniFile::GetSectionName(int index) const {
    IniSection* section = GetSection(index);
    return section == nullptr ? CStdStr() : section->GetName();
}

IniSection* IniFile::GetSection(int index) const {
    if (index < 0 || static_cast<size_t>(index) >= mSections.size()) {
        return nullptr;
    }
    return mSections[static_cast<size_t>(index)].get();
}

CStdStr IniFile::GetValue(const CStdStr& section, const CStdStr& name) const {
    IniSection* found = FindSection(section);
    CStdStr value;
    if (found != nullptr) {
        found->GetValue(name, value);
    }
    return value;
}

void IniFile::SetValue(const CStdStr& section, const CStdStr& name, const CStdStr& value) {
    if (section.empty()) {
        ENGINE_LOG(0, "section name cannot be empty");
        return;
    }
    if (name.empty()) {
        ENGINE_LOG(0, "value name cannot be empty");
        return;
    }
    IniSection* found = FindSection(section);
    if (found == nullptr) {
        found = new IniSection(section);
        AddSection(found);
    }
    found->AddValue(name, value);
}

void IniFile::Clear() {
    for (auto& section : mSections) {
        section->mOwner = nullptr;
    }
    mSections.clear();
    mIndex.clear();
}

const CStdStr& IniFile::GetDirectory() {
    if (!mDirectoryKnown) {
        int cut = mFileName.ReverseFind('\\');
        mDirectory = cut > 0 ? mFileName.Left(cut + 1) : CStdStr();
        mDirectoryKnown = true;
    }
    return mDirectory;
}

void IniFile::ReplaceInAll(const std::map<CStdStr, CStdStr>& replacements, bool withNames) {
    for (auto& section : mSections) {
        for (const auto& [from, to] : replacements) {
            section->ReplaceText(from, to, withNames);
        }
    }
}

void IniFile::addLine(IniSection* section, const CStdStr& name, const CStdStr& value, bool merge) {
    if (!value.empty() || !mKeepKeylessLines) {
        section->AddValue(name, value);
        return;
    }
    // A line of a list section: its text is the value, under a generated name.
    const CStdStr& line = name;
    if (!merge) {
        section->AddValue(KeylessName(++mKeylessCounter), line);
        return;
    }
    unsigned lastNumber = 0;
    CStdStr entryName;
    CStdStr entryValue;
    section->Reset();
    while (section->GetCurrentValue(entryName, entryValue)) {
        if (entryName.Find("KEY#") >= 0) {
            lastNumber = static_cast<unsigned>(std::atoi(entryName.Right(3).c_str()));
            if (entryValue.EqualsNoCase(line)) {
                section->AddValue(entryName, line);
                return;
            }
        }
        section->Next();
    }
    section->AddValue(KeylessName(lastNumber + 1), line);
}

bool IniFile::Read(const CStdStr& fileName, bool merge) {
    std::uint32_t attributes = 0;
    if (os::GetFileAttributes(fileName, attributes) != os::error::Success) {
        ENGINE_LOG(0, "%s doesn't exist.", fileName.c_str());
        return false;
    }
    TextFile file;
    if (!file.Open(fileName, TextFile::Read, TextFile::Detect)) {
        ENGINE_LOG(0, "%s could not be opened for read.", fileName.c_str());
        return false;
    }
    mEncoding = file.GetEncoding() == 0 ? 1 : file.GetEncoding();
    IniSection* current = nullptr;
    CStdStr line;
    int lineNumber = 0;
    while (file.ReadString(line)) {
        ++lineNumber;
        line.Trim();
        if (line.empty() || line[0] == '#' || line[0] == ';') {
            continue;
        }
        if (mInfSyntax) {
            CutInfComment(line);
        }
        if (line.front() == '[' && line.back() == ']' && line.size() >= 2) {
            CStdStr name = line.Mid(1, line.GetLength() - 2);
            name.Trim();
            if (name.empty()) {
                ENGINE_LOG(0, "IniFile::Read %s [line %d]: Empty section", fileName.c_str(),
                           lineNumber);
                continue;
            }
            current = GetOrCreateSection(name);
            mKeylessCounter = 0;
            continue;
        }
        if (current == nullptr) {
            ENGINE_LOG(0,
                       "IniFile::Read %s [line %d]: Data found that does not belong to any section",
                       fileName.c_str(), lineNumber);
            continue;
        }
        int equals = findEquals(line);
        if (equals == 0) {
            ENGINE_LOG(0, "IniFile::Read %s [line %d]: Could not parse name=value line",
                       fileName.c_str(), lineNumber);
            continue;
        }
        CStdStr name = equals < 0 ? line : line.Left(equals);
        CStdStr value = equals < 0 ? CStdStr() : line.Mid(equals + 1);
        name.Trim();
        value.Trim();
        Unquote(value);
        if (mInfSyntax) {
            Unquote(name);
        }
        addLine(current, name, value, merge);
    }
    return true;
}

int IniFile::findEquals(const CStdStr& line) const {
    if (!mInfSyntax) {
        return line.Find('=');
    }
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"') {
            quoted = !quoted;
        } else if (line[i] == '=' && !quoted) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

CStdStr IniFile::FormatText() const {
    CStdStr text;
    for (const auto& section : mSections) {
        text += "[" + section->GetName() + "]\n";
        for (const CStdStr& name : section->Names()) {
            CStdStr value;
            if (!section->GetValue(name, value)) {
                continue;
            }
            if (mKeepKeylessLines && name.Find('#') >= 0) {
                text += value + "\n";
            } else if (value.empty()) {
                text += name + "\n";
            } else {
                text += name + "=" + value + "\n";
            }
        }
        text += "\n";
    }
    return text;
}

bool IniFile::Write(const CStdStr& fileName) {
    CStdStr path = fileName.empty() ? mFileName : fileName;
    if (path.empty()) {
        ENGINE_LOG(0, "empty file name!");
        return false;
    }
    TextFile file;
    if (!file.Open(path, TextFile::Write, mEncoding)) {
        ENGINE_LOG(0, "Failed to open %s for writing.", path.c_str());
        return false;
    }
    CStdStr text = FormatText();
    return file.WriteString(text) || text.empty();
}
