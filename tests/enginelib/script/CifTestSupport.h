// What the tests of CIF files, defines and requirements share: the lines that the debug log
// writes during a test, and CIF files written into the test's scratch folder.
#pragma once

#include "script/Tokenizer.h"
#include "support/TestMachine.h"
#include "system/DebugLog.h"
#include "system/DebugLogger.h"
#include "system/Registry.h"

#include <gtest/gtest.h>

// Turns the debug log on into a file of the scratch folder, with only the message text on each
// line, and off again at the end. Its own class name keeps it apart, at link time, from the
// capture of support/LogCapture.h, which the same test program holds.
class CifLogCapture {
public:
    explicit CifLogCapture(const TestMachine& machine, std::uint32_t bits = 0)
            : mFile(machine.Path("capture.log")) {
        Registry registry;
        for (const char* name :
             {"ExcludeTidPid", "ExcludeDate", "ExcludeTime", "ExcludeComponent"}) {
            registry.WriteValue("HKLM", "Software\\Tovar", name, RegistryValue::Dword(1));
        }
        registry.WriteValue("HKLM", "Software\\Tovar", "Log", RegistryValue::Dword(bits));
        DebugLogger& logger = DebugLogger::Instance();
        logger.ReadSettings();
        DebugLog::Instance().SetFile(mFile);
        logger.EnableLog();
        logger.SetCurrentMask(bits);
    }
    ~CifLogCapture() {
        DebugLogger& logger = DebugLogger::Instance();
        while (logger.GetEnableCount() > 0) {
            logger.DisableLog();
        }
        logger.SetLogBits(0);
        logger.SetCurrentMask(0);
        DebugLog::Instance().SetFile("");
    }
    CifLogCapture(const CifLogCapture&) = delete;
    CifLogCapture& operator=(const CifLogCapture&) = delete;

    CStdStr Text() const {
        CStdStr text = TestMachine::ReadFile(mFile);
        text.Replace("\r", "");
        return text;
    }
    // Whether a line of the log holds `part`.
    bool Has(const std::string& part) const { return Text().Find(part.c_str()) >= 0; }

private:
    std::string mFile;
};
using LogCapture = CifLogCapture;

// Writes a file of lines (joined with CR LF) and gives its Windows path.
inline std::string WriteLines(const TestMachine& machine, const std::string& name,
                              std::initializer_list<const char*> lines) {
    std::string text;
    for (const char* line : lines) {
        text += line;
        text += "\r\n";
    }
    return machine.WriteScratch(name, text);
}
