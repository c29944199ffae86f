// The common routines behind the exports, over narrow strings, and the process-wide values
// that the exports share.
#pragma once

#include "core/CStdStringList.h"
#include "os/OsTypes.h"

#include <cstdint>

class IpcTransfer;

class EngineApi {
public:
    static constexpr const char* kDllVersion = "14.0.12.0";

    static void Attach(os::Module instance);
    static void Detach();

    static IpcTransfer* GetIpcTransfer() { return sIpcTransfer; }
    static os::Module GetModuleHandle() { return sModuleHandle; }
    static void SetWorkingDir(const CStdStr& dir);
    static const CStdStr& GetWorkingDir() { return sWorkingDir; }

    static bool DoInstallCommon(const CStdStr& script, const CStdStr& variables,
                                const CStdStr& outFile);
    static bool DoUninstallCommon(const CStdStr& script, const CStdStr& variables,
                                  const CStdStr& outFile);
    static bool ValidateScript(const CStdStr& script);
    static void SetLanguage(const CStdStr& language);
    // Result codes 0, 2, 3 and 4 of the query exports.
    static int GetComponentStatusCommon(const CStdStr& component, CStdStr& out);
    static int GetAvailableModelsCommon(const CStdStr& script, CStdStr& out);
    static int GetModelInfoCommon(const CStdStr& model, std::uint32_t osKind,
                                  std::uint32_t* nwLevel, CStdStr& out1, CStdStr& out2);

    static CStdStringList* FindIPAddresses();
    static CStdStringList* FindBusyPrinterApps(const char* key);
    static CStdStringList* ListInstalledDrivers();
    static CStdStringList* ListPrinters();

    // The unhandled exception filter: a dump of the process in the temporary folder.
    static long CreateMiniDump(void* exceptionPointers);

private:
    static IpcTransfer* sIpcTransfer;
    static os::Module sModuleHandle;
    static CStdStr sWorkingDir;
    static CStdStringList sBusyApps;
    static CStdStringList sIpAddresses;
};
