// The action of keyword RegistryEntry: adds, deletes, appends to and wipes registry keys and
// values. Its line is
//   RegistryEntry,<operation>,<key>,<subKey>,<valueName>,<valueType>,<value>,<delimiter>,<flags>
// An added value is recorded in the uninstall log as "<key>,<subKey>,<valueName>", unless the
// delimiter field holds "FALSE"; an appended item is not recorded, since it is never undone.
#pragma once

#include "actions/Action.h"
#include "core/CStdStringList.h"

class RegistryAction : public Action {
public:
    enum Operation { Add = 0, Delete = 1, Append = 2, WipeOut = 3 };

    explicit RegistryAction(CStdStringList params);

    bool Perform(CStdStr title) override;
    bool IsSameAction(const Action* other) override;

    int GetOperation() const { return mOperation; }
    const CStdStr& GetKey() const { return mKey; }
    const CStdStr& GetSubKey() const { return mSubKey; }
    const CStdStr& GetValueName() const { return mValueName; }
    const CStdStr& GetValueType() const { return mValueType; }
    const CStdStr& GetValue() const { return mValue; }
    bool GetLogItem() const { return mLogItem; }

protected:
    RegistryAction() = default;
    // Reads a line's parameters into the fields; the constructor's work, also run again by the
    // environment action that rewrites itself into a registry line.
    void configure(CStdStringList params);

    std::int32_t mOperation = Add;
    CStdStr mKey;
    CStdStr mSubKey;
    CStdStr mValueName;
    CStdStr mValueType;
    CStdStr mValue;
    CStdStr mDelimiter;
    CStdStr mSpecialFlags;
    bool mLogItem = true;
};
