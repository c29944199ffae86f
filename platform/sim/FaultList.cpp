#include "sim/FaultList.h"

#include "sim/IniText.h"
#include "sim/Text.h"
#include "sim/WindowsPath.h"

namespace sim {

namespace {

std::string StorePath(const std::string& path, const std::string& currentUserKey) {
    auto cut = path.find('\\');
    std::string root = path.substr(0, cut);
    std::string rest = cut == std::string::npos ? "" : path.substr(cut);
    if (EqualsNoCase(root, "HKLM") || EqualsNoCase(root, "HKEY_LOCAL_MACHINE")) {
        return "HKEY_LOCAL_MACHINE" + rest;
    }
    if (EqualsNoCase(root, "HKU") || EqualsNoCase(root, "HKEY_USERS")) {
        return "HKEY_USERS" + rest;
    }
    if (EqualsNoCase(root, "HKCU") || EqualsNoCase(root, "HKEY_CURRENT_USER")) {
        return currentUserKey + rest;
    }
    if (EqualsNoCase(root, "HKCR") || EqualsNoCase(root, "HKEY_CLASSES_ROOT")) {
        return "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes" + rest;
    }
    return path;
}

FileLock ParseLock(const std::string& text) {
    if (EqualsNoCase(text, "lock") || text == "33") {
        return FileLock::Lock;
    }
    if (EqualsNoCase(text, "image")) {
        return FileLock::Image;
    }
    return FileLock::Sharing;
}

std::string NormalFilePath(const std::string& path) {
    WindowsPath parsed;
    if (WindowsPath::Parse(path, "C:\\", false, parsed) != 0) {
        return FoldName(path);
    }
    return FoldName(parsed.ToString());
}

} // namespace

void FaultList::Read(const IniText& ini, const std::string& currentUserKey) {
    mDeniedKeys.clear();
    mLockedFiles.clear();
    mServiceFaults.clear();
    if (const IniText::Section* services = ini.FindSection("Services")) {
        for (const IniText::Entry& entry : services->entries) {
            std::string kind = LowerAscii(Trim(entry.value));
            ServiceFault fault = kind == "hang"      ? ServiceFault::Hang
                                 : kind == "nostart" ? ServiceFault::NoStart
                                 : kind == "nostop"  ? ServiceFault::NoStop
                                                     : ServiceFault::None;
            mServiceFaults.emplace_back(LowerAscii(entry.key), fault);
        }
    }
    if (const IniText::Section* registry = ini.FindSection("Registry")) {
        for (const IniText::Entry& entry : registry->entries) {
            if (EqualsNoCase(entry.key, "DenyWrite") && !entry.value.empty()) {
                mDeniedKeys.push_back(FoldName(StorePath(entry.value, currentUserKey)));
            }
        }
    }
    if (const IniText::Section* files = ini.FindSection("Files")) {
        for (const IniText::Entry& entry : files->entries) {
            mLockedFiles.emplace_back(NormalFilePath(entry.key), ParseLock(entry.value));
        }
    }
}

bool FaultList::DeniesRegistryWrite(const std::string& keyPath) const {
    std::string folded = FoldName(keyPath);
    for (const std::string& denied : mDeniedKeys) {
        if (folded == denied || folded.rfind(denied + "\\", 0) == 0) {
            return true;
        }
    }
    return false;
}

ServiceFault FaultList::FaultOfService(const std::string& name) const {
    std::string key = LowerAscii(name);
    for (const auto& [service, fault] : mServiceFaults) {
        if (service == key) {
            return fault;
        }
    }
    return ServiceFault::None;
}

} // namespace sim
