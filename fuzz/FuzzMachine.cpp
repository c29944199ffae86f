#include "FuzzMachine.h"

#include "sim/MachinePreset.h"
#include "sim/SimMachine.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace fuzz {
namespace {

std::string gHostDir;

void removeMachine() {
    sim::SimMachine::Release();
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(gHostDir).parent_path(), ignored);
}

} // namespace

void EnsureMachine() {
    if (!gHostDir.empty()) {
        return;
    }
    std::filesystem::path base =
            std::filesystem::temp_directory_path() / ("enginefuzz-" + std::to_string(::getpid()));
    std::filesystem::create_directories(base);
    gHostDir = (base / "machine").string();
    std::string why;
    if (!sim::MachinePreset::Create(gHostDir, "win7-x64", -1, why) ||
        !sim::SimMachine::Activate(gHostDir, why)) {
        std::fprintf(stderr, "cannot make the fuzz machine: %s\n", why.c_str());
        std::abort();
    }
    std::filesystem::create_directories(gHostDir + "/drive_c/Fuzz/Config");
    std::atexit(removeMachine);
}

std::string WriteMachineFile(const std::string& name, const std::string& bytes) {
    EnsureMachine();
    std::string hostName = name;
    std::replace(hostName.begin(), hostName.end(), '\\', '/');
    std::ofstream(gHostDir + "/drive_c/Fuzz/" + hostName, std::ios::binary | std::ios::trunc)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return "C:\\Fuzz\\" + name;
}

} // namespace fuzz
