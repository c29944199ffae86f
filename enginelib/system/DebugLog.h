// The debug log's output stream: one instance for the process. Its text goes to the file named
// by SetFile, line by line.
#pragma once

#include "system/DebugBufLog.h"

#include <ostream>

class DebugLog : public std::ostream {
public:
    static DebugLog& Instance();

    // Names the file. If no mask is in force yet, the configured one takes effect.
    void SetFile(const CStdStr& path);
    CStdStr GetFile() const { return mPath; }

    // Kept for the host; nothing in the engine reads it.
    void SetTestMode(bool testMode) { mTestMode = testMode; }
    bool GetTestMode() const { return mTestMode; }

    // One finished line, written whole.
    void WriteLine(const CStdStr& text);

    // The block at the start of a run. The table of log bits follows when a script version or
    // a command line is given.
    void WriteBanner(const CStdStr& installPath, const CStdStr& engineVersion,
                     const CStdStr& commandLine, const CStdStr& scriptVersion,
                     const CStdStr& osInfo, const CStdStr& title, const CStdStr& description);
    // The block at the end of a run.
    void WriteFinishBanner(const CStdStr& text);

private:
    DebugLog();

    DebugBufLog mBuffer;
    CStdStr mPath;
    bool mTestMode = false;
};
