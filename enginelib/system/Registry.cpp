#include "system/Registry.h"

#include "system/DebugLogger.h"
#include "system/LogScope.h"

namespace {

const char* const kComponent = "Registry";
constexpr std::uint32_t kMask = logmask::Registry;

CStdStr ParentKey(const CStdStr& key) {
    int cut = key.ReverseFind('\\');
    return cut < 0 ? CStdStr() : key.Left(cut);
}

// Closes a key when the scope ends, so that every path out of a function closes what it opened.
class KeyCloser {
public:
    explicit KeyCloser(os::HKey key) : mKey(key) {}
    ~KeyCloser() {
        if (mKey != 0) {
            os::RegCloseKey(mKey);
        }
    }
    KeyCloser(const KeyCloser&) = delete;
    KeyCloser& operator=(const KeyCloser&) = delete;

private:
    os::HKey mKey;
};

// One pass over the path: a key path from a script may be very deep.
CStdStringList SplitKeyPath(const CStdStr& key) {
    CStdStringList parts;
    size_t start = 0;
    for (size_t cut = key.find('\\'); cut != CStdStr::npos; cut = key.find('\\', start)) {
        parts.Add(key.substr(start, cut - start));
        start = cut + 1;
    }
    parts.Add(key.substr(start));
    return parts;
}

std::vector<std::uint8_t> TextBytes(const CStdStr& text) {
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    bytes.push_back(0);
    return bytes;
}

// String data of the A functions without its terminators.
CStdStr TextOf(const std::vector<std::uint8_t>& data) {
    CStdStr text(reinterpret_cast<const char*>(data.data()), data.size());
    int end = text.Find('\0');
    return end >= 0 ? text.Left(end) : text;
}

CStdStringList MultiOf(const std::vector<std::uint8_t>& data) {
    CStdStringList list;
    CStdStr current;
    for (std::uint8_t byte : data) {
        if (byte != 0) {
            current += static_cast<char>(byte);
            continue;
        }
        if (current.empty()) {
            break;
        }
        list.Add(current);
        current.clear();
    }
    if (!current.empty()) {
        list.Add(current);
    }
    return list;
}

} // namespace

Registry::~Registry() {
    if (mRemoteClasses != 0) {
        os::RegCloseKey(mRemoteClasses);
    }
    for (const auto& entry : mRemoteRoots) {
        os::RegCloseKey(entry.second);
    }
}

os::HKey Registry::getRemoteKey(os::HKey root) {
    auto found = mRemoteRoots.find(root);
    if (found != mRemoteRoots.end()) {
        return found->second;
    }
    os::HKey connected = 0;
    os::Error rc = os::RegConnectRegistry(mComputerName, root, connected);
    if (rc != os::error::Success) {
        ENGINE_LOG(0, "could not access computer %s (error %d)", mComputerName.c_str(),
                   static_cast<int>(rc));
        return 0;
    }
    mRemoteRoots[root] = connected;
    return connected;
}

os::HKey Registry::getRootKey(const CStdStr& rootWord) {
    os::HKey root = 0;
    if (rootWord.EqualsNoCase("HKLM")) {
        root = os::hkey::LocalMachine;
    } else if (rootWord.EqualsNoCase("HKCU")) {
        root = os::hkey::CurrentUser;
    } else if (rootWord.EqualsNoCase("HKU")) {
        root = os::hkey::Users;
    } else if (rootWord.EqualsNoCase("HKCR")) {
        root = os::hkey::ClassesRoot;
    } else if (rootWord.EqualsNoCase("HKCC")) {
        root = os::hkey::CurrentConfig;
    } else {
        ENGINE_LOG(0, "invalid root key %s", rootWord.c_str());
        return 0;
    }
    if (!isRemote()) {
        return root;
    }
    if (root != os::hkey::ClassesRoot) {
        return getRemoteKey(root);
    }
    // The classes root of another computer cannot be connected: it is HKLM's Software\Classes.
    if (mRemoteClasses == 0) {
        os::HKey machine = getRemoteKey(os::hkey::LocalMachine);
        if (machine == 0 || os::RegOpenKeyEx(machine, "Software\\Classes", os::regaccess::AllAccess,
                                             mRemoteClasses) != os::error::Success) {
            mRemoteClasses = 0;
        }
    }
    return mRemoteClasses;
}

os::Error Registry::openKey(const CStdStr& root, const CStdStr& key, std::uint32_t access,
                            os::HKey& handle) {
    handle = 0;
    os::HKey rootKey = getRootKey(root);
    if (rootKey == 0) {
        return os::error::InvalidHandle;
    }
    os::Error rc = os::RegOpenKeyEx(rootKey, key, access, handle);
    if (rc != os::error::Success) {
        handle = 0;
        ENGINE_LOG(rc == os::error::FileNotFound ? kMask : 0, "Failed:RegOpenKeyEx %s (rc:%d)",
                   key.c_str(), static_cast<int>(rc));
    }
    return rc;
}

bool Registry::CreateKey(const CStdStr& root, const CStdStr& key, bool inheritPermissions) {
    LogScope scope(kComponent, "Registry::CreateKey", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s,inheretPermissions:%d", root.c_str(), key.c_str(),
              inheritPermissions ? 1 : 0);
    os::HKey rootKey = getRootKey(root);
    if (rootKey == 0) {
        scope.SetResult(false);
        return false;
    }
    std::string security;
    if (inheritPermissions) {
        // The nearest existing key on the way down gives the access list of the new key.
        os::HKey parent = rootKey;
        std::vector<os::HKey> opened;
        CStdStr path;
        for (const CStdStr& part : SplitKeyPath(key)) {
            path += path.empty() ? part : CStdStr("\\" + part);
            os::HKey next = 0;
            if (os::RegOpenKeyEx(rootKey, path, os::regaccess::Read, next) != os::error::Success) {
                break;
            }
            opened.push_back(next);
            parent = next;
        }
        std::string parentSecurity;
        if (os::RegGetKeySecurity(parent, parentSecurity) == os::error::Success) {
            os::Error rc = os::BuildInheritedSecurity(parentSecurity, security);
            if (rc == 126 || rc == 127) {
                scope.Log(0, "Can't find ADVAPI32.dll on the system.  Can't create key with "
                             "special permission. ");
            }
            if (rc != os::error::Success) {
                security.clear();
            }
        }
        for (os::HKey handle : opened) {
            os::RegCloseKey(handle);
        }
    }
    os::HKey created = 0;
    os::Error rc =
            os::RegCreateKeyEx(rootKey, key, os::regaccess::AllAccess, security, created, nullptr);
    if (rc != os::error::Success) {
        scope.Log(0, "Failed:RegCreteKeyEx of %s rc:%d", key.c_str(), static_cast<int>(rc));
        scope.SetResult(false);
        return false;
    }
    os::RegCloseKey(created);
    scope.SetResult(true);
    return true;
}

bool Registry::DoesKeyExist(const CStdStr& root, const CStdStr& key) {
    LogScope scope(kComponent, "Registry::DoesKeyExist", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s", root.c_str(), key.c_str());
    os::HKey handle = 0;
    bool exists = openKey(root, key, os::regaccess::Read, handle) == os::error::Success;
    KeyCloser closer(handle);
    scope.SetResult(exists);
    return exists;
}

bool Registry::DoesValueExist(const CStdStr& root, const CStdStr& key, const CStdStr& valueName) {
    LogScope scope(kComponent, "Registry::DoesValueExist", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s,valueName:%s", root.c_str(), key.c_str(),
              valueName.c_str());
    os::HKey handle = 0;
    if (openKey(root, key, os::regaccess::Read, handle) != os::error::Success) {
        scope.SetResult(false);
        return false;
    }
    KeyCloser closer(handle);
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    bool exists = os::RegQueryValueEx(handle, valueName, type, data) == os::error::Success;
    scope.SetResult(exists);
    return exists;
}

bool Registry::IsKeyEmpty(const CStdStr& root, const CStdStr& key) {
    LogScope scope(kComponent, "Registry::IsKeyEmpty", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s", root.c_str(), key.c_str());
    os::HKey handle = 0;
    if (openKey(root, key, os::regaccess::Read, handle) != os::error::Success) {
        scope.SetResult(false);
        return false;
    }
    KeyCloser closer(handle);
    os::RegKeyInfo info;
    if (os::Error rc = os::RegQueryInfoKey(handle, info)) {
        scope.Log(0, "Failed:RegQueryInfoKey %s\\%s (rc:%d)", root.c_str(), key.c_str(),
                  static_cast<int>(rc));
        scope.SetResult(false);
        return false;
    }
    bool empty = info.subKeys == 0 && info.values == 0;
    scope.SetResult(empty);
    return empty;
}

bool Registry::ReadValue(const CStdStr& root, const CStdStr& key, const CStdStr& valueName,
                         RegistryValue& value) {
    LogScope scope(kComponent, "Registry::ReadValue", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s,valueneme:%s", root.c_str(), key.c_str(),
              valueName.c_str());
    os::HKey handle = 0;
    if (openKey(root, key, os::regaccess::Read, handle) != os::error::Success) {
        scope.SetResult(false);
        return false;
    }
    KeyCloser closer(handle);
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    os::Error rc = os::RegQueryValueEx(handle, valueName, type, data);
    if (rc != os::error::Success) {
        scope.Log(rc == os::error::FileNotFound ? kMask : 0, "Failed:RegQueryValueEx %s.  rc:%d",
                  valueName.c_str(), static_cast<int>(rc));
        scope.SetResult(false);
        return false;
    }
    value = RegistryValue();
    value.type = type;
    switch (type) {
    case os::regtype::String:
    case os::regtype::ExpandString:
        value.text = TextOf(data);
        break;
    case os::regtype::Binary:
        value.bytes = data;
        break;
    case os::regtype::Dword:
        for (size_t i = 0; i < 4 && i < data.size(); ++i) {
            value.number |= static_cast<std::uint32_t>(data[i]) << (8 * i);
        }
        break;
    case os::regtype::MultiString:
        value.strings = MultiOf(data);
        break;
    default:
        scope.Log(0, "registry entry %s had unsupported data type %d", valueName.c_str(),
                  static_cast<int>(type));
        scope.SetResult(false);
        return false;
    }
    scope.SetResult(true);
    return true;
}

CStdStr Registry::ReadStringValue(const CStdStr& root, const CStdStr& key,
                                  const CStdStr& valueName) {
    RegistryValue value;
    if (!ReadValue(root, key, valueName, value)) {
        return CStdStr();
    }
    return ValueText(value);
}

CStdStr Registry::ValueText(const RegistryValue& value) {
    switch (value.type) {
    case os::regtype::Dword:
        return CStdStr::Formatted("%u", value.number);
    case os::regtype::Binary:
        return CStdStr(reinterpret_cast<const char*>(value.bytes.data()), value.bytes.size());
    case os::regtype::MultiString:
        return value.strings.empty() ? CStdStr() : value.strings.front();
    default:
        return value.text;
    }
}

bool Registry::WriteValue(const CStdStr& root, const CStdStr& key, const CStdStr& valueName,
                          const RegistryValue& value) {
    LogScope scope(kComponent, "Registry::WriteValue", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s,valueName:%s", root.c_str(), key.c_str(),
              valueName.c_str());
    std::vector<std::uint8_t> data;
    switch (value.type) {
    case os::regtype::String:
    case os::regtype::ExpandString:
        data = TextBytes(value.text);
        break;
    case os::regtype::Binary:
        data = value.bytes;
        break;
    case os::regtype::Dword:
        for (int i = 0; i < 4; ++i) {
            data.push_back(static_cast<std::uint8_t>(value.number >> (8 * i)));
        }
        break;
    case os::regtype::MultiString:
        scope.Log(0, "unsupported registry type Reg_Multi_String");
        scope.SetResult(false);
        return false;
    default:
        scope.Log(0, "unsupported registry type %d", static_cast<int>(value.type));
        scope.SetResult(false);
        return false;
    }
    os::HKey handle = 0;
    if (openKey(root, key, os::regaccess::AllAccess, handle) != os::error::Success) {
        scope.Log(kMask, "Creating registry key '%s\\%s'", root.c_str(), key.c_str());
        if (!CreateKey(root, key, true) ||
            openKey(root, key, os::regaccess::AllAccess, handle) != os::error::Success) {
            scope.SetResult(false);
            return false;
        }
    }
    KeyCloser closer(handle);
    os::Error rc = os::RegSetValueEx(handle, valueName, value.type, data);
    if (rc != os::error::Success) {
        scope.Log(0, "Failed:RegSetValueEx rc:%d", static_cast<int>(rc));
        scope.SetResult(false);
        return false;
    }
    scope.SetResult(true);
    return true;
}

bool Registry::DeleteValue(const CStdStr& root, const CStdStr& key, const CStdStr& valueName) {
    LogScope scope(kComponent, "Registry::DeleteValue", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s,valueName:%s", root.c_str(), key.c_str(),
              valueName.c_str());
    os::HKey handle = 0;
    if (openKey(root, key, os::regaccess::AllAccess, handle) != os::error::Success) {
        scope.SetResult(false);
        return false;
    }
    KeyCloser closer(handle);
    scope.Log(kMask, "Call RegDeleteValue for value :%s", valueName.c_str());
    os::Error rc = os::RegDeleteValue(handle, valueName);
    if (rc != os::error::Success) {
        scope.Log(0, "Failed:RegDeleteValue rc:%d", static_cast<int>(rc));
        scope.SetResult(false);
        return false;
    }
    scope.SetResult(true);
    return true;
}

bool Registry::DeleteEmptyKey(const CStdStr& root, const CStdStr& key, bool traverseDown) {
    LogScope scope(kComponent, "Registry::DeleteEmptyKey", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s,traverseDown:%d", root.c_str(), key.c_str(),
              traverseDown ? 1 : 0);
    os::HKey rootKey = getRootKey(root);
    CStdStr current = key;
    bool first = true;
    while (!current.empty() && rootKey != 0) {
        if (!IsKeyEmpty(root, current)) {
            break;
        }
        os::Error rc = os::RegDeleteKey(rootKey, current);
        if (rc != os::error::Success) {
            scope.Log(0, "Failed:RegDeleteKey rc:%d", static_cast<int>(rc));
            break;
        }
        if (first) {
            scope.SetResult(true);
            first = false;
        }
        if (!traverseDown) {
            return true;
        }
        current = ParentKey(current);
    }
    if (first) {
        scope.SetResult(false);
        return false;
    }
    return true;
}

bool Registry::Enumerate(const CStdStr& root, const CStdStr& key, CStdStringList& subkeys,
                         CStdStringList& values) {
    LogScope scope(kComponent, "Registry::Enumerate", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s", root.c_str(), key.c_str());
    os::HKey handle = 0;
    if (os::Error rc = openKey(root, key, os::regaccess::Read, handle)) {
        scope.Log(0, "could not open %s\\%s (error %d)", root.c_str(), key.c_str(),
                  static_cast<int>(rc));
        scope.SetResult(false);
        return false;
    }
    KeyCloser closer(handle);
    for (std::uint32_t index = 0;; ++index) {
        std::string name;
        os::Error rc = os::RegEnumKeyEx(handle, index, name);
        if (rc == os::error::NoMoreItems) {
            break;
        }
        if (rc != os::error::Success) {
            scope.Log(0, "could not enumerate on key %s\\%s (error %d)", root.c_str(), key.c_str(),
                      static_cast<int>(rc));
            scope.SetResult(false);
            return false;
        }
        subkeys.Add(name);
    }
    for (std::uint32_t index = 0;; ++index) {
        std::string name;
        os::Error rc = os::RegEnumValue(handle, index, name);
        if (rc == os::error::NoMoreItems) {
            break;
        }
        if (rc != os::error::Success) {
            scope.Log(0, "could not enumerate on key %s\\%s (error %d)", root.c_str(), key.c_str(),
                      static_cast<int>(rc));
            scope.SetResult(false);
            return false;
        }
        values.Add(name);
    }
    scope.SetResult(true);
    return true;
}

bool Registry::CleanEmptyKeys(const CStdStr& root, const CStdStr& key) {
    return cleanHelper(root, key, false);
}

bool Registry::WipeOutKey(const CStdStr& root, const CStdStr& key) {
    return cleanHelper(root, key, true);
}

bool Registry::cleanHelper(const CStdStr& root, const CStdStr& key, bool killAll) {
    LogScope scope(kComponent, "Registry::cleanHelper", kMask);
    scope.Log(kMask, "Params: root:%s,key:%s,killAll:%d", root.c_str(), key.c_str(),
              killAll ? 1 : 0);
    CStdStringList children;
    {
        os::HKey handle = 0;
        if (openKey(root, key, os::regaccess::AllAccess, handle) != os::error::Success) {
            scope.SetResult(false);
            return false;
        }
        KeyCloser closer(handle);
        os::RegKeyInfo info;
        if (os::Error rc = os::RegQueryInfoKey(handle, info)) {
            scope.Log(0, "Failed:RegQueryInfoKey %s\\%s (rc:%d)", root.c_str(), key.c_str(),
                      static_cast<int>(rc));
            scope.SetResult(false);
            return false;
        }
        for (std::uint32_t index = 0; index < info.subKeys; ++index) {
            std::string name;
            if (os::Error rc = os::RegEnumKeyEx(handle, index, name)) {
                scope.Log(0, "Failed: RegEnumKeyEx key %s\\%s (rc:%d)", root.c_str(), key.c_str(),
                          static_cast<int>(rc));
                break;
            }
            children.Add(name);
        }
    }
    for (const CStdStr& child : children) {
        cleanHelper(root, key + "\\" + child, killAll);
    }
    bool result = true;
    if (killAll) {
        os::Error rc = os::RegDeleteKey(getRootKey(root), key);
        scope.Log(kMask, "RegDeleteKey on %s retCode=%d", key.c_str(), static_cast<int>(rc));
        if (rc != os::error::Success) {
            scope.Log(0, "Failed:RegDeleteKey of %s\\%s failed (error %d)", root.c_str(),
                      key.c_str(), static_cast<int>(rc));
            result = false;
        }
    } else {
        result = DeleteEmptyKey(root, key, false);
    }
    scope.SetResult(result);
    return result;
}
