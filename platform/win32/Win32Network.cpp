// The sockets group of the seam, forwarded to Windows Sockets.

#include "win32/Win32Api.h"

#include "os/Network.h"

namespace os {

Error gethostbyname(const std::string& name, std::vector<Ipv4Address>& addresses) {
    addresses.clear();
    WSADATA data;
    if (int rc = ::WSAStartup(MAKEWORD(2, 2), &data)) {
        return static_cast<Error>(rc);
    }
    Error result = error::Success;
    hostent* host = ::gethostbyname(name.empty() ? nullptr : name.c_str());
    if (host == nullptr) {
        result = static_cast<Error>(::WSAGetLastError());
    } else {
        for (char** entry = host->h_addr_list; *entry != nullptr; ++entry) {
            auto* bytes = reinterpret_cast<const unsigned char*>(*entry);
            addresses.push_back({bytes[0], bytes[1], bytes[2], bytes[3]});
        }
    }
    ::WSACleanup();
    return result;
}

} // namespace os
