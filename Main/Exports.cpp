// The 28 exports. A functions take the caller's text as it is; W functions convert their text
// through the ANSI code page in both directions. Each export that touches the system runs inside
// an ExportFrame.
#include "EngineExports.h"

#include "EngineApi.h"
#include "ExportFrame.h"
#include "core/IpcTransfer.h"
#include "core/RebootAlert.h"
#include "os/Locale.h"
#include "system/DebugLog.h"
#include "system/DebugLogger.h"

#include <cstring>
#include <string_view>

namespace {

bool IsResourceNumber(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer) <= 0xFFFF;
}

CStdStr Narrow(const char* text) {
    return CStdStr(text);
}

CStdStr Narrow(const EngineWChar* text) {
    if (IsResourceNumber(text)) {
        return CStdStr();
    }
    std::u16string_view view(reinterpret_cast<const char16_t*>(text));
    return CStdStr(os::WideCharToMultiByte(os::codepage::Ansi, view));
}

std::u16string Widen(const CStdStr& text) {
    return os::MultiByteToWideChar(os::codepage::Ansi, text);
}

// Copies `text` with its terminator when it fits strictly below `size`.
bool Fits(const CStdStr& text, std::uint32_t size) {
    return text.size() < size;
}

void Store(const CStdStr& text, char* out) {
    if (out != nullptr) {
        std::memcpy(out, text.c_str(), text.size() + 1);
    }
}

bool Fits(const std::u16string& text, std::uint32_t size) {
    return text.size() < size;
}

void Store(const std::u16string& text, EngineWChar* out) {
    if (out != nullptr) {
        std::memcpy(out, text.c_str(), (text.size() + 1) * sizeof(char16_t));
    }
}

template <typename Char, typename Text>
int OneString(int result, const Text& text, Char* out, std::uint32_t size) {
    if (!Fits(text, size)) {
        return ENG_BUFFER_TOO_SMALL;
    }
    Store(text, out);
    return result;
}

template <typename Char, typename Text>
int TwoStrings(int result, const Text& first, Char* out1, std::uint32_t size1, const Text& second,
               Char* out2, std::uint32_t size2) {
    if (!Fits(first, size1) || !Fits(second, size2)) {
        return ENG_BUFFER_TOO_SMALL;
    }
    Store(first, out1);
    Store(second, out2);
    return result;
}

} // namespace

extern "C" {

const char* GetDllVersion(void) {
    return EngineApi::kDllVersion;
}

int SetupDebugLog(const char* path) {
    ExportFrame frame;
    if (frame.Ready()) {
        DebugLog::Instance().SetFile(Narrow(path));
        DebugLogger::Instance().EnableLog();
    }
    return 1;
}

void SetTestMode(bool testMode) {
    DebugLog::Instance().SetTestMode(testMode);
}

void SetLanguageA(const char* language) {
    ExportFrame frame;
    if (frame.Ready()) {
        EngineApi::SetLanguage(Narrow(language));
    }
}

void SetLanguageW(const EngineWChar* language) {
    ExportFrame frame;
    if (frame.Ready()) {
        EngineApi::SetLanguage(Narrow(language));
    }
}

void SetWorkingDirA(const char* dir) {
    EngineApi::SetWorkingDir(Narrow(dir));
}

void SetWorkingDirW(const EngineWChar* dir) {
    ExportFrame frame;
    if (frame.Ready()) {
        EngineApi::SetWorkingDir(Narrow(dir));
    }
}

bool ValidateScriptA(const char* script) {
    ExportFrame frame;
    return frame.Ready() && EngineApi::ValidateScript(Narrow(script));
}

bool ValidateScriptW(const EngineWChar* script) {
    ExportFrame frame;
    return frame.Ready() && EngineApi::ValidateScript(Narrow(script));
}

int GetAvailableModelsA(const char* script, char* out, std::uint32_t size) {
    ExportFrame frame;
    if (!frame.Ready()) {
        return ENG_NOT_INSTALLABLE;
    }
    CStdStr text;
    int result = EngineApi::GetAvailableModelsCommon(Narrow(script), text);
    return OneString(result, text, out, size);
}

int GetAvailableModelsW(const EngineWChar* script, EngineWChar* out, std::uint32_t size) {
    ExportFrame frame;
    if (!frame.Ready()) {
        return ENG_NOT_INSTALLABLE;
    }
    CStdStr text;
    int result = EngineApi::GetAvailableModelsCommon(Narrow(script), text);
    return OneString(result, Widen(text), out, size);
}

int GetModelInfoA(const char* model, std::uint32_t osKind, std::uint32_t* nwLevel, char* out1,
                  std::uint32_t size1, char* out2, std::uint32_t size2) {
    ExportFrame frame;
    if (!frame.Ready()) {
        return ENG_NOT_INSTALLABLE;
    }
    CStdStr first;
    CStdStr second;
    int result = EngineApi::GetModelInfoCommon(Narrow(model), osKind, nwLevel, first, second);
    return TwoStrings(result, first, out1, size1, second, out2, size2);
}

int GetModelInfoW(const EngineWChar* model, std::uint32_t osKind, std::uint32_t* nwLevel,
                  EngineWChar* out1, std::uint32_t size1, EngineWChar* out2, std::uint32_t size2) {
    ExportFrame frame;
    if (!frame.Ready()) {
        return ENG_NOT_INSTALLABLE;
    }
    CStdStr first;
    CStdStr second;
    int result = EngineApi::GetModelInfoCommon(Narrow(model), osKind, nwLevel, first, second);
    return TwoStrings(result, Widen(first), out1, size1, Widen(second), out2, size2);
}

int GetComponentStatusA(const char* component, char* out, std::uint32_t size) {
    ExportFrame frame;
    if (!frame.Ready()) {
        return ENG_NOT_INSTALLABLE;
    }
    CStdStr text;
    int result = EngineApi::GetComponentStatusCommon(Narrow(component), text);
    return OneString(result, text, out, size);
}

int GetComponentStatusW(const EngineWChar* component, EngineWChar* out, std::uint32_t size) {
    ExportFrame frame;
    if (!frame.Ready()) {
        return ENG_NOT_INSTALLABLE;
    }
    CStdStr text;
    int result = EngineApi::GetComponentStatusCommon(Narrow(component), text);
    return OneString(result, Widen(text), out, size);
}

bool DoInstallA(const char* script, const char* variables, const char* outFile) {
    ExportFrame frame;
    return frame.Ready() &&
           EngineApi::DoInstallCommon(Narrow(script), Narrow(variables), Narrow(outFile));
}

bool DoInstallW(const EngineWChar* script, const EngineWChar* variables,
                const EngineWChar* outFile) {
    ExportFrame frame;
    return frame.Ready() &&
           EngineApi::DoInstallCommon(Narrow(script), Narrow(variables), Narrow(outFile));
}

bool DoUninstallA(const char* script, const char* variables, const char* outFile) {
    ExportFrame frame;
    return frame.Ready() &&
           EngineApi::DoUninstallCommon(Narrow(script), Narrow(variables), Narrow(outFile));
}

bool DoUninstallW(const EngineWChar* script, const EngineWChar* variables,
                  const EngineWChar* outFile) {
    ExportFrame frame;
    return frame.Ready() &&
           EngineApi::DoUninstallCommon(Narrow(script), Narrow(variables), Narrow(outFile));
}

void GetTotalUnits(std::uint32_t* units) {
    if (IpcTransfer* transfer = EngineApi::GetIpcTransfer()) {
        transfer->GetTotalUnits(units);
    }
}

void GetCurrentUnits(std::uint32_t* units) {
    if (IpcTransfer* transfer = EngineApi::GetIpcTransfer()) {
        transfer->GetCurrentUnits(units);
    }
}

void GetCurrentTitle(char* title) {
    if (IpcTransfer* transfer = EngineApi::GetIpcTransfer()) {
        transfer->GetCurrentTitle(title);
    }
}

unsigned char GetRebootAlert(void) {
    return RebootAlert::Get();
}

int GetErrorCode(void) {
    return 0;
}

CStdStringList* FindIPAddresses(void) {
    ExportFrame frame;
    return EngineApi::FindIPAddresses();
}

CStdStringList* FindBusyPrinterApps(const char* key) {
    ExportFrame frame;
    if (!frame.Ready()) {
        return key == nullptr ? nullptr : new CStdStringList();
    }
    return EngineApi::FindBusyPrinterApps(key);
}

CStdStringList* ListInstalledDrivers(void) {
    ExportFrame frame;
    return frame.Ready() ? EngineApi::ListInstalledDrivers() : new CStdStringList();
}

CStdStringList* ListPrinters(void) {
    ExportFrame frame;
    return frame.Ready() ? EngineApi::ListPrinters() : new CStdStringList();
}

} // extern "C"
