// System libraries that the win32 backend loads at run time, since not every Windows carries
// them (psapi.dll, setupapi.dll) or the backend should not depend on them at load (version.dll,
// lz32.dll). A library is loaded at its first use and stays loaded for the process.
#pragma once

#include "win32/Win32Api.h"

namespace win32 {

// The module of a system library, or null when this system does not have it.
HMODULE LoadSystemLibrary(const char* name);

// A function of a system library, typed; null when the library or the function is missing.
template <typename Function>
Function GetProcedure(const char* library, const char* name) {
    HMODULE module = LoadSystemLibrary(library);
    if (module == nullptr) {
        return nullptr;
    }
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

} // namespace win32
