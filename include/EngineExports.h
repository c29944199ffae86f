/* The 28 exported functions of the installation engine.
 *
 * Narrow strings are in the system's ANSI code page. The W functions take UTF-16 text on every
 * build, so that buffer sizes count the same units everywhere. Sizes of W buffers count wide
 * characters. Query results: 0 done, 2 not installable, 3 installable (component status only),
 * 4 buffer too small (nothing written).
 */
#ifndef ENGINE_EXPORTS_H
#define ENGINE_EXPORTS_H

#ifdef __cplusplus
#include <cstdint>
class CStdStringList;
extern "C" {
#else
#include <stdbool.h>
#include <stdint.h>
typedef struct CStdStringList CStdStringList;
#endif

#if defined(_WIN32)
#if defined(ENGINE_BUILDING_LIBRARY)
#define ENGINE_API
#else
#define ENGINE_API __declspec(dllimport)
#endif
typedef wchar_t EngineWChar;
#else
#define ENGINE_API __attribute__((visibility("default")))
#ifdef __cplusplus
typedef char16_t EngineWChar;
#else
typedef uint16_t EngineWChar;
#endif
#endif

enum {
    ENG_OK = 0,
    ENG_NOT_INSTALLABLE = 2,
    ENG_INSTALLABLE = 3,
    ENG_BUFFER_TOO_SMALL = 4,
};

ENGINE_API const char* GetDllVersion(void);
ENGINE_API int SetupDebugLog(const char* path);
ENGINE_API void SetTestMode(bool testMode);
ENGINE_API void SetLanguageA(const char* language);
ENGINE_API void SetLanguageW(const EngineWChar* language);
ENGINE_API void SetWorkingDirA(const char* dir);
ENGINE_API void SetWorkingDirW(const EngineWChar* dir);
ENGINE_API bool ValidateScriptA(const char* script);
ENGINE_API bool ValidateScriptW(const EngineWChar* script);
ENGINE_API int GetAvailableModelsA(const char* script, char* out, uint32_t size);
ENGINE_API int GetAvailableModelsW(const EngineWChar* script, EngineWChar* out, uint32_t size);
ENGINE_API int GetModelInfoA(const char* model, uint32_t osKind, uint32_t* nwLevel, char* out1,
                             uint32_t size1, char* out2, uint32_t size2);
ENGINE_API int GetModelInfoW(const EngineWChar* model, uint32_t osKind, uint32_t* nwLevel,
                             EngineWChar* out1, uint32_t size1, EngineWChar* out2, uint32_t size2);
ENGINE_API int GetComponentStatusA(const char* component, char* out, uint32_t size);
ENGINE_API int GetComponentStatusW(const EngineWChar* component, EngineWChar* out, uint32_t size);
ENGINE_API bool DoInstallA(const char* script, const char* variables, const char* outFile);
ENGINE_API bool DoInstallW(const EngineWChar* script, const EngineWChar* variables,
                           const EngineWChar* outFile);
ENGINE_API bool DoUninstallA(const char* script, const char* variables, const char* outFile);
ENGINE_API bool DoUninstallW(const EngineWChar* script, const EngineWChar* variables,
                             const EngineWChar* outFile);
ENGINE_API void GetTotalUnits(uint32_t* units);
ENGINE_API void GetCurrentUnits(uint32_t* units);
/* `title` must hold 1000 bytes. */
ENGINE_API void GetCurrentTitle(char* title);
ENGINE_API unsigned char GetRebootAlert(void);
ENGINE_API int GetErrorCode(void);
/* The list belongs to the library and changes at the next call. */
ENGINE_API CStdStringList* FindIPAddresses(void);
/* The lists below are new and belong to the caller. */
ENGINE_API CStdStringList* FindBusyPrinterApps(const char* key);
ENGINE_API CStdStringList* ListInstalledDrivers(void);
ENGINE_API CStdStringList* ListPrinters(void);

#ifdef __cplusplus
}
#endif

#endif
