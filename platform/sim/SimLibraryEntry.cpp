// The entry point of the engine's shared library on the host: the loader runs these at load
// and unload, where Windows would call DllMain.
#include "os/Entry.h"
#include "os/Process.h"

namespace {

__attribute__((constructor)) void OnLoad() {
    EngineAttach(os::GetEngineModule());
}

__attribute__((destructor)) void OnUnload() {
    EngineDetach();
}

} // namespace
