#include "actions/EnhanceIniFile.h"

#include "script/IniFile.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"

#include <cstdlib>

namespace {

const char* const kComponent = "CifAction";
constexpr std::uint32_t kMask = logmask::General;

bool IsItemOf(const CStdStr& list, const CStdStr& item, char delimiter) {
    for (const CStdStr& present : Tokenizer::Split(list, delimiter, Tokenizer::Trim)) {
        if (present.EqualsNoCase(item)) {
            return true;
        }
    }
    return false;
}

// Whether the key and its value meet every "<position>:<text>" pair of the condition; false
// with `outOfRange` set when a position lies past the value's items.
bool MeetsCondition(const CStdStr& key, const CStdStr& value, const CStdStringList& fields,
                    bool& outOfRange) {
    CStdStringList items = Tokenizer::Split(value, ',', Tokenizer::Trim | Tokenizer::Quotes);
    for (size_t i = 0; i + 1 < fields.size(); i += 2) {
        CStdStr position = fields[i];
        position.Trim();
        if (position.empty() || position.FindOneOf("0123456789") != 0) {
            return false;
        }
        size_t index = static_cast<size_t>(std::atoi(position.c_str()));
        CStdStr wanted = fields[i + 1];
        wanted.Trim();
        if (index == 0) {
            if (!key.EqualsNoCase(wanted)) {
                return false;
            }
            continue;
        }
        if (index > items.size()) {
            outOfRange = true;
            return false;
        }
        if (!items[index - 1].EqualsNoCase(wanted)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool EnhanceIniFile::AppendOrUpdateValue(const CStdStr& file, const CStdStr& section,
                                         const CStdStr& key, const CStdStr& value,
                                         const CStdStr& mode, const CStdStr& delimiter) {
    LogScope scope(kComponent, "EnhanceIniFile::AppendOrUpdateValue", kMask);
    scope.Log(kMask, "file:%s, section:%s, key:%s, mode:%s", file.c_str(), section.c_str(),
              key.c_str(), mode.c_str());
    IniFile ini;
    bool exists = FileOp::IsFile(file) && ini.Read(file);
    bool remove = mode.EqualsNoCase("Delete");
    if (!exists && remove) {
        scope.Log(0, "file %s does not exist.", file.c_str());
        scope.SetResult(false);
        return false;
    }
    IniSection* found = ini.FindSection(section);
    CStdStr old;
    if (remove) {
        if (found == nullptr || !found->GetValue(key, old)) {
            scope.SetResult(true);
            return true;
        }
        found->RemoveValue(key);
    } else if (found == nullptr) {
        scope.Log(kMask, "new section %s is added.", section.c_str());
        ini.SetValue(section, key, value);
    } else if (found->GetValue(key, old) && mode.EqualsNoCase("Append") && !old.empty()) {
        char separator = delimiter.empty() ? ',' : delimiter[0];
        if (IsItemOf(old, value, separator)) {
            scope.Log(kMask, "Could not append the value %s as it already exists.",
                      value.c_str());
            scope.SetResult(true);
            return true;
        }
        found->AddValue(key, old + separator + value);
    } else {
        found->AddValue(key, value);
    }
    if (!FileOp::createPath(file) || !ini.Write(file)) {
        scope.Log(0, "could not write file %s to the disk.", file.c_str());
        scope.SetResult(false);
        return false;
    }
    scope.SetResult(true);
    return true;
}

bool EnhanceIniFile::EraseSection(const CStdStr& file, const CStdStr& section) {
    LogScope scope(kComponent, "EnhanceIniFile::EraseSection", kMask);
    scope.Log(kMask, "file:%s, section:%s", file.c_str(), section.c_str());
    IniFile ini;
    if (!FileOp::IsFile(file) || !ini.Read(file)) {
        scope.Log(0, "file %s does not exist.", file.c_str());
        scope.SetResult(false);
        return false;
    }
    if (ini.FindSection(section) == nullptr) {
        scope.SetResult(true);
        return true;
    }
    ini.RemoveSection(section, false);
    if (!ini.Write(file)) {
        scope.Log(0, "could not write file %s to the disk.", file.c_str());
        scope.SetResult(false);
        return false;
    }
    scope.SetResult(true);
    return true;
}

bool EnhanceIniFile::FindKeyByCondition(IniFile& ini, const CStdStr& section,
                                        const CStdStr& condition, CStdStr& key) {
    LogScope scope(kComponent, "EnhanceIniFile::FindKeyByCondition", kMask);
    CStdStringList fields = Tokenizer::Split(condition, ':');
    IniSection* found = ini.FindSection(section);
    if (fields.size() < 2 || found == nullptr) {
        scope.SetResult(false);
        return false;
    }
    bool outOfRange = false;
    for (const CStdStr& name : found->Names()) {
        CStdStr value;
        found->GetValue(name, value);
        if (MeetsCondition(name, value, fields, outOfRange)) {
            key = name;
            scope.SetResult(true);
            return true;
        }
    }
    scope.Log(kMask, outOfRange ? "Condition (%s) is out of range!" : "Condition (%s) is not met!",
              condition.c_str());
    scope.SetResult(false);
    return false;
}
