// The registry group of the seam, over the registries of simulated machines.
#include "os/RegistryApi.h"

#include "sim/MachineCall.h"
#include "sim/Text.h"

#include <algorithm>

namespace os {

using sim::MachineCall;
using sim::OpenRegKey;
using sim::RegKey;
using sim::SimMachine;

namespace {

constexpr Error kBadPathname = 161;
const char* const kDefaultSecurity = "D:(A;CI;KA;;;BA)(A;CI;KA;;;SY)(A;CI;KR;;;BU)";
const char* const kClasses = "SOFTWARE\\Classes";

bool IsPredefined(HKey key) {
    return key == hkey::ClassesRoot || key == hkey::CurrentUser || key == hkey::LocalMachine ||
           key == hkey::Users || key == hkey::CurrentConfig;
}

std::string JoinSub(const std::string& base, const std::string& sub) {
    if (base.empty()) {
        return sub;
    }
    return sub.empty() ? base : base + "\\" + sub;
}

std::string CleanSubKey(const std::string& sub) {
    std::string clean = sub;
    while (!clean.empty() && clean.back() == '\\') {
        clean.pop_back();
    }
    return clean;
}

// Where a view of the registry lives in the store of its machine.
std::string StorePath(const OpenRegKey& key, bool forCreate = false) {
    SimMachine& machine = *key.machine;
    switch (key.root) {
    case hkey::LocalMachine:
        return JoinSub("HKEY_LOCAL_MACHINE", key.subPath);
    case hkey::Users:
        return JoinSub("HKEY_USERS", key.subPath);
    case hkey::CurrentUser:
        return JoinSub(machine.CurrentUserKey(), key.subPath);
    case hkey::CurrentConfig:
        return JoinSub("HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current",
                       key.subPath);
    default: {
        // HKCR merges the user's classes over the machine's from Windows 2000 on: a key that
        // the user has is the user's, any other the machine's.
        std::string machinePath =
                JoinSub(std::string("HKEY_LOCAL_MACHINE\\") + kClasses, key.subPath);
        if (!machine.Identity().IsNT() || machine.Identity().majorVersion < 5) {
            return machinePath;
        }
        std::string userPath =
                JoinSub(machine.CurrentUserKey() + "\\Software\\Classes", key.subPath);
        if (machine.Registry().Find(userPath) != nullptr) {
            return userPath;
        }
        if (forCreate && !key.subPath.empty()) {
            auto cut = key.subPath.rfind('\\');
            std::string parentUser =
                    JoinSub(machine.CurrentUserKey() + "\\Software\\Classes",
                            cut == std::string::npos ? "" : key.subPath.substr(0, cut));
            if (cut != std::string::npos && machine.Registry().Find(parentUser) != nullptr) {
                return userPath;
            }
        }
        return machinePath;
    }
    }
}

// The open key of a handle: a predefined root on the current machine, or one from the table.
Error Lookup(MachineCall& call, HKey key, OpenRegKey& out) {
    if (!call) {
        return error::NotReady;
    }
    if (IsPredefined(key)) {
        out = OpenRegKey{&*call, key, "", regaccess::AllAccess};
        return error::Success;
    }
    auto found = call->OpenKeys().find(key);
    if (found == call->OpenKeys().end()) {
        return error::InvalidHandle;
    }
    out = found->second;
    return error::Success;
}

HKey AddHandle(MachineCall& call, const OpenRegKey& key) {
    static HKey next = 0x1000;
    next += 4;
    call->OpenKeys()[next] = key;
    return next;
}

bool WantsWrite(std::uint32_t access) {
    return (access & regaccess::AnyWrite) != 0;
}

// Resolves a handle to its key in the store; a key deleted under an open handle is KeyDeleted.
Error KeyOf(MachineCall& call, HKey handle, OpenRegKey& open, RegKey*& key) {
    if (Error error = Lookup(call, handle, open)) {
        return error;
    }
    key = open.machine->Registry().Find(StorePath(open));
    return key == nullptr ? error::KeyDeleted : error::Success;
}

std::vector<std::uint8_t> ToAnsiData(SimMachine& machine, const sim::RegValue& value) {
    if (value.type != regtype::String && value.type != regtype::ExpandString &&
        value.type != regtype::MultiString) {
        return value.data;
    }
    std::u16string units;
    for (size_t i = 0; i + 1 < value.data.size(); i += 2) {
        units += static_cast<char16_t>(value.data[i] | (value.data[i + 1] << 8));
    }
    std::string text = machine.Ansi().FromUnicode(units);
    return std::vector<std::uint8_t>(text.begin(), text.end());
}

std::vector<std::uint8_t> FromAnsiData(SimMachine& machine, std::uint32_t type,
                                       const std::vector<std::uint8_t>& data) {
    if (type != regtype::String && type != regtype::ExpandString && type != regtype::MultiString) {
        return data;
    }
    std::u16string units = machine.Ansi().ToUnicode(std::string(data.begin(), data.end()));
    std::vector<std::uint8_t> bytes;
    for (char16_t unit : units) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

std::vector<std::string> ChildNames(SimMachine& machine, const OpenRegKey& open,
                                    const RegKey& key) {
    std::vector<std::string> names;
    for (const RegKey* child : key.Children()) {
        names.push_back(child->Name());
    }
    if (open.root == hkey::ClassesRoot) {
        // The merged view lists the machine's classes and the user's together.
        std::string machinePath =
                JoinSub(std::string("HKEY_LOCAL_MACHINE\\") + kClasses, open.subPath);
        std::string userPath =
                JoinSub(machine.CurrentUserKey() + "\\Software\\Classes", open.subPath);
        for (const std::string& path : {machinePath, userPath}) {
            const RegKey* other = machine.Registry().Find(path);
            if (other == nullptr || other == &key) {
                continue;
            }
            for (const RegKey* child : other->Children()) {
                bool present = false;
                for (const std::string& name : names) {
                    present = present || sim::NamesEqual(name, child->Name());
                }
                if (!present) {
                    names.push_back(child->Name());
                }
            }
        }
        std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
            return sim::FoldName(a) < sim::FoldName(b);
        });
    }
    return names;
}

std::string EffectiveSecurity(SimMachine& machine, std::string path) {
    for (;;) {
        if (const RegKey* key = machine.Registry().Find(path);
            key != nullptr && !key->Security().empty()) {
            return key->Security();
        }
        auto cut = path.rfind('\\');
        if (cut == std::string::npos) {
            return kDefaultSecurity;
        }
        path.resize(cut);
    }
}

} // namespace

Error RegConnectRegistry(const std::string& computerName, HKey root, HKey& result) {
    MachineCall call;
    if (!call) {
        return error::NotReady;
    }
    if (root != hkey::LocalMachine && root != hkey::Users) {
        return error::InvalidHandle;
    }
    Error error = error::Success;
    SimMachine* target = call->Remote(call->ToUtf8(computerName), error);
    if (target == nullptr) {
        return error;
    }
    result = AddHandle(call, OpenRegKey{target, root, "", regaccess::AllAccess});
    return error::Success;
}

Error RegOpenKeyEx(HKey key, const std::string& subKey, std::uint32_t access, HKey& result) {
    MachineCall call;
    OpenRegKey base;
    if (Error error = Lookup(call, key, base)) {
        return error;
    }
    if (!subKey.empty() && subKey[0] == '\\') {
        return kBadPathname;
    }
    OpenRegKey opened{base.machine, base.root,
                      JoinSub(base.subPath, CleanSubKey(call->ToUtf8(subKey))), access};
    std::string path = StorePath(opened);
    if (base.machine->Registry().Find(path) == nullptr) {
        return error::FileNotFound;
    }
    if (WantsWrite(access) && base.machine->Faults().DeniesRegistryWrite(path)) {
        return error::AccessDenied;
    }
    result = AddHandle(call, opened);
    return error::Success;
}

Error RegCreateKeyEx(HKey key, const std::string& subKey, std::uint32_t access,
                     const std::string& security, HKey& result, bool* created) {
    MachineCall call;
    OpenRegKey base;
    if (Error error = Lookup(call, key, base)) {
        return error;
    }
    if (!subKey.empty() && subKey[0] == '\\') {
        return kBadPathname;
    }
    OpenRegKey opened{base.machine, base.root,
                      JoinSub(base.subPath, CleanSubKey(call->ToUtf8(subKey))), access};
    std::string path = StorePath(opened, true);
    sim::RegistryStore& store = base.machine->Registry();
    RegKey* existing = store.Find(path);
    if (existing == nullptr || WantsWrite(access)) {
        if (base.machine->Faults().DeniesRegistryWrite(path)) {
            return error::AccessDenied;
        }
    }
    if (existing == nullptr) {
        RegKey* made = store.Create(path);
        if (made == nullptr) {
            return error::InvalidParameter;
        }
        if (!security.empty() && base.machine->Identity().IsNT()) {
            made->SetSecurity(call->ToUtf8(security));
        }
    }
    if (created != nullptr) {
        *created = existing == nullptr;
    }
    result = AddHandle(call, opened);
    return error::Success;
}

Error RegCloseKey(HKey key) {
    MachineCall call;
    if (!call) {
        return error::NotReady;
    }
    if (IsPredefined(key)) {
        return error::Success;
    }
    return call->OpenKeys().erase(key) != 0 ? error::Success : error::InvalidHandle;
}

Error RegQueryValueEx(HKey key, const std::string& name, std::uint32_t& type,
                      std::vector<std::uint8_t>& data) {
    MachineCall call;
    OpenRegKey open;
    RegKey* found = nullptr;
    if (Error error = KeyOf(call, key, open, found)) {
        return error;
    }
    if ((open.access & regaccess::QueryValue) == 0) {
        return error::AccessDenied;
    }
    const sim::RegValue* value = found->Value(call->ToUtf8(name));
    if (value == nullptr) {
        return error::FileNotFound;
    }
    type = value->type;
    data = ToAnsiData(*open.machine, *value);
    return error::Success;
}

Error RegSetValueEx(HKey key, const std::string& name, std::uint32_t type,
                    const std::vector<std::uint8_t>& data) {
    MachineCall call;
    OpenRegKey open;
    RegKey* found = nullptr;
    if (Error error = KeyOf(call, key, open, found)) {
        return error;
    }
    if ((open.access & regaccess::SetValue) == 0) {
        return error::AccessDenied;
    }
    sim::RegValue value;
    value.name = call->ToUtf8(name);
    value.type = type;
    value.data = FromAnsiData(*open.machine, type, data);
    found->SetValue(std::move(value));
    open.machine->Registry().SetDirty(true);
    return error::Success;
}

Error RegDeleteValue(HKey key, const std::string& name) {
    MachineCall call;
    OpenRegKey open;
    RegKey* found = nullptr;
    if (Error error = KeyOf(call, key, open, found)) {
        return error;
    }
    if ((open.access & regaccess::SetValue) == 0) {
        return error::AccessDenied;
    }
    if (!found->RemoveValue(call->ToUtf8(name))) {
        return error::FileNotFound;
    }
    open.machine->Registry().SetDirty(true);
    return error::Success;
}

Error RegDeleteKey(HKey key, const std::string& subKey) {
    MachineCall call;
    OpenRegKey base;
    if (Error error = Lookup(call, key, base)) {
        return error;
    }
    OpenRegKey target{base.machine, base.root,
                      JoinSub(base.subPath, CleanSubKey(call->ToUtf8(subKey))), 0};
    if (target.subPath.empty()) {
        return error::AccessDenied; // a root cannot go
    }
    std::string path = StorePath(target);
    sim::RegistryStore& store = base.machine->Registry();
    RegKey* found = store.Find(path);
    if (found == nullptr) {
        return error::FileNotFound;
    }
    if (base.machine->Faults().DeniesRegistryWrite(path)) {
        return error::AccessDenied;
    }
    // Windows NT refuses a key that has subkeys; Windows 9x takes the whole tree.
    if (found->ChildCount() > 0 && base.machine->Identity().IsNT()) {
        return error::AccessDenied;
    }
    store.Remove(path);
    return error::Success;
}

Error RegEnumKeyEx(HKey key, std::uint32_t index, std::string& name) {
    MachineCall call;
    OpenRegKey open;
    RegKey* found = nullptr;
    if (Error error = KeyOf(call, key, open, found)) {
        return error;
    }
    if ((open.access & regaccess::EnumerateSubKeys) == 0) {
        return error::AccessDenied;
    }
    std::vector<std::string> names = ChildNames(*open.machine, open, *found);
    if (index >= names.size()) {
        return error::NoMoreItems;
    }
    name = call->ToAnsi(names[index]);
    return error::Success;
}

Error RegEnumValue(HKey key, std::uint32_t index, std::string& name) {
    MachineCall call;
    OpenRegKey open;
    RegKey* found = nullptr;
    if (Error error = KeyOf(call, key, open, found)) {
        return error;
    }
    if ((open.access & regaccess::QueryValue) == 0) {
        return error::AccessDenied;
    }
    if (index >= found->Values().size()) {
        return error::NoMoreItems;
    }
    name = call->ToAnsi(found->Values()[index].name);
    return error::Success;
}

Error RegQueryInfoKey(HKey key, RegKeyInfo& info) {
    MachineCall call;
    OpenRegKey open;
    RegKey* found = nullptr;
    if (Error error = KeyOf(call, key, open, found)) {
        return error;
    }
    info = RegKeyInfo();
    std::vector<std::string> names = ChildNames(*open.machine, open, *found);
    info.subKeys = static_cast<std::uint32_t>(names.size());
    for (const std::string& child : names) {
        info.maxSubKeyLength = std::max<std::uint32_t>(
                info.maxSubKeyLength, static_cast<std::uint32_t>(sim::Utf8ToUtf16(child).size()));
    }
    info.values = static_cast<std::uint32_t>(found->Values().size());
    for (const sim::RegValue& value : found->Values()) {
        info.maxValueNameLength = std::max<std::uint32_t>(
                info.maxValueNameLength,
                static_cast<std::uint32_t>(sim::Utf8ToUtf16(value.name).size()));
        info.maxValueLength = std::max<std::uint32_t>(
                info.maxValueLength, static_cast<std::uint32_t>(value.data.size()));
    }
    return error::Success;
}

Error RegGetKeySecurity(HKey key, std::string& security) {
    MachineCall call;
    OpenRegKey open;
    RegKey* found = nullptr;
    if (Error error = KeyOf(call, key, open, found)) {
        return error;
    }
    if (!open.machine->Identity().IsNT()) {
        return error::NotSupported; // Windows 9x keeps no security on keys
    }
    security = call->ToAnsi(EffectiveSecurity(*open.machine, StorePath(open)));
    return error::Success;
}

Error BuildInheritedSecurity(const std::string& parentSecurity, std::string& security) {
    auto dacl = parentSecurity.find("D:");
    if (dacl == std::string::npos) {
        return error::InvalidParameter;
    }
    // Owner and group are left to the system; the new descriptor carries the access list only.
    security = parentSecurity.substr(dacl);
    auto next = security.find_first_of("SOG", 2);
    while (next != std::string::npos &&
           (next + 1 >= security.size() || security[next + 1] != ':')) {
        next = security.find_first_of("SOG", next + 1);
    }
    if (next != std::string::npos) {
        security.resize(next);
    }
    return error::Success;
}

} // namespace os
