#include "support/TestMachine.h"

#include <gtest/gtest.h>

#include "os/Files.h"
#include "os/Process.h"

#include <atomic>
#include <cstdio>
#include <stdexcept>
#include <vector>

#ifndef _WIN32
#include "sim/MachinePreset.h"
#include "sim/SimMachine.h"

#include <filesystem>
#include <unistd.h>
#endif

namespace {
std::atomic<int> gCounter{0};
} // namespace

TestMachine::TestMachine(const std::string& preset, int servicePack) {
    int number = ++gCounter;
#ifndef _WIN32
    namespace fs = std::filesystem;
    std::string base = (fs::temp_directory_path() /
                        ("enginetest-" + std::to_string(::getpid()) + "-" + std::to_string(number)))
                               .string();
    fs::remove_all(base);
    fs::create_directories(base);
    mHostDir = base + "/machine";
    std::string why;
    if (!sim::MachinePreset::Create(mHostDir, preset, servicePack, why) ||
        !sim::SimMachine::Activate(mHostDir, why)) {
        throw std::runtime_error("cannot make a test machine: " + why);
    }
    mScratch = "C:\\Scratch";
    os::CreateDirectory(mScratch);
#else
    (void)preset;
    (void)servicePack;
    std::string temp;
    os::GetTempPath(temp);
    mScratch = temp + "enginetest-" + std::to_string(os::GetCurrentProcessId()) + "-" +
               std::to_string(number);
    removeTree(mScratch);
    os::CreateDirectory(mScratch);
#endif
}

TestMachine::~TestMachine() {
#ifndef _WIN32
    sim::SimMachine::Release();
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(mHostDir).parent_path(), ignored);
#else
    removeTree(mScratch);
#endif
}

void TestMachine::removeTree(const std::string& path) {
    std::vector<os::FindData> entries;
    if (os::FindFiles(path + "\\*", entries) == os::error::Success) {
        for (const os::FindData& entry : entries) {
            if (entry.fileName == "." || entry.fileName == "..") {
                continue;
            }
            std::string child = path + "\\" + entry.fileName;
            if ((entry.attributes & os::attr::Directory) != 0) {
                removeTree(child);
            } else {
                os::SetFileAttributes(child, os::attr::Normal);
                os::DeleteFile(child);
            }
        }
    }
    os::RemoveDirectory(path);
}

std::string TestMachine::MakeOtherMachine(const std::string& name, const std::string& preset) {
#ifndef _WIN32
    std::string dir = std::filesystem::path(mHostDir).parent_path().string() + "/" + name;
    std::string why;
    sim::MachinePreset::Options options;
    options.computerName = name;
    if (!sim::MachinePreset::Create(dir, preset, options, why)) {
        throw std::runtime_error("cannot make a machine: " + why);
    }
    return dir;
#else
    (void)name;
    (void)preset;
    return std::string();
#endif
}

bool TestMachine::WriteFile(const std::string& path, const std::string& bytes) {
    std::FILE* file = nullptr;
    if (os::fsopen(path, "wb", os::Share::DenyNone, file) != os::error::Success) {
        return false;
    }
    bool ok = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    std::fclose(file);
    return ok;
}

std::string TestMachine::WriteScratch(const std::string& name, const std::string& bytes) const {
    std::string path = Path(name);
    EXPECT_TRUE(WriteFile(path, bytes)) << "cannot write " << path;
    return path;
}

std::string TestMachine::ReadFile(const std::string& path) {
    std::FILE* file = nullptr;
    if (os::fsopen(path, "rb", os::Share::DenyNone, file) != os::error::Success) {
        return std::string();
    }
    std::string bytes;
    char buffer[4096];
    size_t count = 0;
    while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        bytes.append(buffer, count);
    }
    std::fclose(file);
    return bytes;
}

bool TestMachine::Exists(const std::string& path) {
    std::uint32_t attributes = 0;
    return os::GetFileAttributes(path, attributes) == os::error::Success;
}
