#include "script/InfResolver.h"

bool InfResolver::Lookup(CStdStr& value, const CStdStr& name) const {
    CStdStr key = name;
    key.MakeLower();
    auto found = mStrings.find(key);
    if (found == mStrings.end()) {
        return false;
    }
    value = found->second;
    return true;
}
