#include "system/LogScope.h"

#include "os/Time.h"
#include "system/DebugLogger.h"

#include <cstdarg>

LogScope::LogScope(const char* component, const char* name, std::uint32_t mask)
        : mComponent(component), mName(name), mMask(mask) {
    DebugLogger& logger = DebugLogger::Instance();
    mStartTicks = os::GetTickCount();
    mScopeDepth = logger.GetDepth();
    std::uint32_t current = logger.GetCurrentMask();
    if (mask != 0 && (current & mask) != mask) {
        return;
    }
    mActive = (current & logmask::LogScope) != 0 || mask == 0;
    if (!mActive) {
        return;
    }
    logger.EnterScope();
    logger.WriteLine(mMask, "<+" + mName + "+>", mComponent, nullptr, mScopeDepth);
    ++mScopeDepth;
}

LogScope::~LogScope() {
    if (!mActive) {
        return;
    }
    DebugLogger& logger = DebugLogger::Instance();
    logger.LeaveScope();
    --mScopeDepth;
    CStdStr text = "<-" + mName + "->";
    if (!mResult.empty()) {
        text += " " + mResult;
    }
    text.AppendFormat(" TickSpent: %d", static_cast<int>(os::GetTickCount() - mStartTicks + 1));
    logger.WriteLine(mMask, text, mComponent, nullptr, mScopeDepth);
}

void LogScope::SetResult(const char* text) {
    if (mActive) {
        mResult = CStdStr(" rc=") + CStdStr(text);
    }
}

void LogScope::SetResult(int number) {
    if (mActive) {
        mResult.Format(" rc=%d", number);
    }
}

void LogScope::Log(std::uint32_t mask, const char* format, ...) {
    DebugLogger& logger = DebugLogger::Instance();
    if ((logger.GetCurrentMask() & mask) != mask) {
        return;
    }
    CStdStr message;
    va_list args;
    va_start(args, format);
    message.FormatV(format, args);
    va_end(args);
    logger.WriteLine(mask, message, mComponent, mActive ? nullptr : mName.c_str(), mScopeDepth);
}
