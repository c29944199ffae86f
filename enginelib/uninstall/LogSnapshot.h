// The records of an uninstall log at one moment: its sections and their keys with values. Two
// processes may install into one machine at once; each commits the changes it made since it
// read the log (this snapshot against the one taken at the read) onto the log as the other left
// it, so that the records of both survive.
#pragma once

#include "core/CStdStr.h"

#include <map>
#include <utility>
#include <vector>

class IniFile;

class LogSnapshot {
public:
    static LogSnapshot Of(IniFile& file);

    bool operator==(const LogSnapshot& other) const;

    // Carries onto `target` the changes that turned `base` into this snapshot: keys set or
    // changed take this value, keys dropped go, and a section left with no key goes. A list key
    // (InstalledBy, RequiredBy, OEMSharedBy,<product>) gains the names this snapshot added and
    // loses those it removed, keeping the names `target` has of its own.
    void CarryChanges(const LogSnapshot& base, IniFile& target) const;
    // Makes `target` hold exactly these records.
    void ReplaceContent(IniFile& target) const;

private:
    struct Section {
        CStdStr name;
        std::vector<std::pair<CStdStr, CStdStr>> keys;
        std::map<CStdStr, size_t, NoCaseLess> index;
        const CStdStr* Find(const CStdStr& key) const;
    };

    const Section* find(const CStdStr& name) const;

    std::vector<Section> mSections;
    std::map<CStdStr, size_t, NoCaseLess> mIndex;
};
