// The call frame of the seam over the simulated machine.
#include "os/Machine.h"

#include "sim/SimMachine.h"

namespace os {

bool PlatformReady(std::string& why) {
    std::lock_guard<std::recursive_mutex> guard(sim::SimMachine::Lock());
    return sim::SimMachine::Refresh(why) != nullptr;
}

void EndOfCall() {
    std::lock_guard<std::recursive_mutex> guard(sim::SimMachine::Lock());
    std::string why;
    if (sim::SimMachine* machine = sim::SimMachine::Current(why)) {
        machine->Commit();
    }
}

} // namespace os
