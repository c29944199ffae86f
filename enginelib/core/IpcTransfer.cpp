#include "core/IpcTransfer.h"

#include "system/DebugLogger.h"

#include <algorithm>
#include <cstring>

IpcTransfer::IpcTransfer() = default;

void IpcTransfer::SetTotalUnits(const std::uint32_t& units) {
    std::lock_guard<std::mutex> guard(mLock);
    mTotalUnits = units;
}

void IpcTransfer::GetTotalUnits(std::uint32_t* units) {
    std::lock_guard<std::mutex> guard(mLock);
    if (units != nullptr) {
        *units = mTotalUnits;
    }
}

void IpcTransfer::AddCurrentUnits(const std::uint32_t& units) {
    std::lock_guard<std::mutex> guard(mLock);
    mCurrentUnits += units;
}

void IpcTransfer::GetCurrentUnits(std::uint32_t* units) {
    std::lock_guard<std::mutex> guard(mLock);
    if (units != nullptr) {
        *units = mCurrentUnits;
    }
}

void IpcTransfer::SetCurrentTitle(const CStdStr& title) {
    std::lock_guard<std::mutex> guard(mLock);
    size_t length = std::min(title.size(), kTitleSize - 1);
    std::memcpy(mTitle, title.data(), length);
    mTitle[length] = '\0';
    ENGINE_LOG(logmask::General, "<------ Current Title: %s ----->", mTitle);
}

void IpcTransfer::GetCurrentTitle(char* out) {
    std::lock_guard<std::mutex> guard(mLock);
    if (out != nullptr) {
        std::memcpy(out, mTitle, std::strlen(mTitle) + 1);
    }
}
