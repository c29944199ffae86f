// The process-wide flag that a reboot is needed. Code that learns so sets it; only the
// uninstaller's self-removal by batch file clears it. Nothing clears it between two runs.
#pragma once

#include <atomic>

class RebootAlert {
public:
    static void Set() { sFlag.store(1); }
    static void Clear() { sFlag.store(0); }
    static unsigned char Get() { return sFlag.load(); }

private:
    static inline std::atomic<unsigned char> sFlag{0};
};
