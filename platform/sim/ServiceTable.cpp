#include "sim/ServiceTable.h"

#include "sim/IniText.h"
#include "sim/Text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace sim {

namespace {

const char* StateName(std::uint32_t state) {
    switch (state) {
    case 2:
        return "StartPending";
    case 3:
        return "StopPending";
    case 4:
        return "Running";
    default:
        return "Stopped";
    }
}

std::uint32_t StateOf(const std::string& text) {
    for (std::uint32_t state : {2u, 3u, 4u}) {
        if (EqualsNoCase(text, StateName(state))) {
            return state;
        }
    }
    return 1;
}

std::string Hex(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", value);
    return text;
}

std::vector<std::string> SplitList(const std::string& text) {
    std::vector<std::string> items;
    size_t start = 0;
    while (start <= text.size()) {
        size_t comma = text.find(',', start);
        std::string item = Trim(text.substr(start, comma == std::string::npos ? std::string::npos
                                                                               : comma - start));
        if (!item.empty()) {
            items.push_back(item);
        }
        if (comma == std::string::npos) {
            break;
        }
        start = comma + 1;
    }
    return items;
}

} // namespace

void ServiceTable::Read(const IniText& ini) {
    services.clear();
    for (const IniText::Section& section : ini.Sections()) {
        SimService service;
        service.name = section.name;
        auto text = [&](const char* key, const std::string& fallback) {
            return ini.GetOr(section.name, key, fallback);
        };
        auto number = [&](const char* key, std::uint32_t fallback) {
            return static_cast<std::uint32_t>(ini.GetNumber(section.name, key, fallback));
        };
        service.displayName = text("DisplayName", section.name);
        service.binaryPath = text("BinaryPath", "");
        service.type = number("Type", service.type);
        service.startType = number("StartType", service.startType);
        service.errorControl = number("ErrorControl", service.errorControl);
        service.account = text("Account", service.account);
        service.description = text("Description", "");
        service.dependencies = SplitList(text("Dependencies", ""));
        service.state = StateOf(text("State", "Stopped"));
        service.pendingSince =
                static_cast<std::uint64_t>(ini.GetNumber(section.name, "PendingSince", 0));
        service.startTime = number("StartTime", service.startTime);
        service.waitHint = number("WaitHint", service.waitHint);
        service.deletePending = number("DeletePending", 0) != 0;
        services.push_back(service);
    }
}

void ServiceTable::Write(IniText& ini) const {
    for (const SimService& service : services) {
        auto set = [&](const char* key, const std::string& value) {
            ini.Set(service.name, key, value);
        };
        set("DisplayName", service.displayName);
        set("BinaryPath", service.binaryPath);
        set("Type", Hex(service.type));
        set("StartType", std::to_string(service.startType));
        set("ErrorControl", std::to_string(service.errorControl));
        set("Account", service.account);
        if (!service.description.empty()) {
            set("Description", service.description);
        }
        std::string dependencies;
        for (const std::string& name : service.dependencies) {
            dependencies += (dependencies.empty() ? "" : ",") + name;
        }
        set("Dependencies", dependencies);
        set("State", StateName(service.state));
        if (service.IsPending()) {
            set("PendingSince", std::to_string(service.pendingSince));
        }
        if (service.startTime != SimService().startTime) {
            set("StartTime", std::to_string(service.startTime));
        }
        if (service.waitHint != SimService().waitHint) {
            set("WaitHint", std::to_string(service.waitHint));
        }
        if (service.deletePending) {
            set("DeletePending", "1");
        }
    }
}

SimService* ServiceTable::Find(const std::string& name) {
    for (SimService& service : services) {
        if (EqualsNoCase(service.name, name)) {
            return &service;
        }
    }
    return nullptr;
}

const SimService* ServiceTable::Find(const std::string& name) const {
    return const_cast<ServiceTable*>(this)->Find(name);
}

void ServiceTable::Remove(const std::string& name) {
    services.erase(std::remove_if(services.begin(), services.end(),
                                  [&](const SimService& s) { return EqualsNoCase(s.name, name); }),
                   services.end());
}

} // namespace sim
