// The shell folders group of the seam: the folders that the machine's registry names.
#include "os/Shell.h"

#include "sim/MachineCall.h"

namespace os {

using sim::MachineCall;

namespace {

struct FolderSource {
    int csidl;
    bool common; // HKLM's "Common ..." value rather than the user's
    const char* value;
};

const FolderSource kFolders[] = {
        {csidl::Desktop, false, "Desktop"},
        {csidl::DesktopDirectory, false, "Desktop"},
        {csidl::Programs, false, "Programs"},
        {csidl::Personal, false, "Personal"},
        {csidl::SendTo, false, "SendTo"},
        {csidl::StartMenu, false, "Start Menu"},
        {csidl::Fonts, false, "Fonts"},
        {csidl::AppData, false, "AppData"},
        {csidl::LocalAppData, false, "Local AppData"},
        {csidl::CommonStartMenu, true, "Common Start Menu"},
        {csidl::CommonPrograms, true, "Common Programs"},
        {csidl::CommonDesktopDirectory, true, "Common Desktop"},
        {csidl::CommonAppData, true, "Common AppData"},
};

const char* const kShellFolders =
        "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

} // namespace

Error SHGetSpecialFolderPath(int folder, std::string& path) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    for (const FolderSource& source : kFolders) {
        if (source.csidl != folder) {
            continue;
        }
        std::string hive = source.common ? "HKEY_LOCAL_MACHINE" : machine->CurrentUserKey();
        const sim::RegKey* key = machine->Registry().Find(hive + "\\" + kShellFolders);
        const sim::RegValue* value = key == nullptr ? nullptr : key->Value(source.value);
        if (value == nullptr) {
            break;
        }
        path = machine->ToAnsi(value->AsText());
        return error::Success;
    }
    return error::FileNotFound;
}

} // namespace os
