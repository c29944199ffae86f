// Synchronisation group of the platform seam: named mutexes that processes of one machine share
// (CreateMutex, WaitForSingleObject, ReleaseMutex, CloseHandle).
#pragma once

#include "os/OsTypes.h"

namespace os {

struct MutexHandle {
    std::uintptr_t value = 0;
};

namespace wait {
constexpr std::uint32_t Object0 = 0x0;        // WAIT_OBJECT_0
constexpr std::uint32_t Abandoned = 0x80;     // WAIT_ABANDONED
constexpr std::uint32_t Timeout = 0x102;      // WAIT_TIMEOUT
constexpr std::uint32_t Failed = 0xFFFFFFFF;  // WAIT_FAILED
constexpr std::uint32_t Infinite = 0xFFFFFFFF; // INFINITE
} // namespace wait

constexpr Error kNotOwner = 288; // ERROR_NOT_OWNER

// CreateMutex without security and not owned: the mutex of that name, made when no process of
// the machine has it. A mutex is held by a thread and may be taken again by the same thread.
Error CreateMutex(const std::string& name, MutexHandle& handle);
// One of the wait codes above; Failed for a handle that is not open.
std::uint32_t WaitForSingleObject(MutexHandle handle, std::uint32_t milliseconds);
// kNotOwner when the calling thread does not hold the mutex.
Error ReleaseMutex(MutexHandle handle);
Error CloseHandle(MutexHandle handle);

} // namespace os
