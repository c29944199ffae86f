#include "BenchMachine.h"

#include "os/Files.h"
#include "sim/MachinePreset.h"
#include "sim/SimMachine.h"

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <unistd.h>

namespace {
const char* const kScratch = "C:\\Bench";
} // namespace

BenchMachine::BenchMachine() {
    namespace fs = std::filesystem;
    mBase = (fs::temp_directory_path() / ("engine-bench-" + std::to_string(::getpid()))).string();
    fs::remove_all(mBase);
    fs::create_directories(mBase);
    std::string why;
    if (!sim::MachinePreset::Create(mBase + "/machine", "win7-x64", -1, why) ||
        !sim::SimMachine::Activate(mBase + "/machine", why)) {
        throw std::runtime_error("cannot make the benchmark machine: " + why);
    }
    os::CreateDirectory(kScratch);
}

BenchMachine::~BenchMachine() {
    sim::SimMachine::Release();
    std::error_code ignored;
    std::filesystem::remove_all(mBase, ignored);
}

std::string BenchMachine::Path(const std::string& name) {
    return std::string(kScratch) + "\\" + name;
}

bool BenchMachine::WriteFile(const std::string& path, const std::string& bytes) {
    std::FILE* stream = nullptr;
    if (os::fsopen(path, "wb", os::Share::DenyWrite, stream) != os::error::Success) {
        return false;
    }
    bool written = std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
    return std::fclose(stream) == 0 && written;
}

std::string BenchMachine::ReadFile(const std::string& path) {
    std::FILE* stream = nullptr;
    std::string bytes;
    if (os::fsopen(path, "rb", os::Share::DenyNone, stream) != os::error::Success) {
        return bytes;
    }
    char buffer[65536];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, stream)) > 0;) {
        bytes.append(buffer, got);
    }
    std::fclose(stream);
    return bytes;
}

bool BenchMachine::ReplaceFile(const std::string& path, const std::string& bytes) {
    std::string temporary = path + ".tmp";
    return WriteFile(temporary, bytes) &&
           os::MoveFileEx(temporary, path, os::movefile::ReplaceExisting) == os::error::Success;
}
