// The lock that processes sharing one simulated machine take before they read or write its state
// files: an exclusive flock on machine.lock in the machine's folder. The kernel drops it when the
// holder dies, so a killed process never leaves the machine locked. It nests within a process:
// an inner lock of a folder that the process already holds costs nothing.
#pragma once

#include <string>

namespace sim {

class MachineLock {
public:
    static constexpr const char* kFileName = "machine.lock";

    explicit MachineLock(const std::string& machineDirectory);
    ~MachineLock();
    MachineLock(const MachineLock&) = delete;
    MachineLock& operator=(const MachineLock&) = delete;

    // False when the lock file could not be opened (a read-only folder): the state is then used
    // without the lock, as the only thing that can happen to such a machine is reading.
    bool Held() const { return mHeld; }

private:
    std::string mDirectory;
    bool mHeld = false;
};

} // namespace sim
