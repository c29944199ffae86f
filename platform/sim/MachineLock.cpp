#include "sim/MachineLock.h"

#include <cerrno>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <sys/file.h>
#include <unistd.h>

namespace sim {

namespace {

struct Holding {
    int fd = -1;
    int depth = 0;
};

// Threads of one process take turns through this gate, so that the table needs no other lock and
// a thread may nest locks of the same folder.
std::recursive_mutex& Gate() {
    static std::recursive_mutex gate;
    return gate;
}

std::map<std::string, Holding>& Holdings() {
    static std::map<std::string, Holding> holdings;
    return holdings;
}

} // namespace

MachineLock::MachineLock(const std::string& machineDirectory) : mDirectory(machineDirectory) {
    Gate().lock();
    Holding& holding = Holdings()[mDirectory];
    if (holding.depth > 0) {
        ++holding.depth;
        mHeld = true;
        return;
    }
    std::string path = mDirectory + "/" + kFileName;
    int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        Holdings().erase(mDirectory);
        return;
    }
    while (::flock(fd, LOCK_EX) != 0) {
        if (errno != EINTR) {
            ::close(fd);
            Holdings().erase(mDirectory);
            return;
        }
    }
    holding.fd = fd;
    holding.depth = 1;
    mHeld = true;
}

MachineLock::~MachineLock() {
    if (mHeld) {
        auto found = Holdings().find(mDirectory);
        if (found != Holdings().end() && --found->second.depth == 0) {
            ::flock(found->second.fd, LOCK_UN);
            ::close(found->second.fd);
            Holdings().erase(found);
        }
    }
    Gate().unlock();
}

} // namespace sim
