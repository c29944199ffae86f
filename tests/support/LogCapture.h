// The engine's debug log written to a file of the test's machine, every category on, for the
// time of a test; the text can be searched for the lines a function must write.
#pragma once

#include "support/TestMachine.h"
#include "system/DebugLog.h"
#include "system/DebugLogger.h"

#include <string>

class LogCapture {
public:
    explicit LogCapture(const std::string& path)
            : mPath(path), mBits(DebugLogger::Instance().GetLogBits()) {
        DebugLog::Instance().SetFile(path);
        DebugLogger::Instance().SetLogBits(0x7FFFFFFF);
        DebugLogger::Instance().SetCurrentMask(0x7FFFFFFF);
    }
    ~LogCapture() {
        DebugLogger::Instance().SetLogBits(mBits);
        DebugLogger::Instance().SetCurrentMask(0);
        DebugLog::Instance().SetFile("");
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::string Text() const { return TestMachine::ReadFile(mPath); }
    bool Contains(const std::string& text) const { return Text().find(text) != std::string::npos; }

private:
    std::string mPath;
    std::uint32_t mBits;
};
