// Time group of the platform seam.
#pragma once

#include "os/OsTypes.h"

namespace os {

std::uint32_t GetTickCount();
void GetLocalTime(SystemTime& time);
void Sleep(std::uint32_t milliseconds);

} // namespace os
