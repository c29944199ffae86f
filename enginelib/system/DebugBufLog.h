// The stream buffer under the debug log. It gathers the characters of a line and, at each line
// feed or flush, opens the log file for appending with sharing, writes the line and closes the
// file again: several processes may write one log, and a crash loses nothing.
#pragma once

#include "core/CStdStr.h"

#include <mutex>
#include <streambuf>

class DebugBufLog : public std::streambuf {
public:
    DebugBufLog() = default;

    void SetFile(const CStdStr& path);
    CStdStr GetFile() const;

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

private:
    // Writes `pending` to the file and empties it; without a file the text is dropped.
    void writePending();

    mutable std::mutex mLock;
    CStdStr mLogFilePath;
    CStdStr mPending;
};
