// Attach and detach of the library: the one progress reporter of the process and the module
// handle.
#include "EngineApi.h"
#include "os/Entry.h"

void EngineAttach(os::Module instance) {
    EngineApi::Attach(instance);
}

void EngineDetach() {
    EngineApi::Detach();
}
