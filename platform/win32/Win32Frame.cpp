// The call frame of the seam on a real Windows system: always ready, nothing held back.
#include "os/Machine.h"

namespace os {

bool PlatformReady(std::string&) {
    return true;
}

void EndOfCall() {}

} // namespace os
