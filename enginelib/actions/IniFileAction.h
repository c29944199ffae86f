// The action of keyword IniFile: changes a key or a section of an INI file. Its line is
//   IniFile,<operation>,<file>,<section>,<key>,<value>,<delimiter>
// with the operations APPEND (add an item to the key's list, split at the delimiter, "," when
// none is given), UPDATE (set the key) and DELETESECTION. Nothing goes to the uninstall log.
#pragma once

#include "actions/Action.h"
#include "core/CStdStringList.h"

class IniFileAction : public Action {
public:
    enum Operation { Append = 0, Update = 1, DeleteSection = 2, Unknown = 3 };

    explicit IniFileAction(CStdStringList params);

    bool Perform(CStdStr title) override;
    bool IsSameAction(const Action* other) override;

    int GetOperation() const { return mOperation; }
    const CStdStr& GetFile() const { return mFile; }
    const CStdStr& GetDelimiter() const { return mDelimiter; }

private:
    bool appendIniFile();
    bool updateIniFile();
    bool deleteSectionIniFile();

    std::int32_t mOperation = Unknown;
    CStdStr mFile;
    CStdStr mSection;
    CStdStr mKey;
    CStdStr mValue;
    CStdStr mDelimiter;
};
