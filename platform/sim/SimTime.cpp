// The time group of the seam: the simulated machine runs on its own clock (see SimClock.h).
#include "os/Time.h"

#include "sim/SimClock.h"

namespace os {

std::uint32_t GetTickCount() {
    return sim::SimClock::Get().TickCount();
}

void GetLocalTime(SystemTime& time) {
    sim::SimClock::Get().LocalTime(time);
}

void Sleep(std::uint32_t milliseconds) {
    sim::SimClock::Get().Sleep(milliseconds);
}

} // namespace os
