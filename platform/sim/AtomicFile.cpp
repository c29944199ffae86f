#include "sim/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace sim {

bool WriteFileAtomically(const std::string& hostPath, const std::string& content,
                         std::string& error) {
    std::string temp = hostPath + ".tmp" + std::to_string(::getpid());
    int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) {
        error = "cannot write " + temp + ": " + std::strerror(errno);
        return false;
    }
    size_t written = 0;
    while (written < content.size()) {
        ssize_t n = ::write(fd, content.data() + written, content.size() - written);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            error = "cannot write " + temp + ": " + std::strerror(errno);
            ::close(fd);
            ::unlink(temp.c_str());
            return false;
        }
        written += static_cast<size_t>(n);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        error = "cannot flush " + temp + ": " + std::strerror(errno);
        ::unlink(temp.c_str());
        return false;
    }
    if (::rename(temp.c_str(), hostPath.c_str()) != 0) {
        error = "cannot replace " + hostPath + ": " + std::strerror(errno);
        ::unlink(temp.c_str());
        return false;
    }
    return true;
}

bool ReadWholeFile(const std::string& hostPath, std::string& content) {
    std::ifstream in(hostPath, std::ios::binary);
    if (!in) {
        return false;
    }
    std::ostringstream text;
    text << in.rdbuf();
    content = text.str();
    return !in.bad();
}

} // namespace sim
