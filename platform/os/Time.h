// Time group of the platform seam.
#pragma once

#include "os/OsTypes.h"

namespace os {

std::uint32_t GetTickCount();
void GetLocalTime(SystemTime& time);
void Sleep(std::uint32_t milliseconds);
// SystemTimeToFileTime: the fields as a file time, without a change of zone; 87
// (ERROR_INVALID_PARAMETER) for a field out of its range. The day of the week is not read.
Error SystemTimeToFileTime(const SystemTime& time, FileTime& fileTime);

} // namespace os
