// The simulated machine a harness works on: a fresh Windows 7 x64 in a temporary folder, made
// once per process, with a scratch folder C:\Fuzz for the files of each input.
#pragma once

#include <string>

namespace fuzz {

// Makes and activates the machine at the first call; aborts when it cannot.
void EnsureMachine();
// Writes `bytes` as C:\Fuzz\<name> of the machine (a name may go
// into a subfolder: "Config\\product.ini") and gives that
// Windows path.
std::string WriteMachineFile(const std::string& name, const std::string& bytes);

} // namespace fuzz
