// A scope of the debug log, opened at the head of a function: it writes an entry line, indents
// the messages of the function, and at its end writes an exit line with the result and the time
// spent.
#pragma once

#include "core/CStdStr.h"

#include <cstdint>

class LogScope {
public:
    LogScope(const char* component, const char* name, std::uint32_t mask);
    ~LogScope();
    LogScope(const LogScope&) = delete;
    LogScope& operator=(const LogScope&) = delete;

    void SetResult(const char* text);
    void SetResult(const CStdStr& text) { SetResult(text.c_str()); }
    void SetResult(int number);
    void SetResult(bool value) { SetResult(value ? "true" : "false"); }

    // A message at the scope's depth, tested against the mask in force.
    void Log(std::uint32_t mask, const char* format, ...) ENGINE_PRINTF(3, 4);

    bool IsActive() const { return mActive; }

private:
    CStdStr mComponent;
    CStdStr mName;
    CStdStr mResult;
    int mScopeDepth = 0;
    std::uint32_t mMask = 0;
    bool mActive = false;
    std::uint32_t mStartTicks = 0;
};
