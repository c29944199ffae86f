// The sockets group of the seam: the addresses that machine.ini gives its machines.
#include "os/Network.h"

#include "sim/MachineCall.h"
#include "sim/Text.h"

#include <cstdio>
#include <sstream>

namespace os {

using sim::MachineCall;

namespace {

constexpr Error kHostNotFound = 11001; // WSAHOST_NOT_FOUND

bool ParseAddress(const std::string& text, Ipv4Address& address) {
    unsigned parts[4];
    char tail = 0;
    if (std::sscanf(text.c_str(), "%u.%u.%u.%u%c", &parts[0], &parts[1], &parts[2], &parts[3],
                    &tail) != 4) {
        return false;
    }
    for (int i = 0; i < 4; ++i) {
        if (parts[i] > 255) {
            return false;
        }
        address[static_cast<size_t>(i)] = static_cast<std::uint8_t>(parts[i]);
    }
    return true;
}

} // namespace

Error gethostbyname(const std::string& name, std::vector<Ipv4Address>& addresses) {
    addresses.clear();
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    Error error = error::Success;
    sim::SimMachine* host =
            name.empty() ? &*machine : machine->Remote(machine->ToUtf8(name), error);
    if (host == nullptr) {
        return kHostNotFound;
    }
    std::istringstream list(host->Identity().ipAddresses);
    std::string item;
    while (std::getline(list, item, ',')) {
        Ipv4Address address{};
        if (ParseAddress(sim::Trim(item), address)) {
            addresses.push_back(address);
        }
    }
    return addresses.empty() ? kHostNotFound : error::Success;
}

} // namespace os
