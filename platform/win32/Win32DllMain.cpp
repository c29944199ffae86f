// The entry point of Engine.dll.
#include "win32/Win32Api.h"

#include "os/Entry.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        EngineAttach(instance);
        break;
    case DLL_PROCESS_DETACH:
        EngineDetach();
        break;
    default:
        break;
    }
    return TRUE;
}
