// The frame of the platform seam that every export call opens and closes.
#pragma once

#include <string>

namespace os {

// Whether the platform can serve calls at all. On a real system it always can; a simulated
// machine whose folder is missing or unreadable cannot, and `why` then says so.
bool PlatformReady(std::string& why);

// The end of an export call: state that the platform keeps in memory is made durable here at
// the latest.
void EndOfCall();

} // namespace os
