// One section of an INI-shaped file, with three views of its lines: the distinct names in order
// of first appearance, a hash map from name to the last value given, and every line in file
// order, duplicates included.
#pragma once

#include "core/CStdStringList.h"

#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

class IniFile;

// Hashes and compares names without regard to case, as the sections' names are compared.
struct IniNameHash {
    std::size_t operator()(const std::string& name) const;
};
struct IniNameEqual {
    bool operator()(const std::string& a, const std::string& b) const {
        return a.size() == b.size() && CStdStr::CompareNoCase(a, b) == 0;
    }
};

class IniSection {
public:
    explicit IniSection(const CStdStr& name);
    virtual ~IniSection();
    IniSection(const IniSection&) = delete;
    IniSection& operator=(const IniSection&) = delete;

    // True and the value when the name is present; otherwise `value` is left as it was.
    virtual bool GetValue(const CStdStr& name, CStdStr& value);
    // The entry at the value cursor, in order of first appearance.
    virtual bool GetCurrentValue(CStdStr& name, CStdStr& value);
    // The line at the ID cursor, duplicates included.
    virtual bool GetCurrentValueWithDups(CStdStr& name, CStdStr& value);

    void SetName(const CStdStr& name);
    const CStdStr& GetName() const { return mName; }

    void AddValue(const CStdStr& name, const CStdStr& value);
    // The lines stay in the list with duplicates.
    void RemoveValue(const CStdStr& name);
    // Sets the value cursor to the first name; the ID cursor is not moved.
    bool Reset();
    void Next();
    void Merge(const IniSection& other, bool overwrite);
    void ReplaceText(const CStdStr& from, const CStdStr& to, bool withNames);

    bool HasValue(const CStdStr& name) const { return mValues.count(name) != 0; }
    size_t ValueCount() const { return mNames.size(); }
    const std::vector<CStdStr>& Names() const { return mNames; }
    // Every line, in file order, duplicates included.
    const std::vector<std::pair<CStdStr, CStdStr>>& Lines() const { return mOccurrences; }

protected:
    // The stored value of a name (the last one given), or null.
    const CStdStr* findValue(const CStdStr& name) const;

private:
    // The distinct names ordered without regard to case: the order in which merges and
    // renames take them, so that their outcome does not depend on how names were added.
    std::vector<CStdStr> sortedNames() const;

private:
    friend class IniFile;

    CStdStr mName;
    std::uint32_t mValueCursor = 0;
    std::int32_t mIdCursor = 0;
    std::vector<CStdStr> mNames;
    // Sections of uninstall logs hold many thousand names with long common beginnings: a hash
    // finds one without comparing it with a dozen others.
    std::unordered_map<CStdStr, CStdStr, IniNameHash, IniNameEqual> mValues;
    std::vector<std::pair<CStdStr, CStdStr>> mOccurrences; // the ID is the position
    IniFile* mOwner = nullptr;
};
