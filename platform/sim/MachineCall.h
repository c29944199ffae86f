// The frame of one call of the seam into the simulated machine: it holds the machines' lock for
// the call and gives the current machine, or nothing when none can be loaded.
#pragma once

#include "sim/SimMachine.h"

namespace sim {

class MachineCall {
public:
    MachineCall() : mGuard(SimMachine::Lock()) {
        std::string why;
        mMachine = SimMachine::Current(why);
    }
    MachineCall(const MachineCall&) = delete;
    MachineCall& operator=(const MachineCall&) = delete;

    explicit operator bool() const { return mMachine != nullptr; }
    SimMachine* operator->() const { return mMachine; }
    SimMachine& operator*() const { return *mMachine; }

private:
    std::lock_guard<std::recursive_mutex> mGuard;
    SimMachine* mMachine = nullptr;
};

} // namespace sim
