#include "system/DebugLogger.h"

#include "os/Process.h"
#include "os/Time.h"
#include "system/DebugLog.h"
#include "system/Registry.h"

#include <cstdarg>
#include <ctime>

namespace {

const int kMaxIndent = 50;

} // namespace

DebugLogger& DebugLogger::Instance() {
    // Never destroyed, like the stream it writes to.
    static DebugLogger* instance = new DebugLogger();
    return *instance;
}

void DebugLogger::EnsureSettings() {
    std::call_once(mSettingsRead, [this] { ReadSettings(); });
}

void DebugLogger::ReadSettings() {
    Registry registry;
    RegistryValue value;
    auto readFlag = [&](const char* name, bool& flag) {
        if (registry.ReadValue("HKLM", "Software\\Tovar", name, value)) {
            flag = value.number != 0;
        }
    };
    readFlag("ExcludeTidPid", mExcludeTidPid);
    readFlag("ExcludeDate", mExcludeDate);
    readFlag("ExcludeTime", mExcludeTime);
    readFlag("ExcludeComponent", mExcludeComponent);
    mLogBits = registry.ReadValue("HKLM", "Software\\Tovar", "Log", value) ? value.number : 0;
}

void DebugLogger::EnableLog() {
    EnsureSettings();
    mCurrentMask = mLogBits;
    mShowDate = !mExcludeDate;
    mShowTime = !mExcludeTime;
    mShowTidPid = !mExcludeTidPid;
    mShowComponent = !mExcludeComponent;
    ++mEnableCount;
}

void DebugLogger::DisableLog() {
    if (mEnableCount > 0) {
        --mEnableCount;
    }
    if (mEnableCount == 0) {
        mCurrentMask = 0;
    }
}

void DebugLogger::LeaveScope() {
    if (mDepth > 0) {
        --mDepth;
    }
}

void DebugLogger::SetLocation(int line, const char* file, const char* function) {
    mLine = line;
    CStdStr name = file != nullptr ? file : "";
    int slash = std::max(name.ReverseFind('/'), name.ReverseFind('\\'));
    name = name.Mid(slash + 1);
    int dot = name.ReverseFind('.');
    mComponent = dot > 0 ? name.Left(dot) : name;
    mFunction = ShortFunctionName(function);
}

void DebugLogger::Log(std::uint32_t mask, const char* format, ...) {
    va_list args;
    va_start(args, format);
    LogV(mask, format, args);
    va_end(args);
}

void DebugLogger::LogV(std::uint32_t mask, const char* format, va_list args) {
    auto bits = static_cast<std::int32_t>(mLogBits);
    if (bits < 0 || (mLogBits & mask) != mask || (mCurrentMask & mask) != mask) {
        return;
    }
    CStdStr message;
    message.FormatV(format, args);
    WriteLine(mask, message, CategoryName(mask), mFunction.empty() ? nullptr : mFunction.c_str(),
              -1);
}

void DebugLogger::WriteLine(std::uint32_t mask, const CStdStr& message, const CStdStr& component,
                            const char* function, int depth) {
    if ((mCurrentMask & mask) != mask) {
        return;
    }
    CStdStr line;
    if (mShowDate || mShowTime) {
        os::SystemTime now;
        os::GetLocalTime(now);
        if (mShowDate) {
            line.AppendFormat("%02d/%02d/%04d", now.month, now.day, now.year);
        }
        if (mShowTime) {
            line.AppendFormat(" %02d:%02d:%02d:%03d", now.hour, now.minute, now.second,
                              now.milliseconds);
        }
    }
    if (mShowTidPid) {
        line.AppendFormat(" P#%03u T#%03u ", os::GetCurrentProcessId(), os::GetCurrentThreadId());
    }
    if (!component.empty() && mShowComponent) {
        line += "[" + component + "] ";
    }
    int indent = depth < 0 ? mDepth.load() : depth;
    line.append(static_cast<size_t>(std::min(std::max(indent, 0), kMaxIndent)), ' ');
    if (function != nullptr) {
        line += function;
        line += ": ";
    }
    line += message;
    DebugLog::Instance().WriteLine(line);
}

const char* DebugLogger::CategoryName(std::uint32_t mask) {
    switch (mask) {
    case 0:
        return "FORCE";
    case 1:
        return "INFO";
    case 2:
        return "LIVEUPDT";
    case 4:
        return "NETSUPP";
    case 8:
        return "CGF";
    case 16:
        return "COINST";
    case 128:
        return "PARSER";
    default:
        return "COMP";
    }
}

CStdStr DebugLogger::FormatSystemError(std::uint32_t code) {
    std::string text;
    if (os::FormatMessage(code, text) != os::error::Success) {
        return CStdStr();
    }
    CStdStr message = text;
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r')) {
        message.pop_back();
    }
    return message;
}

CStdStr DebugLogger::FormatCurrentTime(const char* format) {
    char buffer[256];
    std::time_t now = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    size_t length = std::strftime(buffer, sizeof buffer, format, &local);
    return CStdStr(buffer, length);
}

CStdStr DebugLogger::ShortFunctionName(const char* prettyFunction) {
    if (prettyFunction == nullptr) {
        return CStdStr();
    }
    CStdStr text = prettyFunction;
    int open = text.Find('(');
    if (open >= 0) {
        text = text.Left(open);
    }
    int space = text.ReverseFind(' ');
    if (space >= 0) {
        text = text.Mid(space + 1);
    }
    text.TrimLeft('*');
    text.TrimLeft('&');
    return text;
}
