// Where the run on the worker thread meets the host's polling thread: the units the run will
// take, the units done, and the title of what is happening. Each operation takes the lock for
// its one read or write.
#pragma once

#include "core/CStdStr.h"

#include <cstdint>
#include <mutex>

class IpcTransfer {
public:
    static constexpr size_t kTitleSize = 1000;

    IpcTransfer();
    IpcTransfer(const IpcTransfer&) = delete;
    IpcTransfer& operator=(const IpcTransfer&) = delete;

    void SetTotalUnits(const std::uint32_t& units);
    void GetTotalUnits(std::uint32_t* units);
    // The counter only grows; nothing resets it.
    void AddCurrentUnits(const std::uint32_t& units);
    void GetCurrentUnits(std::uint32_t* units);
    // A title longer than the buffer is cut, so that no text overruns the host's 1000 bytes.
    void SetCurrentTitle(const CStdStr& title);
    // `out` must hold kTitleSize bytes.
    void GetCurrentTitle(char* out);

private:
    std::uint32_t mCurrentUnits = 0;
    std::uint32_t mTotalUnits = 0;
    char mTitle[kTitleSize] = {};
    std::mutex mLock;
};
