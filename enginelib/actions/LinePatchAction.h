// The action of keyword LinePatch: changes lines of INI-shaped files, chosen by a condition.
// Its line is
//   LinePatch,<files>,<operation>,<condition>,<text>,<value>
// <files> joins one or more paths with '|'. The operations:
//   ADD           <text> is "<section>|<key>|<value>": the key is set.
//   DELETE        <text> names the section; the first key that meets <condition> goes.
//   APPEND_FRONT  <text> names the section; <value> is put before the value of the first key
//   APPEND_END    that meets <condition>, or behind it.
// A condition is "<position>:<text>[:<position>:<text>...]" (see EnhanceIniFile). Nothing goes
// to the uninstall log.
#pragma once

#include "actions/Action.h"
#include "core/CStdStringList.h"

class IniFile;

class LinePatchAction : public Action {
public:
    enum Operation { Add = 0, Delete = 1, AppendFront = 2, AppendEnd = 3, Unknown = 4 };

    explicit LinePatchAction(CStdStringList params);

    bool Perform(CStdStr title) override;
    bool IsSameAction(const Action* other) override;

    int GetOperation() const { return mOperation; }
    const CStdStr& GetFiles() const { return mFiles; }

private:
    bool patchFile(const CStdStr& file);
    // The key of `section` that meets the condition; false when there is none.
    bool findLine(const CStdStr& file, const CStdStr& section, CStdStr& key);
    bool appendString(const CStdStr& file, const CStdStr& section, const CStdStr& key);
    bool addLine(const CStdStr& file);
    bool deleteLine(const CStdStr& file, const CStdStr& section, const CStdStr& key);

    std::int32_t mOperation = Unknown;
    CStdStr mFiles;
    CStdStr mCondition;
    CStdStr mText;
    CStdStr mValue;
};
