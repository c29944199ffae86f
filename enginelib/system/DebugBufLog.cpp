#include "system/DebugBufLog.h"

#include "os/Files.h"

void DebugBufLog::SetFile(const CStdStr& path) {
    std::lock_guard<std::mutex> guard(mLock);
    mLogFilePath = path;
}

CStdStr DebugBufLog::GetFile() const {
    std::lock_guard<std::mutex> guard(mLock);
    return mLogFilePath;
}

DebugBufLog::int_type DebugBufLog::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) {
        return traits_type::not_eof(c);
    }
    std::lock_guard<std::mutex> guard(mLock);
    mPending += traits_type::to_char_type(c);
    if (c == '\n') {
        writePending();
    }
    return c;
}

std::streamsize DebugBufLog::xsputn(const char* text, std::streamsize count) {
    std::lock_guard<std::mutex> guard(mLock);
    for (std::streamsize i = 0; i < count; ++i) {
        mPending += text[i];
        if (text[i] == '\n') {
            writePending();
        }
    }
    return count;
}

int DebugBufLog::sync() {
    std::lock_guard<std::mutex> guard(mLock);
    writePending();
    return 0;
}

void DebugBufLog::writePending() {
    if (mPending.empty()) {
        return;
    }
    if (!mLogFilePath.empty()) {
        // Lines end as they do in a Windows text file.
        if (mPending.back() == '\n' &&
            (mPending.size() < 2 || mPending[mPending.size() - 2] != '\r')) {
            mPending.insert(mPending.size() - 1, 1, '\r');
        }
        std::FILE* file = nullptr;
        if (os::fsopen(mLogFilePath, "ab", os::Share::DenyNone, file) == os::error::Success) {
            std::fwrite(mPending.data(), 1, mPending.size(), file);
            std::fclose(file);
        }
    }
    mPending.clear();
}
