// The worker under the INI editing actions: sets, extends and deletes keys of an INI file on
// disk, erases sections, and finds the key of a section whose value meets a line condition.
// Files are read and written whole through the INI model, so comments and blank lines of an
// edited file are not kept.
#pragma once

#include "core/CStdStr.h"

class IniFile;

class EnhanceIniFile {
public:
    // `mode` "Append" adds `value` as an item behind `delimiter` unless it is there already,
    // "Update" replaces the value, "Delete" removes the key.
    static bool AppendOrUpdateValue(const CStdStr& file, const CStdStr& section,
                                    const CStdStr& key, const CStdStr& value, const CStdStr& mode,
                                    const CStdStr& delimiter);
    static bool EraseSection(const CStdStr& file, const CStdStr& section);
    // A condition is "<position>:<text>", with more pairs joined by ':' that must all hold.
    // Position 0 is the key's name, 1 and on the items of its comma-separated value; the item,
    // trimmed, must equal the text without regard to case. The first key that meets it goes to
    // `key`.
    static bool FindKeyByCondition(IniFile& ini, const CStdStr& section, const CStdStr& condition,
                                   CStdStr& key);
};
