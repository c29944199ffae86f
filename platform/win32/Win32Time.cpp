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

Error SystemTimeToFileTime(const SystemTime& time, FileTime& fileTime) {
    SYSTEMTIME fields{};
    fields.wYear = time.year;
    fields.wMonth = time.month;
    fields.wDay = time.day;
    fields.wHour = time.hour;
    fields.wMinute = time.minute;
    fields.wSecond = time.second;
    fields.wMilliseconds = time.milliseconds;
    FILETIME result;
    if (!::SystemTimeToFileTime(&fields, &result)) {
        return ::GetLastError();
    }
    fileTime.ticks = (static_cast<std::uint64_t>(result.dwHighDateTime) << 32) | result.dwLowDateTime;
    return error::Success;
}

} // namespace os
