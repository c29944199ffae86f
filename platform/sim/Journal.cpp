#include "sim/Journal.h"

#include <chrono>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace sim {

void Journal::Append(const std::string& machineDir, const std::string& kind,
                     const std::string& text) {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    std::string line = std::string(stamp) + "\t" + kind + "\t" + text + "\n";
    int fd = ::open((machineDir + "/journal.log").c_str(),
                    O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) {
        return;
    }
    ssize_t written = ::write(fd, line.data(), line.size());
    (void)written;
    ::close(fd);
}

} // namespace sim
