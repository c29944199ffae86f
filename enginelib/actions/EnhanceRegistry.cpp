#include "actions/EnhanceRegistry.h"

#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <cstdlib>

namespace {

const char* const kComponent = "Registry";
constexpr std::uint32_t kMask = logmask::Registry;

// The decimal text-to-number conversion of the C library: leading blanks skipped, stops at the
// first character that is not a digit, kept to 32 bits.
std::uint32_t DecimalNumber(const CStdStr& text) {
    return static_cast<std::uint32_t>(std::strtoll(text.c_str(), nullptr, 10));
}

} // namespace

RegistryValue EnhanceRegistry::MakeValue(const CStdStr& valueType, const CStdStr& value) {
    if (valueType.EqualsNoCase("STR")) {
        return RegistryValue::String(value, os::regtype::String);
    }
    if (valueType.EqualsNoCase("STRX")) {
        return RegistryValue::String(value, os::regtype::ExpandString);
    }
    if (valueType.EqualsNoCase("BINARY")) {
        RegistryValue binary;
        binary.type = os::regtype::Binary;
        binary.bytes.assign(value.begin(), value.end());
        return binary;
    }
    return RegistryValue::Dword(DecimalNumber(value));
}

bool EnhanceRegistry::HasFlag(const CStdStr& flags, const char* flag) {
    for (const CStdStr& item : Tokenizer::Split(flags, '|', Tokenizer::Trim)) {
        if (item.EqualsNoCase(flag)) {
            return true;
        }
    }
    return false;
}

bool EnhanceRegistry::writeNewValue(const CStdStr& key, const CStdStr& subKey,
                                    const CStdStr& valueName, const CStdStr& value,
                                    const CStdStr& valueType) {
    if (valueName.empty() && value.empty()) {
        return true;
    }
    if (!mRegistry.WriteValue(key, subKey, valueName, MakeValue(valueType, value))) {
        ENGINE_LOG(0, "Could not write the value of key %s ErrCode:%d", subKey.c_str(),
                   static_cast<int>(mRegistry.GetLastError()));
        return false;
    }
    return true;
}

bool EnhanceRegistry::addKey(const CStdStr& key, const CStdStr& subKey, const CStdStr& valueName,
                             const CStdStr& value, const CStdStr& valueType,
                             const CStdStr& specialFlags) {
    LogScope scope(kComponent, "EnhanceRegistry::addKey", kMask);
    scope.Log(kMask, "Params: KeyName:%s,SubKeyName:%s: ValueName:%s", key.c_str(),
              subKey.c_str(), valueName.c_str());
    bool existed = mRegistry.DoesKeyExist(key, subKey);
    bool inheritPermissions = !existed;
    bool permit = HasFlag(specialFlags, "SP_PERMIT");
    if (permit) {
        scope.Log(kMask, "Using specialFlag: SP_PERMIT. Key= %s, SubKey= %s, Value= %s.",
                  key.c_str(), subKey.c_str(), valueName.c_str());
        inheritPermissions = false;
    }
    if ((!existed || permit) && !mRegistry.CreateKey(key, subKey, inheritPermissions)) {
        scope.Log(0, "Could not create key %s ErrCode:%d", subKey.c_str(),
                  static_cast<int>(mRegistry.GetLastError()));
        scope.SetResult(false);
        return false;
    }
    if (!writeNewValue(key, subKey, valueName, value, valueType)) {
        scope.SetResult(false);
        return false;
    }
    scope.Log(kMask, "return true");
    scope.SetResult(true);
    return true;
}

bool EnhanceRegistry::deleteKey(const CStdStr& key, const CStdStr& subKey,
                                const CStdStr& valueName) {
    LogScope scope(kComponent, "EnhanceRegistry::deleteKey", kMask);
    scope.Log(kMask, "Params: KeyName:%s,SubKeyName:%s", key.c_str(), subKey.c_str());
    if (!valueName.empty()) {
        if (mRegistry.DeleteValue(key, subKey, valueName)) {
            scope.Log(kMask, "Deleted the value %s\\%s\\%s.", key.c_str(), subKey.c_str(),
                      valueName.c_str());
        } else {
            scope.Log(kMask, "Could not delete value %s\\%s\\%s ErrCode:%d", key.c_str(),
                      subKey.c_str(), valueName.c_str(),
                      static_cast<int>(mRegistry.GetLastError()));
        }
    } else if (mRegistry.DeleteEmptyKey(key, subKey, true)) {
        scope.Log(kMask, "Deleted the key %s\\%s.", key.c_str(), subKey.c_str());
    } else {
        scope.Log(kMask, "Could not delete key %s\\%s ErrCode:%d", key.c_str(), subKey.c_str(),
                  static_cast<int>(mRegistry.GetLastError()));
    }
    mRegistry.CleanEmptyKeys(key, subKey);
    // The parents that have become empty go too.
    int cut = subKey.ReverseFind('\\');
    if (cut > 0 && !mRegistry.DoesKeyExist(key, subKey)) {
        mRegistry.DeleteEmptyKey(key, subKey.Left(cut), true);
    }
    scope.SetResult(true);
    return true;
}

bool EnhanceRegistry::appendKey(const CStdStr& key, const CStdStr& subKey,
                                const CStdStr& valueName, const CStdStr& value,
                                const CStdStr& valueType, const CStdStr& specialFlags,
                                const CStdStr& delimiter) {
    LogScope scope(kComponent, "EnhanceRegistry::appendKey", kMask);
    scope.Log(kMask, "Params: KeyName:%s,SubKeyName:%s", key.c_str(), subKey.c_str());
    bool permit = HasFlag(specialFlags, "SP_PERMIT");
    bool notCreate = HasFlag(specialFlags, "SP_APPEND_NOT_CREATE");
    if (permit) {
        scope.Log(kMask, "Using specialFlag: SP_PERMIT. KeyName= %s, SubKeyName= %s, ValueName= %s.",
                  key.c_str(), subKey.c_str(), valueName.c_str());
    }
    if (notCreate) {
        scope.Log(kMask,
                  "Using specialFlag: SP_APPEND_NOT_CREATE. KeyName= %s, SubKeyName= %s, "
                  "ValueName= %s.",
                  key.c_str(), subKey.c_str(), valueName.c_str());
    }
    auto result = [&scope](bool ok) {
        scope.SetResult(ok);
        return ok;
    };
    if (!mRegistry.DoesKeyExist(key, subKey)) {
        if (notCreate) {
            return result(true);
        }
        if (!mRegistry.CreateKey(key, subKey, !permit)) {
            scope.Log(0, "Could not create key %s ErrCode:%d", subKey.c_str(),
                      static_cast<int>(mRegistry.GetLastError()));
            return result(false);
        }
        return result(writeNewValue(key, subKey, valueName, value, valueType));
    }
    RegistryValue old;
    if (!mRegistry.DoesValueExist(key, subKey, valueName) ||
        !mRegistry.ReadValue(key, subKey, valueName, old)) {
        return result(notCreate || writeNewValue(key, subKey, valueName, value, valueType));
    }
    CStdStr oldText = Registry::ValueText(old);
    CStdStr newText;
    if (delimiter.empty()) {
        newText = oldText + value;
    } else {
        for (const CStdStr& item : Tokenizer::Split(oldText, delimiter[0], Tokenizer::Quotes)) {
            if (item.EqualsNoCase(value)) {
                scope.Log(kMask, "Value already exists under the key %s", subKey.c_str());
                return result(true);
            }
        }
        newText = oldText + delimiter[0] + value;
    }
    RegistryValue updated = old;
    if (old.type == os::regtype::Dword) {
        updated.number = DecimalNumber(newText);
    } else if (old.type == os::regtype::Binary) {
        updated.bytes.assign(newText.begin(), newText.end());
    } else {
        updated.text = newText;
    }
    if (!mRegistry.WriteValue(key, subKey, valueName, updated)) {
        scope.Log(0, "Could not write the value of key %s ErrCode:%d", subKey.c_str(),
                  static_cast<int>(mRegistry.GetLastError()));
        return result(false);
    }
    return result(true);
}
