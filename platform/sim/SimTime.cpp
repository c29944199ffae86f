// The time group of the seam: the simulated machine runs on the host's clock.
#include "os/Time.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace os {

std::uint32_t GetTickCount() {
    auto since = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(
            std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

void GetLocalTime(SystemTime& time) {
    auto now = std::chrono::system_clock::now();
    std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    auto millis =
            std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()) % 1000;
    std::tm local{};
    ::localtime_r(&seconds, &local);
    time.year = static_cast<std::uint16_t>(local.tm_year + 1900);
    time.month = static_cast<std::uint16_t>(local.tm_mon + 1);
    time.dayOfWeek = static_cast<std::uint16_t>(local.tm_wday);
    time.day = static_cast<std::uint16_t>(local.tm_mday);
    time.hour = static_cast<std::uint16_t>(local.tm_hour);
    time.minute = static_cast<std::uint16_t>(local.tm_min);
    time.second = static_cast<std::uint16_t>(local.tm_sec);
    time.milliseconds = static_cast<std::uint16_t>(millis.count());
}

void Sleep(std::uint32_t milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
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
