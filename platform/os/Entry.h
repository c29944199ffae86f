// The engine's steps at the load and unload of its library. The platform's entry point of the
// library (DllMain, or the loader's constructor and destructor) calls them.
#pragma once

#include "os/OsTypes.h"

void EngineAttach(os::Module instance);
void EngineDetach();
