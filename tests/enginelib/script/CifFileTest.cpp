#include "script/CifFile.h"

#include "CifTestSupport.h"
#include "core/RunState.h"
#include "os/Files.h"
#include "script/CifDefine.h"
#include "script/CifExtReq.h"
#include "script/CifSection.h"
#include "script/NlsFile.h"
#include "script/OSInfo.h"

#include <gtest/gtest.h>

namespace {

CStdStringList TokensOf(int code, bool is64Bit = false,
                        std::initializer_list<const char*> more = {}) {
    CStdStringList tokens{"TRUE"};
    OSInfo::ForCode(code, is64Bit).GetTokens(tokens);
    for (const char* token : more) {
        tokens.Add(token);
    }
    return tokens;
}

bool Holds(std::initializer_list<const char*> labels, const CStdStringList& tokens) {
    CStdStringList list;
    for (const char* label : labels) {
        list.Add(label);
    }
    return CifFile::EvaluateLabels(list, tokens);
}

TEST(CifLabels, TheFixedListOfOsTokens) {
    for (const char* token :
         {"95",      "98",      "98SE",      "9X",           "ME",       "NT",       "2K",
          "2K_ONLY", "2K3",     "XP",        "X64",          "X86",      "VISTA",    "VISTA_ONLY",
          "2K8",     "WIN7",    "FUTURE_OS", "NT_XP",        "2K_XP",    "NT_VISTA", "2K_VISTA",
          "NT_WIN7", "2K_WIN7", "XP_WIN7",   "VISTA_WIN7",   "2K3X64",   "XPX64",    "XPX86",
          "VISTA64", "2K8X64",  "WIN7X64",   "FUTURE_OSX64", "NOSP",     "SP1",      "NTSP6",
          "2KNOSP",  "2K3SP2",  "XPSP3",     "X64SP1",       "VISTASP2", "2K8NOSP",  "WIN7SP1",
          "XPSP12"}) {
        EXPECT_TRUE(OSInfo::IsOSToken(token)) << token;
    }
    for (const char* token : {"TRUE", "MYLABEL", "xp", "Vista", "XPSP", "SP", "WIN7SPA", "MESP1",
                              "95SP1", "WIN8", "X64X86", ""}) {
        EXPECT_FALSE(OSInfo::IsOSToken(token)) << token;
    }
    // Every token that a system carries is on the list.
    for (int code = OSInfo::Win95; code <= OSInfo::Future; ++code) {
        for (bool is64Bit : {false, true}) {
            for (const CStdStr& token : OSInfo::ForCode(code, is64Bit).Tokens()) {
                EXPECT_TRUE(OSInfo::IsOSToken(token)) << token;
            }
        }
    }
}

TEST(CifLabels, CuttingLabelsFromNamesAndLines) {
    CStdStringList labels;
    CStdStr rest;
    EXPECT_EQ(CifFile::LabelCut::Cut, CifFile::CutLabels("[2K_XP, VISTA ]Name", labels, rest));
    EXPECT_EQ((CStdStringList{"2K_XP", "VISTA"}), labels);
    EXPECT_EQ("Name", rest);
    EXPECT_EQ(CifFile::LabelCut::Cut, CifFile::CutLabels("[XP] Run,a,[b]", labels, rest));
    EXPECT_EQ("Run,a,[b]", rest);
    EXPECT_EQ(CifFile::LabelCut::None, CifFile::CutLabels("[]Foo", labels, rest));
    EXPECT_TRUE(labels.empty());
    EXPECT_EQ("[]Foo", rest);
    EXPECT_EQ(CifFile::LabelCut::None, CifFile::CutLabels("Name[XP]", labels, rest));
    EXPECT_EQ("Name[XP]", rest);
    EXPECT_EQ(CifFile::LabelCut::Malformed, CifFile::CutLabels("[XP Run", labels, rest));
}

TEST(CifLabels, ExpressionsAndAlternatives) {
    const CStdStringList win2000 = TokensOf(OSInfo::Win2000);
    const CStdStringList xp = TokensOf(OSInfo::WinXP);
    const CStdStringList vista = TokensOf(OSInfo::Vista);
    EXPECT_TRUE(Holds({}, vista));
    for (const CStdStringList* tokens : {&win2000, &xp}) {
        EXPECT_TRUE(Holds({"2K|XP"}, *tokens));
        EXPECT_TRUE(Holds({"2K", "XP"}, *tokens));
    }
    EXPECT_FALSE(Holds({"2K|XP"}, vista));
    EXPECT_FALSE(Holds({"2K", "XP"}, vista));
    // Only Server 2003 x64 carries both 2K and X64.
    EXPECT_FALSE(Holds({"2K&X64"}, win2000));
    EXPECT_FALSE(Holds({"2K&X64"}, TokensOf(OSInfo::Server2003)));
    EXPECT_TRUE(Holds({"2K&X64"}, TokensOf(OSInfo::Server2003, true)));
    EXPECT_FALSE(Holds({"2K&X64"}, TokensOf(OSInfo::WinXP, true)));
    // Strictly from the left: (XP | 2K) & X64, not XP | (2K & X64).
    EXPECT_FALSE(Holds({"XP|2K&X64"}, xp));
    EXPECT_TRUE(Holds({"X64&2K|XP"}, xp));
    EXPECT_TRUE(Holds({"TRUE&XP"}, xp));
    EXPECT_FALSE(Holds({"TRUE&XP"}, win2000));
    EXPECT_TRUE(Holds({"TRUE"}, win2000));
}

TEST(CifLabels, RequirementLabelsInExpressionsAndGroups) {
    const CStdStringList xpMine = TokensOf(OSInfo::WinXP, false, {"MYLABEL"});
    const CStdStringList win2000Mine = TokensOf(OSInfo::Win2000, false, {"MYLABEL"});
    // A term that is no OS token is false in an expression, set or not.
    EXPECT_TRUE(Holds({"MYLABEL|XP"}, xpMine));
    EXPECT_FALSE(Holds({"MYLABEL|XP"}, win2000Mine));
    EXPECT_FALSE(Holds({"MYLABEL"}, TokensOf(OSInfo::WinXP)));
    // In a list, the OS group and the other group must both be met.
    EXPECT_TRUE(Holds({"MYLABEL", "XP"}, xpMine));
    EXPECT_FALSE(Holds({"MYLABEL", "XP"}, TokensOf(OSInfo::WinXP)));
    EXPECT_FALSE(Holds({"MYLABEL", "XP"}, win2000Mine));
    EXPECT_TRUE(Holds({"MYLABEL"}, win2000Mine));
    EXPECT_TRUE(Holds({"OTHER", "MYLABEL"}, win2000Mine));
    // Comparison is exact, with case.
    EXPECT_FALSE(Holds({"xp"}, xpMine));
    EXPECT_FALSE(Holds({"mylabel"}, xpMine));
}

const std::initializer_list<const char*> kCif = {
        "[Defines]",
        "DIR=C:\\Target",
        "NAME=$DIR$\\name",
        "MEM=128",
        "TEXT=%Msgs.Hello%",
        "[Comp]",
        "Platform=XP,2K",
        "Where=$NAME$ and $NOPE$$DIR$ and $ alone",
        "Installed=$INSTALL_DIR$",
        "[Comp_ExtReq]",
        "1.2.3,VER:LT,1.10,MYLABEL:true,",
        "[Comp_Actions]",
        "File,COPY,$DIR$\\a.txt",
        "Run,plain",
        "[Comp_Actions_64]",
        "Run,sixtyfour",
        "[Labels]",
        "[2K|XP]Run,both",
        "[2K,XP]Run,alternatives",
        "[2K&X64]Run,server64",
        "[MYLABEL|XP]Run,expr-mylabel",
        "[MYLABEL,XP]Run,group-mylabel",
        "[VISTA]Run,vista",
        "[]Run,empty",
        "[Broken]",
        "Run,first",
        "[XP Run,broken",
        "[Hand]",
        "KEY#001=Run,one",
        "Name=named",
        "KEY#003=Run,three",
        "[Values]",
        "[XP]First=xp-only",
        "[2K]Second=2k",
        "Plain=$DIR$",
        "[XP]Dup=one",
        "Dup=two",
        "[]Odd=odd",
        "[MYLABEL]Mine=mine",
        "[Memory_ExtReq]",
        "$MEM$,NUM:GTE,256,,",
        "Error:MSG_LOW_MEMORY",
        "[Sys_ExtReq]",
        "$SYSTEM_MEMORY$,NUM:GTE,256,,",
        "Error:MSG_LOW_MEMORY",
        "[Text_ExtReq]",
        "$TEXT$,STR:EQ,hello\\, world,SAME:true,",
        "[Empty_ExtReq]",
        "[Last]",
        "x=1",
};

class CifFileTest : public ::testing::Test {
protected:
    explicit CifFileTest(const char* preset = "xp") : machine(preset) {}
    void TearDown() override { RunState::Reset(); }

    std::unique_ptr<CifFile> open(bool initialize = true) {
        path = WriteLines(machine, "comp.cif", kCif);
        auto cif = std::make_unique<CifFile>(path);
        if (initialize) {
            EXPECT_TRUE(cif->InitDefines(nullptr, "Comp"));
        }
        return cif;
    }

    static CStdStringList actions(CifFile& cif, const char* section, bool exact = true) {
        CStdStringList lines{"stale"};
        EXPECT_TRUE(cif.GetActions("Comp", section, lines, exact)) << section;
        return lines;
    }

    TestMachine machine;
    std::string path;
};

TEST_F(CifFileTest, SectionsResolveDefinesOnceTheTableIsThere) {
    auto cif = open(false);
    IniSection* comp = cif->FindSection("Comp");
    ASSERT_NE(nullptr, dynamic_cast<CifSection*>(comp));
    CStdStr value;
    ASSERT_TRUE(comp->GetValue("Where", value));
    EXPECT_EQ("$NAME$ and $NOPE$$DIR$ and $ alone", value);

    ASSERT_TRUE(cif->InitDefines(nullptr, "Comp"));
    ASSERT_TRUE(cif->AreDefinesLoaded());
    ASSERT_TRUE(comp->GetValue("Where", value));
    // A name that no one answers stays as it is written, and the walk goes on after it.
    EXPECT_EQ("C:\\Target\\name and $NOPE$C:\\Target and $ alone", value);
    CStdStr name;
    comp->Reset();
    comp->Next();
    ASSERT_TRUE(comp->GetCurrentValue(name, value));
    EXPECT_EQ("Where", name);
    EXPECT_EQ("C:\\Target\\name and $NOPE$C:\\Target and $ alone", value);
    // The walk with duplicates gives the lines as written.
    comp->Reset();
    ASSERT_TRUE(comp->GetCurrentValueWithDups(name, value));
    EXPECT_EQ("$NAME$ and $NOPE$$DIR$ and $ alone", value);
}

TEST_F(CifFileTest, MutableDefinesResolveForTheirSection) {
    std::string scriptPath = WriteLines(machine, "setup.isf",
                                        {"[Install]", "Comp=1", "[Comp]", "InstallDir=D:\\Comp\\"});
    IniFile script(scriptPath);
    auto cif = open(false);
    ASSERT_TRUE(cif->InitDefines(&script, "Comp"));
    EXPECT_TRUE(cif->GetDefines()->HasComponentFile());
    EXPECT_EQ("D:\\Comp", cif->GetValue("Comp", "Installed"));
}

TEST_F(CifFileTest, TheFileItselfIsTheScriptWhenThereIsNoOther) {
    auto cif = open();
    EXPECT_EQ(cif.get(), &cif->GetDefines()->GetIsf());
    EXPECT_FALSE(cif->GetDefines()->HasComponentFile());
}

TEST_F(CifFileTest, OnlyNumberedLinesInUnbrokenOrderCount) {
    auto cif = open();
    EXPECT_EQ(CStdStringList{"Run,one"}, actions(*cif, "Hand"));
}

TEST_F(CifFileTest, AMissingExactSectionIsLoggedButNoFailure) {
    auto cif = open();
    LogCapture log(machine);
    EXPECT_TRUE(actions(*cif, "Nope").empty());
    EXPECT_TRUE(log.Has("Invalid section Nope in Component Comp"));
}

TEST_F(CifFileTest, AMalformedLabelStopsTheList) {
    auto cif = open();
    LogCapture log(machine);
    CStdStringList lines;
    EXPECT_FALSE(cif->GetActions("Comp", "Broken", lines, true));
    EXPECT_TRUE(lines.empty());
    EXPECT_TRUE(log.Has("Incorrect Action format for action #2 ; Component=Comp, Section=Broken, "
                        "CIF=" +
                        path));
}

TEST_F(CifFileTest, RequirementLabelsCountOnceEvaluated) {
    auto cif = open();
    EXPECT_EQ((CStdStringList{"Run,both", "Run,alternatives", "Run,expr-mylabel", "[]Run,empty"}),
              actions(*cif, "Labels"));
    CifExtReq* requirements = cif->GetExtReq("Comp", "_ExtReq");
    ASSERT_NE(nullptr, requirements);
    ASSERT_TRUE(requirements->IsValid());
    ASSERT_EQ(1, requirements->IsExtReqSatisfied());
    EXPECT_EQ((CStdStringList{"Run,both", "Run,alternatives", "Run,expr-mylabel",
                              "Run,group-mylabel", "[]Run,empty"}),
              actions(*cif, "Labels"));
}

TEST_F(CifFileTest, RequirementsAreMadeOnceAndResolved) {
    auto cif = open();
    CifExtReq* memory = cif->GetExtReq("Memory", "_ExtReq");
    ASSERT_NE(nullptr, memory);
    EXPECT_EQ(memory, cif->GetExtReq("memory", "_EXTREQ"));
    EXPECT_EQ("128,NUM:GTE,256,,", memory->GetStatements().front());
    EXPECT_TRUE(memory->IsValid());
    EXPECT_EQ(0, memory->IsExtReqSatisfied());
    EXPECT_EQ("MSG_LOW_MEMORY", memory->GetErrorText());
    EXPECT_EQ(nullptr, cif->GetExtReq("Empty", "_ExtReq"));
    EXPECT_EQ(nullptr, cif->GetExtReq("Nobody", "_ExtReq"));
}

TEST_F(CifFileTest, ALanguageTextWithACommaStaysOneItem) {
    NlsFile::Reset();
    ASSERT_EQ(0u, os::CreateDirectory(machine.Path("nls")));
    WriteLines(machine, "nls\\en.nls", {"[Msgs]", "Hello=Hello, World"});
    ASSERT_TRUE(NlsFile::InitializeFromFiles(machine.Path("nls"), "en"));
    auto cif = open();
    CifExtReq* text = cif->GetExtReq("Text", "_ExtReq");
    ASSERT_NE(nullptr, text);
    EXPECT_TRUE(text->IsValid());
    EXPECT_EQ(1, text->IsExtReqSatisfied());
    EXPECT_EQ(CStdStringList{"SAME"}, text->GetLabels());
    NlsFile::Reset();
}

TEST_F(CifFileTest, OsValuesTakeTheFirstEntryOfTheName) {
    auto cif = open();
    auto* values = dynamic_cast<CifSection*>(cif->FindSection("Values"));
    ASSERT_NE(nullptr, values);
    LogCapture log(machine, logmask::CifGf | logmask::Info);
    CStdStr value = "untouched";
    ASSERT_TRUE(values->GetOSValue("first", value));
    EXPECT_EQ("xp-only", value);
    ASSERT_TRUE(values->GetOSValue("Plain", value));
    EXPECT_EQ("C:\\Target", value);
    ASSERT_TRUE(values->GetOSValue("Dup", value));
    EXPECT_EQ("one", value);
    ASSERT_TRUE(values->GetOSValue("[]Odd", value));
    EXPECT_EQ("odd", value);
    value = "untouched";
    EXPECT_FALSE(values->GetOSValue("Second", value));
    EXPECT_FALSE(values->GetOSValue("Odd", value));
    EXPECT_FALSE(values->GetOSValue("Mine", value));
    EXPECT_EQ("untouched", value);
    EXPECT_TRUE(log.Has("processing value first in section Values"));
    EXPECT_TRUE(log.Has(" -- Labels succeeded.  Value is xp-only"));
    EXPECT_TRUE(log.Has(" -- Labels failed!"));
}

struct LabelCase {
    const char* preset;
    bool enoughMemory;
    CStdStringList actions;
    CStdStringList labels;
    std::vector<std::pair<const char*, const char*>> values; // name, value ("" for none)
};

class CifFileOnSystems : public ::testing::TestWithParam<LabelCase> {
protected:
    void TearDown() override { RunState::Reset(); }
};

TEST_P(CifFileOnSystems, ListsAndValuesFollowTheSystem) {
    const LabelCase& expected = GetParam();
    TestMachine machine(expected.preset);
    CifFile cif(WriteLines(machine, "comp.cif", kCif));
    ASSERT_TRUE(cif.InitDefines(nullptr, "Comp"));
    cif.GetExtReq("Comp", "_ExtReq")->IsExtReqSatisfied();
    CStdStringList lines;
    ASSERT_TRUE(cif.GetActions("Comp", "_Actions", lines, false));
    EXPECT_EQ(expected.actions, lines);
    ASSERT_TRUE(cif.GetActions("Comp", "Labels", lines, true));
    EXPECT_EQ(expected.labels, lines);
    CifExtReq* memory = cif.GetExtReq("Sys", "_ExtReq");
    EXPECT_EQ(expected.enoughMemory ? 1 : 0, memory->IsExtReqSatisfied());
    EXPECT_EQ(expected.enoughMemory ? "" : "MSG_LOW_MEMORY", memory->GetErrorText());
    auto* values = dynamic_cast<CifSection*>(cif.FindSection("Values"));
    for (const auto& [name, value] : expected.values) {
        CStdStr found;
        EXPECT_EQ(*value != '\0', values->GetOSValue(name, found)) << name;
        EXPECT_EQ(value, found) << name;
    }
}

const CStdStringList kPlainActions{"File,COPY,C:\\Target\\a.txt", "Run,plain"};
const CStdStringList kTwinActions{"Run,sixtyfour"};

// Test names by preset, so that they are the same in every run of the binary.
template <typename Case>
std::string PresetName(const ::testing::TestParamInfo<Case>& info) {
    std::string name = info.param.preset;
    for (char& c : name) {
        c = c == '-' ? '_' : c;
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(
        CifSystems, CifFileOnSystems,
        ::testing::Values(
                LabelCase{"win2000",
                          true,
                          kPlainActions,
                          {"Run,both", "Run,alternatives", "[]Run,empty"},
                          {{"First", ""}, {"Second", "2k"}, {"Dup", ""}}},
                LabelCase{"xp",
                          true,
                          kPlainActions,
                          {"Run,both", "Run,alternatives", "Run,expr-mylabel", "Run,group-mylabel",
                           "[]Run,empty"},
                          {{"First", "xp-only"}, {"Second", ""}, {"Dup", "one"}}},
                LabelCase{"server2003",
                          true,
                          kPlainActions,
                          {"Run,both", "Run,alternatives", "[]Run,empty"},
                          {{"Second", "2k"}}},
                LabelCase{"server2003-x64",
                          true,
                          kTwinActions,
                          {"Run,both", "Run,alternatives", "Run,server64", "[]Run,empty"},
                          {{"Second", "2k"}, {"First", ""}}},
                LabelCase{"xp-x64",
                          true,
                          kTwinActions,
                          {"Run,both", "Run,alternatives", "Run,expr-mylabel", "Run,group-mylabel",
                           "[]Run,empty"},
                          {{"First", "xp-only"}}},
                // From Vista on every labelled entry is taken, but no action line.
                LabelCase{"vista",
                          true,
                          kPlainActions,
                          {"Run,vista", "[]Run,empty"},
                          {{"First", "xp-only"}, {"Second", "2k"}, {"Dup", "one"}, {"Mine", ""}}},
                LabelCase{"win98",
                          false,
                          kPlainActions,
                          {"[]Run,empty"},
                          {{"First", ""}, {"Plain", "C:\\Target"}}}),
        PresetName<LabelCase>);

} // namespace
