// The worker under the registry actions: adds, deletes and appends to keys and values, and knows
// the special flags of an action line (SP_PERMIT, SP_APPEND_NOT_CREATE). Its messages go to the
// registry category of the debug log.
#pragma once

#include "core/CStdStr.h"
#include "system/Registry.h"
#include "system/RegistryValue.h"

class EnhanceRegistry {
public:
    bool addKey(const CStdStr& key, const CStdStr& subKey, const CStdStr& valueName,
                const CStdStr& value, const CStdStr& valueType, const CStdStr& specialFlags);
    // Always true: what cannot be deleted is logged and left.
    bool deleteKey(const CStdStr& key, const CStdStr& subKey, const CStdStr& valueName);
    bool appendKey(const CStdStr& key, const CStdStr& subKey, const CStdStr& valueName,
                   const CStdStr& value, const CStdStr& valueType, const CStdStr& specialFlags,
                   const CStdStr& delimiter);

    // The value record of a line's type word and text: "STR" a string, "STRX" an expandable
    // string, "BINARY" the text's bytes, anything else the text's decimal number.
    static RegistryValue MakeValue(const CStdStr& valueType, const CStdStr& value);
    // Whether `flags`, joined by '|', hold `flag` (no regard to case).
    static bool HasFlag(const CStdStr& flags, const char* flag);

private:
    bool writeNewValue(const CStdStr& key, const CStdStr& subKey, const CStdStr& valueName,
                       const CStdStr& value, const CStdStr& valueType);

    Registry mRegistry;
};
