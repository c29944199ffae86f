// What the tests of the engine's component selection and install run share: a package folder
// with its Config folder on a simulated machine, the run log of the product "Suite" of the maker
// "Valmora", and engines started on scripts of the test.
#pragma once

#include "components/GenericComponent.h"
#include "core/Engine.h"
#include "core/ProductIni.h"
#include "core/RunState.h"
#include "os/Files.h"
#include "script/IniFile.h"
#include "script/NlsFile.h"
#include "script/SystemPath.h"
#include "support/SuiteLog.h"
#include "support/TestMachine.h"
#include "system/DebugLog.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "uninstall/UninstallLog.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

class EnginePackageTest : public ::testing::Test {
protected:
    explicit EnginePackageTest(const char* preset = "win7-x64") : machine(preset) {}

    TestMachine machine;
    std::string package = machine.Path("pkg");
    std::string config = package + "\\Config";
    UninstallLog& log = UninstallLog::Global();

    void SetUp() override {
        ProductIni::Unload();
        NlsFile::Reset();
        RunState::Reset();
        StartSuiteLog(log);
        os::CreateDirectory(package);
        os::CreateDirectory(config);
        SystemPath::SetApplicationDirectoryOverride(package);
        // General (0x100) shows the phase lines of the walk.
        writeConfig("product.ini", "[GENERAL]\nLogName=product.log\nProductKey=Suite\n"
                                   "LogLevel=0x100\n");
    }

    void TearDown() override {
        ProductIni::Unload();
        SystemPath::SetApplicationDirectoryOverride("");
        DebugLog::Instance().SetFile("");
        DebugLogger::Instance().SetLogBits(0);
        DebugLogger::Instance().SetCurrentMask(0);
        // An uninstall run leaves file operations deferred.
        FileOp::ClearZombieList();
        FileOp::SetZombieMode(false);
        log.Clear();
        RunState::Reset();
        NlsFile::Reset();
    }

    void writeConfig(const std::string& name, const std::string& text) {
        ASSERT_TRUE(TestMachine::WriteFile(config + "\\" + name, text));
    }

    // An engine initialised on a script with `text`.
    std::unique_ptr<Engine> start(const std::string& text, bool uninstall = false) {
        std::string path = machine.Path(uninstall ? "remove.isf" : "setup.isf");
        EXPECT_TRUE(TestMachine::WriteFile(path, text));
        auto engine = std::make_unique<Engine>(nullptr, path, "", "");
        EXPECT_TRUE(engine->Initialize(uninstall));
        return engine;
    }

    // Records components below their parents in the run's log; commitLog then makes that the
    // machine's log, as an earlier run left it.
    void addInstalled(std::initializer_list<std::pair<const char*, const char*>> children) {
        for (const auto& [name, parent] : children) {
            ASSERT_TRUE(log.AddComponent(name, parent, false));
        }
    }
    void commitLog() {
        ASSERT_TRUE(log.Commit());
        log.Clear();
    }

    std::string runLog() const {
        return TestMachine::ReadFile(SystemPath(SystemPath::TempFolder).GetFullPath() +
                                     "\\product.log");
    }

    static size_t Count(const std::string& text, const std::string& part) {
        size_t count = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++count;
        }
        return count;
    }

    static std::vector<std::string> Names(const Engine& engine) {
        std::vector<std::string> names;
        for (const auto& component : engine.GetComponents()) {
            CStdStr name;
            component->GetName(name);
            names.push_back(name);
        }
        return names;
    }

    static GenericComponent* Component(const Engine& engine, const char* name) {
        for (const auto& component : engine.GetComponents()) {
            CStdStr each;
            component->GetName(each);
            if (each.EqualsNoCase(name)) {
                return dynamic_cast<GenericComponent*>(component.get());
            }
        }
        return nullptr;
    }
};
