#include "core/OldScriptConverter.h"
#include "script/IniFile.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

class OldScriptConverterTest : public ::testing::Test {
protected:
    TestMachine machine;

    std::unique_ptr<IniFile> convert(const std::string& text) {
        std::string path = machine.Path("old.isf");
        EXPECT_TRUE(TestMachine::WriteFile(path, text));
        auto script = std::make_unique<IniFile>(CStdStr(path), false);
        OldScriptConverter::Convert(*script);
        return script;
    }
};

TEST_F(OldScriptConverterTest, InstallKeysAndLanguagesTakeTheirNewNames) {
    auto script = convert("[Install]\nInstall_Driver=1\nInstall_Port=2\nLanguage=german\n");
    EXPECT_EQ("1", script->GetValue("Install", "Drivers"));
    EXPECT_EQ("2", script->GetValue("Install", "Ports"));
    EXPECT_EQ("de", script->GetValue("Install", "Language"));
    auto kept = convert("[Install]\nLanguage=de\n");
    EXPECT_EQ("de", kept->GetValue("Install", "Language"));
    auto unknown = convert("[Install]\nLanguage=Klingon\n");
    EXPECT_EQ("Klingon", unknown->GetValue("Install", "Language"));
}

TEST_F(OldScriptConverterTest, DriverCountsBecomeOne) {
    auto script = convert("[Drivers]\nA=2\nB=0\nC=1\nD=5\n");
    EXPECT_EQ("1", script->GetValue("Drivers", "A"));
    EXPECT_EQ("0", script->GetValue("Drivers", "B"));
    EXPECT_EQ("1", script->GetValue("Drivers", "C"));
    EXPECT_EQ("1", script->GetValue("Drivers", "D"));
}

TEST_F(OldScriptConverterTest, PortSectionsTakeTheirKindAndNewKeys) {
    auto script = convert("[Ports]\nP1=Lpt\nP2=Missing\n[Lpt]\nProtocol=IP\nName=10.0.0.1\n");
    EXPECT_EQ("StandardIp", script->GetValue("Ports", "P1"));
    EXPECT_EQ("Missing", script->GetValue("Ports", "P2"));
    EXPECT_EQ("", script->GetValue("Lpt", "Protocol"));
    EXPECT_EQ("10.0.0.1", script->GetValue("Lpt", "PortName"));
}

TEST_F(OldScriptConverterTest, TheFileOnDiskStaysAsItWas) {
    std::string text = "[Install]\nInstall_Tools=1\n";
    convert(text);
    EXPECT_EQ(text, TestMachine::ReadFile(machine.Path("old.isf")));
}

} // namespace
