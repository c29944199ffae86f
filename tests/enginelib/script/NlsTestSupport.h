// What the tests of language files, language tables and built-in defines share: a machine of a
// given locale, language files in the scratch folder, and the debug log of the test.
#pragma once

#include "os/Files.h"
#include "script/NlsFile.h"
#include "support/TestMachine.h"
#include "system/DebugLog.h"
#include "system/DebugLogger.h"
#include "system/Registry.h"

#include "sim/SimMachine.h"

#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace nlstest {

// Gives the simulated machine another user and system locale, as its machine.ini says.
inline void SetMachineLocale(const TestMachine& machine, std::uint32_t lcid) {
    std::string path = machine.HostDir() + "/machine.ini";
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    in.close();
    char hex[16];
    std::snprintf(hex, sizeof hex, "Locale=0x%04X", lcid);
    std::ofstream(path) << std::regex_replace(text.str(), std::regex("Locale=[^\r\n]*"), hex);
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
}

// A machine with an empty language folder C:\Scratch\nls, and no language loaded.
class NlsTest : public ::testing::Test {
protected:
    explicit NlsTest(const char* preset = "xp") : machine(preset) {}

    void SetUp() override {
        NlsFile::Reset();
        os::CreateDirectory(folder);
    }
    void TearDown() override { NlsFile::Reset(); }

    void write(const std::string& name, const std::string& text) {
        ASSERT_TRUE(TestMachine::WriteFile(folder + "\\" + name, text));
    }

    TestMachine machine;
    std::string folder = machine.Path("nls");
};

// The debug log of a test, with every category on and only the message text on each line.
class LogCapture {
public:
    explicit LogCapture(const TestMachine& machine) : mFile(machine.Path("nls-test.log")) {
        Registry registry;
        for (const char* name :
             {"ExcludeTidPid", "ExcludeDate", "ExcludeTime", "ExcludeComponent"}) {
            registry.WriteValue("HKLM", "Software\\Tovar", name, RegistryValue::Dword(1));
        }
        DebugLogger& logger = DebugLogger::Instance();
        logger.ReadSettings();
        DebugLog::Instance().SetFile(mFile);
        logger.EnableLog();
        logger.SetCurrentMask(0x7FFFFFFF);
    }
    ~LogCapture() {
        DebugLogger& logger = DebugLogger::Instance();
        while (logger.GetEnableCount() > 0) {
            logger.DisableLog();
        }
        logger.SetCurrentMask(0);
        DebugLog::Instance().SetFile("");
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    bool Holds(const std::string& text) const {
        return TestMachine::ReadFile(mFile).find(text) != std::string::npos;
    }

private:
    std::string mFile;
};

} // namespace nlstest
