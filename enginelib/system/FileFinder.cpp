#include "system/FileFinder.h"

FileFinder::FileFinder(const CStdStr& pattern) {
    mError = os::FindFiles(pattern, mEntries);
    if (mError != os::error::Success) {
        mEntries.clear();
    }
}

CStdStr FileFinder::GetCurrent() const {
    return IsEnd() ? CStdStr() : CStdStr(mEntries[mIndex].fileName);
}

std::uint32_t FileFinder::GetAttributes() const {
    return IsEnd() ? 0 : mEntries[mIndex].attributes;
}

bool FileFinder::IsDirectory() const {
    return (GetAttributes() & os::attr::Directory) != 0;
}

bool FileFinder::IsDots() const {
    CStdStr name = GetCurrent();
    return name == "." || name == "..";
}

void FileFinder::Next() {
    if (!IsEnd()) {
        ++mIndex;
    }
}

void FileFinder::Close() {
    mEntries.clear();
    mIndex = 0;
}
