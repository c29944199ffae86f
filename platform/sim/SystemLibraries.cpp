#include "sim/SystemLibraries.h"

#include "sim/MachineIdentity.h"
#include "sim/Text.h"

namespace sim {

namespace {

std::string BaseName(const std::string& library) {
    std::string name = LowerAscii(library);
    auto slash = name.find_last_of("\\/");
    if (slash != std::string::npos) {
        name = name.substr(slash + 1);
    }
    if (name.find('.') == std::string::npos) {
        name += ".dll";
    }
    return name;
}

// The first system of each family that carries a library: 0 for all, 1 from Windows 98,
// 4 from NT 4, 5 from Windows 2000 (9x excluded), 6 from Vista.
int FirstVersion(const std::string& library) {
    if (library == "psapi.dll" || library == "userenv.dll") {
        return 4;
    }
    if (library == "newdev.dll" || library == "wtsapi32.dll" || library == "dbghelp.dll") {
        return 5;
    }
    if (library == "cfgmgr32.dll" || library == "setupapi.dll") {
        return 1;
    }
    return 0;
}

} // namespace

bool SystemLibraries::HasLibrary(const MachineIdentity& id, const std::string& library) {
    std::string name = BaseName(library);
    switch (FirstVersion(name)) {
    case 1:
        return id.IsNT() ? id.majorVersion >= 5 : id.minorVersion >= 10;
    case 4:
        return id.IsNT();
    case 5:
        return id.IsNT() && id.majorVersion >= 5;
    default:
        return true;
    }
}

bool SystemLibraries::HasFunction(const MachineIdentity& id, const std::string& library,
                                  const std::string& function) {
    if (!HasLibrary(id, library)) {
        return false;
    }
    std::string name = BaseName(library);
    // NT 4 lacks the tool help functions that Windows 9x and Windows 2000 have.
    if (name == "kernel32.dll" && (function == "CreateToolhelp32Snapshot" ||
                                   function == "Process32First" || function == "Process32Next")) {
        return !(id.IsNT() && id.majorVersion < 5);
    }
    if (name == "advapi32.dll" && function == "SetEntriesInAclA") {
        return id.IsNT();
    }
    // The Ex form of the compression query came with Windows 2000; the setupapi.dll of
    // Windows 98 and Me has only the older one.
    if (name == "setupapi.dll" && function == "SetupGetFileCompressionInfoExA") {
        return id.IsNT();
    }
    return true;
}

} // namespace sim
