// Sockets and network group of the platform seam.
#pragma once

#include "os/OsTypes.h"

#include <array>
#include <vector>

namespace os {

using Ipv4Address = std::array<std::uint8_t, 4>;

// WSAStartup 2.2, gethostbyname and WSACleanup: the addresses of a host, in the order the
// resolver gives them; an empty name is this computer.
Error gethostbyname(const std::string& name, std::vector<Ipv4Address>& addresses);

} // namespace os
