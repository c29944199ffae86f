#include "system/DebugLog.h"

#include "system/DebugLogger.h"

namespace {

const char* const kRuleTop =
        "//***********************************************************************";
const char* const kRuleBottom =
        "\\***********************************************************************/";

const char* const kBitTable[] = {
        "| |-------------------------------------------------------------",
        "| |--bit31-|-bit30---|bit29----|bit28----|bit27--|-bit26-|-bit25--|-bit24--",
        "| |--------|-LogScope|CstmFact-|DevFact--|DrvComp|PrnComp|divComp-|-PrintOp",
        "| |--bit23-|-bit22---|bit21----|--bit20--|bit19--|-bit18-|-bit17--|-bit16--",
        "| |-RunLib-|scriptFun|EngineApi|cpyInf---|shtcut-|-xxxxxx|--------|xxxxxxxx",
        "| |--bit15-|---bit14-|-bit13---|-bit12---|-bit11-|-bit10-|--bit 9-|-bit 8---",
        "| |Service-|--PortAct|MontorAct|-FileAc--|-actSet|device-|--uninst|-general-",
        "| |-bit 7--|-bit 6--|--bit 5---|-bit 4--|-bit 3--|bit 2--|-bit1---|-bit0-",
        "| |-parser-|-cif/gf-|-registry-|-coinst-|-cgf----|-netsup|liveupd-|-info-",
        "| |--------------------------------------------------------------",
};

const char* const kTimeFormat = "%A, %B %d, %Y %X";

} // namespace

DebugLog& DebugLog::Instance() {
    // Never destroyed: lines may still be written while the process shuts down.
    static DebugLog* instance = new DebugLog();
    return *instance;
}

DebugLog::DebugLog() : std::ostream(nullptr) {
    rdbuf(&mBuffer);
}

void DebugLog::SetFile(const CStdStr& path) {
    DebugLogger& logger = DebugLogger::Instance();
    logger.EnsureSettings();
    mPath = path;
    mBuffer.SetFile(path);
    if (logger.GetCurrentMask() == 0) {
        logger.SetCurrentMask(logger.GetLogBits());
    }
}

void DebugLog::WriteLine(const CStdStr& text) {
    CStdStr line = text;
    line += '\n';
    write(line.data(), static_cast<std::streamsize>(line.size()));
    if (!good()) {
        clear(); // a failed write is ignored, and the next line is tried again
    }
}

void DebugLog::WriteBanner(const CStdStr& installPath, const CStdStr& engineVersion,
                           const CStdStr& commandLine, const CStdStr& scriptVersion,
                           const CStdStr& osInfo, const CStdStr& title,
                           const CStdStr& description) {
    WriteLine(kRuleTop);
    WriteLine("| ------SNOWCAP5---------");
    WriteLine("| InstallPath  :" + installPath);
    WriteLine("| CurrentTime  :" + DebugLogger::FormatCurrentTime(kTimeFormat));
    WriteLine(CStdStr("| BuildDateTime:") + __DATE__ + " : " + __TIME__);
    if (!engineVersion.empty()) {
        WriteLine("| EngineVersion:" + engineVersion);
    }
    if (!scriptVersion.empty()) {
        WriteLine("| ScriptVersion: " + scriptVersion);
    }
    if (!osInfo.empty()) {
        WriteLine("| CurrentOSInfo: " + osInfo);
    }
    WriteLine(CStdStr::Formatted("| Current Tovar Log Value: 0X%08X",
                                 DebugLogger::Instance().GetLogBits()));
    if (!commandLine.empty()) {
        WriteLine("| Commandline arguments: " + commandLine);
    }
    WriteLine("| " + title);
    WriteLine("| " + description);
    if (!scriptVersion.empty() || !commandLine.empty()) {
        WriteLine("| |--You may set TOVVAR-Log bits like given below (Might slow the system)-|");
        for (const char* line : kBitTable) {
            WriteLine(line);
        }
    }
    WriteLine(kRuleBottom);
}

void DebugLog::WriteFinishBanner(const CStdStr& text) {
    WriteLine(kRuleTop);
    WriteLine("| Finished " + text + " : " + DebugLogger::FormatCurrentTime(kTimeFormat));
    WriteLine(kRuleBottom);
}
