// Runs installcli as a user runs it, for the end-to-end tests, each in a folder of its own.
#pragma once

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace e2e {

struct CliResult {
    int code = -1;
    std::string output; // standard output and standard error together
};

// `arguments` go through the shell: quote what holds backslashes or blanks.
inline CliResult RunInstallcli(const std::string& arguments) {
    std::string command = std::string(INSTALLCLI_PATH) + " " + arguments + " 2>&1";
    CliResult result;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return result;
    }
    std::array<char, 4096> buffer;
    size_t count = 0;
    while ((count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
        result.output.append(buffer.data(), count);
    }
    int status = ::pclose(pipe);
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

inline std::string ReadHostFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline void WriteHostFile(const std::filesystem::path& path, const std::string& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// A folder under the temporary folder that goes with the object.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& name)
            : mPath(std::filesystem::temp_directory_path() /
                    (name + "-" + std::to_string(::getpid()))) {
        std::filesystem::remove_all(mPath);
        std::filesystem::create_directories(mPath);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Path() const { return mPath; }

private:
    std::filesystem::path mPath;
};

} // namespace e2e
