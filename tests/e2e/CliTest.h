// A fixture for tests that run installcli: a scratch folder of the test's own, made the home of
// the default machine so that no test touches the user's, and simulated machines made in it.
#pragma once

#include "CliRunner.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace e2e {

class CliTest : public ::testing::Test {
protected:
    explicit CliTest(const std::string& name) : scratch(name), root(scratch.Path()) {}

    void SetUp() override {
        std::filesystem::create_directories(root / "home");
        ::setenv("XDG_DATA_HOME", (root / "home").c_str(), 1);
        ::unsetenv("ENGINE_MACHINE");
    }

    CliResult run(const std::string& arguments) { return RunInstallcli(arguments); }

    // A fresh simulated machine of `preset` in the scratch folder; its host folder.
    std::string machine(const std::string& preset) {
        std::string dir = (root / preset).string();
        CliResult made = run("machine create '" + dir + "' --os " + preset);
        EXPECT_EQ(0, made.code) << made.output;
        return dir;
    }

    ScratchFolder scratch;
    const std::filesystem::path& root;
};

} // namespace e2e
