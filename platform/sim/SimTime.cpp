// The time group of the seam: the simulated machine runs on its own clock (see SimClock.h).
#include "os/Time.h"

#include "sim/SimClock.h"

#include <chrono>

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

Error SystemTimeToFileTime(const SystemTime& time, FileTime& fileTime) {
    using namespace std::chrono;
    year_month_day date{year{time.year}, month{time.month}, day{time.day}};
    if (time.year < 1601 || time.year > 30827 || !date.ok() || time.hour > 23 ||
        time.minute > 59 || time.second > 59 || time.milliseconds > 999) {
        return error::InvalidParameter;
    }
    // Days from 1601-01-01, the start of file times, to the date.
    constexpr sys_days kEpoch = year{1601} / January / 1;
    auto days = static_cast<std::uint64_t>((sys_days{date} - kEpoch).count());
    std::uint64_t millis = ((days * 24 + time.hour) * 60 + time.minute) * 60000ULL +
                           time.second * 1000ULL + time.milliseconds;
    fileTime.ticks = millis * 10000ULL;
    return error::Success;
}

} // namespace os
