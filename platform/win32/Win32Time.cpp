// The time group of the seam, forwarded to the Win32 API.
#include "win32/Win32Api.h"

#include "os/Time.h"

namespace os {

std::uint32_t GetTickCount() {
    return ::GetTickCount();
}

void GetLocalTime(SystemTime& time) {
    SYSTEMTIME local;
    ::GetLocalTime(&local);
    time.year = local.wYear;
    time.month = local.wMonth;
    time.dayOfWeek = local.wDayOfWeek;
    time.day = local.wDay;
    time.hour = local.wHour;
    time.minute = local.wMinute;
    time.second = local.wSecond;
    time.milliseconds = local.wMilliseconds;
}

void Sleep(std::uint32_t milliseconds) {
    ::Sleep(milliseconds);
}

} // namespace os
