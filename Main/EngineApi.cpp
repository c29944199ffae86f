#include "EngineApi.h"

#include "core/Engine.h"
#include "core/IpcTransfer.h"
#include "core/ProductIni.h"
#include "core/RunState.h"
#include "os/Crash.h"
#include "os/Network.h"
#include "os/Processes.h"
#include "os/Spooler.h"
#include "script/OSInfo.h"
#include "script/SystemPath.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"
#include "uninstall/UninstallLog.h"

IpcTransfer* EngineApi::sIpcTransfer = nullptr;
os::Module EngineApi::sModuleHandle = nullptr;
CStdStr EngineApi::sWorkingDir;
CStdStringList EngineApi::sBusyApps;
CStdStringList EngineApi::sIpAddresses;

namespace {

const char* const kComponent = "Engine";
constexpr std::uint32_t kMask = logmask::EngineApi;

} // namespace

void EngineApi::Attach(os::Module instance) {
    sIpcTransfer = new IpcTransfer();
    sModuleHandle = instance;
}

void EngineApi::Detach() {
    delete sIpcTransfer;
    sIpcTransfer = nullptr;
    sModuleHandle = nullptr;
}

void EngineApi::SetWorkingDir(const CStdStr& dir) {
    sWorkingDir = dir;
    SystemPath::SetApplicationDirectoryOverride(dir);
}

bool EngineApi::DoInstallCommon(const CStdStr& script, const CStdStr& variables,
                                const CStdStr& outFile) {
    LogScope scope(kComponent, "DoInstallCommon", kMask);
    os::SetUnhandledExceptionFilter(CreateMiniDump);
    Engine engine(sModuleHandle, script, variables, outFile);
    if (!engine.Initialize(false)) {
        scope.Log(0, "Engine.Initialize failed. Aborting install.");
        return false;
    }
    engine.SetIpcTransfer(sIpcTransfer);
    RunState::SetReporter(sIpcTransfer);
    bool result = engine.Install();
    UninstallLog::Global().Commit();
    return result;
}

bool EngineApi::DoUninstallCommon(const CStdStr& script, const CStdStr& variables,
                                  const CStdStr& outFile) {
    LogScope scope(kComponent, "DoUninstallCommon", kMask);
    scope.Log(kMask, "Script file: %s", script.c_str());
    scope.Log(kMask, "variables  : %s", variables.c_str());
    bool result = false;
    {
        Engine engine(sModuleHandle, script, variables, outFile);
        if (engine.Initialize(true)) {
            engine.SetIpcTransfer(sIpcTransfer);
            RunState::SetReporter(sIpcTransfer);
            result = engine.Uninstall();
            UninstallLog::Global().Commit();
        } else {
            scope.Log(0, "Engine.Initialize failed. Aborting uninstall.");
        }
        // While the engine lives: its end closes the run's log.
        scope.Log(kMask, "outFile    : %s", outFile.c_str());
    }
    scope.SetResult(result ? 1 : 0);
    return result;
}

bool EngineApi::ValidateScript(const CStdStr& script) {
    Engine engine(sModuleHandle, "", "", "");
    return engine.IsScriptValid(script, false);
}

void EngineApi::SetLanguage(const CStdStr& language) {
    Engine::InitializeNLS(language);
}

int EngineApi::GetComponentStatusCommon(const CStdStr& component, CStdStr& out) {
    Engine engine(sModuleHandle, "", "", "");
    bool installable = engine.IsComponentInstallable(component);
    out = engine.GetComponentStatusText();
    return installable ? 3 : 2;
}

int EngineApi::GetAvailableModelsCommon(const CStdStr& script, CStdStr& out) {
    Engine engine(sModuleHandle, "", "", "");
    CStdStringList models;
    out.clear();
    if (!engine.GetAllModels(script, models) || models.empty()) {
        return 2;
    }
    for (const CStdStr& model : models) {
        out += model + "\n";
    }
    return 0;
}

int EngineApi::GetModelInfoCommon(const CStdStr& model, std::uint32_t osKind,
                                  std::uint32_t* nwLevel, CStdStr& out1, CStdStr& out2) {
    LogScope scope(kComponent, "GetModelInfoCommon", kMask);
    scope.SetResult(0);
    OSInfo os;
    if (osKind == 1) {
        os = OSInfo::ForCode(OSInfo::Win98);
    } else if (osKind == 2) {
        os = OSInfo::ForCode(OSInfo::NT4);
    } else if (osKind == 3) {
        os = OSInfo::ForCode(OSInfo::Win2000);
    }
    Engine engine(sModuleHandle, "", "", "");
    int level = 0;
    CStdStringList drivers;
    if (!engine.GetModelStats(model, os, level, drivers, out2)) {
        scope.SetResult(2);
        scope.Log(0, "returning ...ENG_NOT_INSTALLABLE");
        return 2;
    }
    out1.clear();
    for (const CStdStr& driver : drivers) {
        out1 += driver + "\n";
    }
    if (nwLevel != nullptr) {
        *nwLevel = static_cast<std::uint32_t>(level);
    }
    return 0;
}

CStdStringList* EngineApi::FindIPAddresses() {
    sIpAddresses.clear();
    std::vector<os::Ipv4Address> addresses;
    os::gethostbyname("", addresses);
    for (const os::Ipv4Address& address : addresses) {
        sIpAddresses.Add(
                CStdStr::Formatted("%u.%u.%u.%u", address[0], address[1], address[2], address[3]));
    }
    return &sIpAddresses;
}

CStdStringList* EngineApi::FindBusyPrinterApps(const char* key) {
    sBusyApps.clear();
    if (key == nullptr) {
        return nullptr;
    }
    PathObject product;
    product.SetDirectory(SystemPath(SystemPath::ApplicationFolder).GetDirectory());
    product.AppendDirectory("config");
    product.SetName("product.ini");
    CStdStr watchList;
    if (ProductIni::LoadProductIni(product.GetFullPath())) {
        ProductIni::GetProductValue("GENERAL", key, watchList);
    }
    watchList.MakeUpper();

    if (!os::CanLoadLibrary("kernel32")) {
        return nullptr;
    }
    for (const char* function : {"CreateToolhelp32Snapshot", "Process32First", "Process32Next"}) {
        if (!os::HasProcedure("kernel32", function)) {
            ENGINE_LOG(0, "Failed to load %s", function);
            return nullptr;
        }
    }
    std::vector<os::ProcessEntry> processes;
    if (os::CreateToolhelp32Snapshot(processes) != os::error::Success) {
        ENGINE_LOG(0, "Failed to retrieve process snapshot");
    } else {
        bool fullPaths = OSInfo().Is9x();
        std::vector<os::WindowEntry> windows;
        bool windowsRead = false;
        for (const os::ProcessEntry& process : processes) {
            CStdStr name = process.exeFile;
            if (fullPaths) {
                name = name.Mid(name.ReverseFind('\\') + 1);
            }
            name.MakeUpper();
            if (name.empty() || watchList.Find(name.c_str()) < 0) {
                continue;
            }
            if (!os::CanLoadLibrary("USER32.DLL")) {
                break;
            }
            if (!windowsRead) {
                os::EnumWindows(windows);
                windowsRead = true;
            }
            // Only the first visible, titled window of each such process counts.
            for (const os::WindowEntry& window : windows) {
                if (window.processId == process.processId && window.visible &&
                    !window.title.empty()) {
                    sBusyApps.Add(window.title);
                    break;
                }
            }
        }
    }
    return new CStdStringList(sBusyApps);
}

CStdStringList* EngineApi::ListInstalledDrivers() {
    auto* list = new CStdStringList();
    std::vector<os::DriverInfo> drivers;
    if (os::EnumPrinterDrivers("", drivers) == os::error::Success) {
        for (const os::DriverInfo& driver : drivers) {
            list->Add(driver.name);
        }
    }
    return list;
}

CStdStringList* EngineApi::ListPrinters() {
    auto* list = new CStdStringList();
    std::vector<os::PrinterInfo> printers;
    if (os::EnumPrinters(printers) == os::error::Success) {
        for (const os::PrinterInfo& printer : printers) {
            list->Add(printer.name + "|" + printer.portName + "|" + printer.driverName);
        }
    }
    return list;
}

long EngineApi::CreateMiniDump(void* exceptionPointers) {
    PathObject dump;
    dump.SetDirectory(SystemPath(SystemPath::TempFolder).GetDirectory());
    dump.SetName("engine.dmp");
    CStdStr path = dump.GetFullPath();
    ENGINE_LOG(logmask::General, "Engine.dll has crashed with dmp file %s", path.c_str());
    os::DumpStep failed = os::DumpStep::WriteDump;
    os::Error rc = os::MiniDumpWriteDump(path, exceptionPointers, failed);
    if (rc != os::error::Success) {
        switch (failed) {
        case os::DumpStep::CreateFile:
            ENGINE_LOG(0, "CreateFile '%s' failed with error id %d", path.c_str(),
                       static_cast<int>(rc));
            break;
        case os::DumpStep::LoadLibrary:
            ENGINE_LOG(0, "LoadLibrary 'DBGHELP.DLL' failed with error id %d",
                       static_cast<int>(rc));
            break;
        default:
            ENGINE_LOG(0, "MiniDumpWriteDump failed with error id %d", static_cast<int>(rc));
            break;
        }
    }
    return 0;
}
