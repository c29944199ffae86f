#include "actions/IniFileAction.h"
#include "actions/LinePatchAction.h"
#include "actions/TextFileAction.h"

#include "core/RunState.h"
#include "script/IniFile.h"
#include "support/LogCapture.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

class IniEditingTest : public ::testing::Test {
protected:
    TestMachine machine;
    LogCapture log{machine.Path("debug.log")};

    void SetUp() override { RunState::Reset(); }

    static CStdStringList list(std::initializer_list<std::string> params) {
        CStdStringList items;
        for (const std::string& param : params) {
            items.Add(param);
        }
        return items;
    }
    std::string path(const std::string& name) const { return machine.Path(name); }
    std::string write(const std::string& name, const std::string& text) {
        return machine.WriteScratch(name, text);
    }
    static std::string read(const std::string& file) { return TestMachine::ReadFile(file); }
    static bool ini(std::initializer_list<std::string> params) {
        return IniFileAction(list(params)).Perform("Suite");
    }
    static bool text(std::initializer_list<std::string> params) {
        return TextFileAction(list(params)).Perform("Suite");
    }
    static bool patch(std::initializer_list<std::string> params) {
        return LinePatchAction(list(params)).Perform("Suite");
    }
};

TEST_F(IniEditingTest, IniFileSetsAndExtendsKeysAndErasesSections) {
    std::string file = write("suite.ini", "[Paths]\r\nList=a,b\r\nHome=C:\\Old\r\n[Gone]\r\nx=1\r\n");
    ASSERT_TRUE(ini({"UPDATE", file, "paths", "home", "C:\\New"}));
    ASSERT_TRUE(ini({"APPEND", file, "Paths", "List", "c"}));
    ASSERT_TRUE(ini({"append", file, "Paths", "List", "B"}));
    EXPECT_TRUE(log.Contains("Could not append the value B as it already exists."));
    ASSERT_TRUE(ini({"APPEND", file, "Paths", "Path", "x", ";"}));
    ASSERT_TRUE(ini({"APPEND", file, "Paths", "Path", "y", ";"}));
    ASSERT_TRUE(ini({"UPDATE", file, "Fresh", "k", "v"}));
    EXPECT_TRUE(log.Contains("new section Fresh is added."));
    ASSERT_TRUE(ini({"DELETESECTION", file, "GONE"}));
    EXPECT_EQ("[Paths]\r\nList=a,b,c\r\nHome=C:\\New\r\nPath=x;y\r\n\r\n[Fresh]\r\nk=v\r\n\r\n",
              read(file));

    // A missing file is made by the setting operations and refused by the erasing one.
    ASSERT_TRUE(ini({"UPDATE", path("sub\\new.ini"), "S", "k", "v"}));
    EXPECT_EQ("[S]\r\nk=v\r\n\r\n", read(path("sub\\new.ini")));
    EXPECT_FALSE(ini({"DELETESECTION", path("absent.ini"), "S"}));
    EXPECT_TRUE(log.Contains("could not delete section in the file " + path("absent.ini") + "."));
    EXPECT_FALSE(ini({"RENAME", file, "Paths", "k", "v"}));
}

TEST_F(IniEditingTest, IniFileActionsCompareFileSectionKeyAndValue) {
    IniFileAction action(list({"UPDATE", "C:\\a.ini", "S", "k", "v"}));
    EXPECT_EQ(",", action.GetDelimiter());
    EXPECT_EQ(0u, action.GetUnits());
    IniFileAction same(list({"APPEND", "c:\\A.INI", "s", "K", "V", ";"}));
    EXPECT_TRUE(action.IsSameAction(&same));
    IniFileAction other(list({"UPDATE", "C:\\a.ini", "S", "k", "w"}));
    EXPECT_FALSE(action.IsSameAction(&other));
}

TEST_F(IniEditingTest, TextFileAppendsDropsAndReplacesWholeLinesByExactText) {
    std::string file = path("conf\\printers.txt");
    ASSERT_TRUE(text({"APPEND", file, "device=SuiteJet"}));
    ASSERT_TRUE(text({"APPEND", file, "port=LPT1"}));
    EXPECT_EQ("\r\ndevice=SuiteJet\r\n\r\nport=LPT1\r\n", read(file));

    std::string lines = write("lines.txt", "keep one\r\nSuiteJet old\r\nsuitejet case\r\nend\r\n");
    ASSERT_TRUE(text({"REPLACE", lines, "SuiteJet", "SuiteJet new"}));
    EXPECT_EQ("keep one\r\nSuiteJet new\r\nsuitejet case\r\nend\r\n", read(lines));
    ASSERT_TRUE(text({"DELETE", lines, "SuiteJet"}));
    EXPECT_EQ("keep one\r\nsuitejet case\r\nend\r\n", read(lines));
    EXPECT_FALSE(TestMachine::Exists(path("templines.txt")));

    EXPECT_FALSE(text({"DELETE", path("absent.txt"), "x"}));
    EXPECT_TRUE(log.Contains("could not open file " + path("absent.txt") + "."));
    EXPECT_FALSE(text({"INSERT", lines, "x"}));
}

TEST_F(IniEditingTest, LinePatchFindsTheLineByItsFields) {
    std::string one = write("one.ini", "[Models]\nJet 100=jet100.inf,USB,Color\n"
                                       "Jet 200=jet200.inf,LPT,Mono\n");
    std::string two = write("two.ini", "[Models]\nJet 300=jet300.inf,LPT,Color\n");
    std::string both = one + "|" + two;

    ASSERT_TRUE(patch({both, "APPEND_END", "2:lpt", "Models", ",Duplex"}));
    EXPECT_EQ("jet200.inf,LPT,Mono,Duplex", IniFile(one).GetValue("Models", "Jet 200"));
    EXPECT_EQ("jet300.inf,LPT,Color,Duplex", IniFile(two).GetValue("Models", "Jet 300"));
    ASSERT_TRUE(patch({one, "APPEND_FRONT", "0:Jet 100", "Models", "v2-"}));
    EXPECT_EQ("v2-jet100.inf,USB,Color", IniFile(one).GetValue("Models", "Jet 100"));
    EXPECT_TRUE(log.Contains("Append Success: [Models]Jet 100"));

    ASSERT_TRUE(patch({one, "DELETE", "2:USB:3:Color", "Models"}));
    EXPECT_TRUE(log.Contains("Delete Success: [Models]Jet 100"));
    EXPECT_EQ("", IniFile(one).GetValue("Models", "Jet 100"));
    EXPECT_NE("", IniFile(one).GetValue("Models", "Jet 200"));

    ASSERT_TRUE(patch({one, "ADD", "", "Options|Duplex|yes=1"}));
    EXPECT_EQ("yes=1", IniFile(one).GetValue("Options", "Duplex"));
    EXPECT_TRUE(log.Contains("Add/Update Success: [Options] Duplex=yes=1"));

    EXPECT_FALSE(patch({one, "DELETE", "9:x", "Models"}));
    EXPECT_TRUE(log.Contains("Condition (9:x) is out of range!"));
    EXPECT_FALSE(patch({one, "DELETE", "1:nothing.inf", "Models"}));
    EXPECT_TRUE(log.Contains("Condition (1:nothing.inf) is not met!"));
    EXPECT_TRUE(log.Contains("line not found in condition (1:nothing.inf)"));
    EXPECT_FALSE(patch({one, "DELETE", "1:x", "Absent"}));
    EXPECT_TRUE(log.Contains("section [Absent] doesn't exist."));
    EXPECT_FALSE(patch({one, "DELETE", "", "Models"}));
    EXPECT_TRUE(log.Contains("Delete Failed: Missing line condition on parameter."));
    EXPECT_FALSE(patch({one, "APPEND_END", "", "Models", "x"}));
    EXPECT_TRUE(log.Contains("Append Failed: Missing line condition on parameter."));
    EXPECT_FALSE(patch({one, "ADD", "", "no separators"}));
    EXPECT_TRUE(log.Contains("Add line Failed: []="));
}

} // namespace
