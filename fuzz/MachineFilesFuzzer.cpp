// Feeds the readers of the simulated machine's binary and text formats: the first byte chooses
// the reader, the rest is the file.
#include "sim/Cabinet.h"
#include "sim/IniText.h"
#include "sim/LzExpand.h"
#include "sim/RegistryStore.h"
#include "sim/VersionResource.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

void readRegistry(const std::string& bytes) {
    sim::RegistryStore store;
    std::string error;
    if (store.Parse(bytes, "HKEY_USERS\\S-1-5-21-1", error)) {
        // What was read must write out and read back.
        sim::RegistryStore again;
        if (!again.Parse(store.Format(), "HKEY_USERS\\S-1-5-21-1", error)) {
            __builtin_trap();
        }
    }
}

void readIniText(const std::string& bytes) {
    sim::IniText ini;
    ini.Parse(bytes);
    sim::IniText again;
    again.Parse(ini.Format());
}

void expandLz(const std::string& bytes) {
    std::string expanded;
    sim::LzExpand::Expand(bytes, expanded);
}

void readCabinet(const std::string& bytes) {
    sim::Cabinet cabinet;
    if (!cabinet.Read(bytes)) {
        return;
    }
    for (const sim::Cabinet::File& file : cabinet.Files()) {
        std::string data;
        cabinet.Extract(file, data);
    }
}

void readVersion(const std::string& bytes) {
    std::vector<std::uint8_t> block;
    if (sim::VersionResource::FromImage(bytes, block) != os::error::Success) {
        return;
    }
    sim::VersionResource::Value value;
    for (const char* path :
         {"\\", "\\VarFileInfo\\Translation", "\\StringFileInfo\\040904b0\\FileVersion",
          "\\StringFileInfo\\040904E4\\ProductName"}) {
        sim::VersionResource::Query(block, path, value);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 5) {
    case 0:
        readRegistry(bytes);
        break;
    case 1:
        readIniText(bytes);
        break;
    case 2:
        expandLz(bytes);
        break;
    case 3:
        readCabinet(bytes);
        break;
    default:
        readVersion(bytes);
        break;
    }
    return 0;
}
