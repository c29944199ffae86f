// The clock of the simulated machine. By default the machine keeps its own time: the tick count
// and the local time move only when a wait of the process (Sleep, and every wait built on it)
// moves them, and a wait returns at once. A 10-second wait costs nothing, and one run gives the
// same ticks, and so the same log, on every host. A machine whose machine.ini says
//
//   [Clock]
//   Mode=real
//
// runs on the host's clock instead. Other keys of [Clock]: Boot, the tick count when the process
// starts (milliseconds since the machine's start, 600000 by default); LocalTime, the local time
// when the process starts (YYYY-MM-DD HH:MM:SS; the host's local time at the first use when
// missing).
//
// The clock belongs to the process, not to one machine: it never goes backwards when the
// machine is read anew or another one is made current.
#pragma once

#include "os/OsTypes.h"

#include <cstdint>
#include <mutex>
#include <string>

namespace sim {

class IniText;

class SimClock {
public:
    static constexpr std::uint32_t kDefaultBoot = 600000;

    static SimClock& Get();

    // Takes the settings of a machine's [Clock] section; keeps the time already elapsed.
    void Configure(const IniText& machineIni);
    // Back to a fresh process's simulated clock (for tests).
    void Reset();

    bool IsSimulated() const;
    std::uint32_t TickCount();
    void LocalTime(os::SystemTime& time);
    void Sleep(std::uint32_t milliseconds);
    // Milliseconds of simulated time since the process started.
    std::uint64_t Elapsed() const;

    // Parses "YYYY-MM-DD HH:MM:SS"; false when the text is not such a time.
    static bool ParseLocalTime(const std::string& text, os::SystemTime& time);

private:
    SimClock() = default;
    void startLocalTime();

    mutable std::mutex mLock;
    bool mSimulated = true;
    std::uint32_t mBoot = kDefaultBoot;
    std::uint64_t mElapsed = 0;
    bool mHasStart = false;
    std::int64_t mStartSeconds = 0; // the local time at the start, as seconds of a civil calendar
};

} // namespace sim
