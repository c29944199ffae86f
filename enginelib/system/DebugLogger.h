// The process-wide debug log: its settings, the mask of categories in force, and the writing of
// one line. Messages name their categories with a mask; a message is written when all the bits
// of its mask are on.
#pragma once

#include "core/CStdStr.h"

#include <atomic>
#include <cstdint>
#include <mutex>

// Category bits of the log mask.
namespace logmask {
constexpr std::uint32_t Always = 0;
constexpr std::uint32_t Info = 0x1;
constexpr std::uint32_t LiveUpdate = 0x2;
constexpr std::uint32_t NetSupport = 0x4;
constexpr std::uint32_t Cgf = 0x8;
constexpr std::uint32_t Coinstaller = 0x10;
constexpr std::uint32_t Registry = 0x20;
constexpr std::uint32_t CifGf = 0x40;
constexpr std::uint32_t Parser = 0x80;
constexpr std::uint32_t General = 0x100;
constexpr std::uint32_t Uninstall = 0x200;
constexpr std::uint32_t Device = 0x400;
constexpr std::uint32_t ActionSet = 0x800;
constexpr std::uint32_t FileAction = 0x1000;
constexpr std::uint32_t MonitorAction = 0x2000;
constexpr std::uint32_t PortAction = 0x4000;
constexpr std::uint32_t Service = 0x8000;
constexpr std::uint32_t Shortcut = 0x80000;
constexpr std::uint32_t CopyInf = 0x100000;
constexpr std::uint32_t EngineApi = 0x200000;
constexpr std::uint32_t ScriptFunction = 0x400000;
constexpr std::uint32_t RunLibrary = 0x800000;
constexpr std::uint32_t PrintOp = 0x1000000;
constexpr std::uint32_t DivComp = 0x2000000;
constexpr std::uint32_t PrinterComponent = 0x4000000;
constexpr std::uint32_t DriverComponent = 0x8000000;
constexpr std::uint32_t DeviceFactory = 0x10000000;
constexpr std::uint32_t CustomFactory = 0x20000000;
constexpr std::uint32_t LogScope = 0x40000000;
constexpr std::uint32_t Silent = 0x80000000;
} // namespace logmask

class DebugLogger {
public:
    static DebugLogger& Instance();

    // Reads ExcludeTidPid, ExcludeDate, ExcludeTime, ExcludeComponent and Log from
    // HKLM\Software\Tovar, once, before the first file is set.
    void EnsureSettings();
    void ReadSettings();

    void EnableLog();
    void DisableLog();
    std::uint32_t GetLogBits() const { return mLogBits; }
    void SetLogBits(std::uint32_t bits) { mLogBits = bits; }
    std::uint32_t GetCurrentMask() const { return mCurrentMask; }
    void SetCurrentMask(std::uint32_t mask) { mCurrentMask = mask; }
    int GetEnableCount() const { return mEnableCount; }

    // The nesting of scopes, which indents the lines.
    int GetDepth() const { return mDepth; }
    void EnterScope() { ++mDepth; }
    void LeaveScope();

    // The source position of the next message; `file` is kept as its bare name, and `function`
    // as "Class::Method".
    void SetLocation(int line, const char* file, const char* function);
    void Log(std::uint32_t mask, const char* format, ...) ENGINE_PRINTF(3, 4);
    void LogV(std::uint32_t mask, const char* format, va_list args);

    // Writes one line when all of `mask` is in the mask in force. `function` may be null; a
    // negative `depth` means the current nesting.
    void WriteLine(std::uint32_t mask, const CStdStr& message, const CStdStr& component,
                   const char* function, int depth);

    // The category name that the component field of a plain message shows.
    static const char* CategoryName(std::uint32_t mask);
    static CStdStr FormatSystemError(std::uint32_t code);
    static CStdStr FormatCurrentTime(const char* format);
    // "bool Engine::Initialize(bool)" -> "Engine::Initialize".
    static CStdStr ShortFunctionName(const char* prettyFunction);

private:
    DebugLogger() = default;

    std::once_flag mSettingsRead;
    bool mExcludeTidPid = false;
    bool mExcludeDate = true;
    bool mExcludeTime = false;
    bool mExcludeComponent = false;
    std::uint32_t mLogBits = 0;

    int mLine = 0;
    CStdStr mFunction;
    CStdStr mComponent;

    std::atomic<std::uint32_t> mCurrentMask{0};
    std::atomic<int> mDepth{0};
    std::atomic<int> mEnableCount{0};
    bool mShowDate = false;
    bool mShowTime = false;
    bool mShowTidPid = false;
    bool mShowComponent = false;
};

// A message with the source position of the call.
#define ENGINE_LOG(mask, ...)                                                                      \
    do {                                                                                           \
        DebugLogger::Instance().SetLocation(__LINE__, __FILE__, __PRETTY_FUNCTION__);              \
        DebugLogger::Instance().Log(mask, __VA_ARGS__);                                            \
    } while (false)
