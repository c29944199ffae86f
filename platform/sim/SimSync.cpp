// The synchronisation group of the seam over a simulated machine: a named mutex is an flock on a
// file of the machine's folder (named-objects/), so that processes running on the same machine
// share it and a process that dies lets go of it. Threads of one process take turns in memory
// before the one that gets the mutex takes the file lock.
#include "os/Sync.h"

#include "sim/MachineCall.h"

#include <cerrno>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <condition_variable>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace os {

namespace {

struct NamedMutex {
    std::string path;
    int fd = -1;
    int handles = 0;
    std::thread::id owner;
    int count = 0;
    std::condition_variable released;
};

struct Table {
    std::mutex lock;
    std::map<std::string, std::shared_ptr<NamedMutex>> byPath;
    std::map<std::uintptr_t, std::shared_ptr<NamedMutex>> byHandle;
    std::uintptr_t next = 0x5000;
};

Table& Mutexes() {
    static Table* table = new Table(); // used while the process ends
    return *table;
}

// A file name that stands for the mutex name: letters, digits, '.', '-' and '_' as they are,
// every other byte as %XX.
std::string FileNameOf(const std::string& name) {
    std::string file;
    for (unsigned char c : name) {
        if (std::isalnum(c) || c == '.' || c == '-' || c == '_') {
            file += static_cast<char>(c);
        } else {
            char escaped[4];
            std::snprintf(escaped, sizeof escaped, "%%%02X", c);
            file += escaped;
        }
    }
    return file.empty() ? "%" : file;
}

std::shared_ptr<NamedMutex> Find(MutexHandle handle) {
    Table& table = Mutexes();
    auto found = table.byHandle.find(handle.value);
    return found == table.byHandle.end() ? nullptr : found->second;
}

} // namespace

Error CreateMutex(const std::string& name, MutexHandle& handle) {
    std::string folder;
    {
        sim::MachineCall machine;
        if (!machine) {
            return error::NotReady;
        }
        folder = machine->Directory() + "/named-objects";
    }
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    std::string path = folder + "/" + FileNameOf(name) + ".mutex";
    Table& table = Mutexes();
    std::lock_guard<std::mutex> guard(table.lock);
    std::shared_ptr<NamedMutex>& mutex = table.byPath[path];
    if (!mutex) {
        int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) {
            table.byPath.erase(path);
            return error::AccessDenied;
        }
        mutex = std::make_shared<NamedMutex>();
        mutex->path = path;
        mutex->fd = fd;
    }
    ++mutex->handles;
    handle.value = table.next += 4;
    table.byHandle[handle.value] = mutex;
    return error::Success;
}

std::uint32_t WaitForSingleObject(MutexHandle handle, std::uint32_t milliseconds) {
    Table& table = Mutexes();
    std::unique_lock<std::mutex> guard(table.lock);
    std::shared_ptr<NamedMutex> mutex = Find(handle);
    if (!mutex) {
        return wait::Failed;
    }
    std::thread::id self = std::this_thread::get_id();
    if (mutex->count > 0 && mutex->owner == self) {
        ++mutex->count;
        return wait::Object0;
    }
    bool forever = milliseconds == wait::Infinite;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (mutex->count > 0) {
        if (forever) {
            mutex->released.wait(guard);
        } else if (mutex->released.wait_until(guard, deadline) == std::cv_status::timeout &&
                   mutex->count > 0) {
            return wait::Timeout;
        }
    }
    // No thread of this process holds it; another process may. This thread holds it for the
    // process while it waits for the file lock, so that the other threads queue behind it.
    mutex->owner = self;
    mutex->count = 1;
    guard.unlock();
    for (;;) {
        if (::flock(mutex->fd, forever ? LOCK_EX : LOCK_EX | LOCK_NB) == 0) {
            return wait::Object0;
        }
        int failure = errno;
        if (failure == EINTR) {
            continue;
        }
        if (failure != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline) {
            guard.lock();
            mutex->count = 0;
            mutex->owner = std::thread::id();
            mutex->released.notify_one();
            return failure == EWOULDBLOCK ? wait::Timeout : wait::Failed;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

Error ReleaseMutex(MutexHandle handle) {
    Table& table = Mutexes();
    std::lock_guard<std::mutex> guard(table.lock);
    std::shared_ptr<NamedMutex> mutex = Find(handle);
    if (!mutex) {
        return error::InvalidHandle;
    }
    if (mutex->count == 0 || mutex->owner != std::this_thread::get_id()) {
        return kNotOwner;
    }
    if (--mutex->count == 0) {
        mutex->owner = std::thread::id();
        ::flock(mutex->fd, LOCK_UN);
        mutex->released.notify_one();
    }
    return error::Success;
}

Error CloseHandle(MutexHandle handle) {
    Table& table = Mutexes();
    std::lock_guard<std::mutex> guard(table.lock);
    auto found = table.byHandle.find(handle.value);
    if (found == table.byHandle.end()) {
        return error::InvalidHandle;
    }
    std::shared_ptr<NamedMutex> mutex = found->second;
    table.byHandle.erase(found);
    if (--mutex->handles == 0 && mutex->count == 0) {
        ::close(mutex->fd);
        table.byPath.erase(mutex->path);
    }
    return error::Success;
}

} // namespace os
