#include "script/OSInfo.h"
#include "support/TestMachine.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

struct PresetCase {
    const char* preset;
    int code;
    bool is64Bit;
    std::vector<const char*> tokens;
};

std::vector<PresetCase> Cases() {
    return {
            {"win95", 0, false, {"95", "9X", "X86", "NOSP"}},
            {"win98", 1, false, {"98", "9X", "X86", "NOSP"}},
            {"win98se", 2, false, {"98", "98SE", "9X", "X86", "NOSP"}},
            {"winme", 3, false, {"ME", "9X", "X86", "NOSP"}},
            {"nt4", 4, false, {"NT", "NT_XP", "NT_VISTA", "NT_WIN7", "X86", "NTSP6"}},
            {"win2000",
             5,
             false,
             {"2K", "2K_ONLY", "NT_XP", "2K_XP", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7",
              "X86", "2KSP4"}},
            {"xp",
             7,
             false,
             {"XP", "NT_XP", "2K_XP", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7", "XP_WIN7",
              "X86", "XPX86", "XPSP3"}},
            {"xp-x64",
             7,
             true,
             {"XP", "NT_XP", "2K_XP", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7", "XP_WIN7",
              "X64", "XPX64", "XPSP2"}},
            {"server2003",
             6,
             false,
             {"2K", "2K3", "NT_XP", "2K_XP", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7",
              "XP_WIN7", "X86", "2K3SP2"}},
            {"server2003-x64",
             6,
             true,
             {"2K", "2K3", "NT_XP", "2K_XP", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7",
              "XP_WIN7", "X64", "2K3X64", "2K3SP2"}},
            {"vista",
             9,
             false,
             {"VISTA", "VISTA_ONLY", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7", "XP_WIN7",
              "VISTA_WIN7", "FUTURE_OS", "X86", "VISTASP2"}},
            {"vista-x64",
             9,
             true,
             {"VISTA", "VISTA_ONLY", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7", "XP_WIN7",
              "VISTA_WIN7", "FUTURE_OS", "VISTA64", "X64", "VISTASP2"}},
            {"server2008",
             10,
             false,
             {"VISTA", "NT_VISTA", "2K_VISTA", "2K8", "NT_WIN7", "2K_WIN7", "XP_WIN7", "VISTA_WIN7",
              "FUTURE_OS", "X86", "2K8SP2"}},
            {"server2008-x64",
             10,
             true,
             {"VISTA", "NT_VISTA", "2K_VISTA", "2K8", "NT_WIN7", "2K_WIN7", "XP_WIN7", "VISTA_WIN7",
              "FUTURE_OS", "X64", "VISTA64", "2K8X64", "2K8SP2"}},
            {"win7",
             11,
             false,
             {"VISTA", "NT_VISTA", "2K_VISTA", "WIN7", "NT_WIN7", "2K_WIN7", "XP_WIN7",
              "VISTA_WIN7", "FUTURE_OS", "X86", "WIN7SP1"}},
            {"win7-x64",
             11,
             true,
             {"VISTA", "NT_VISTA", "2K_VISTA", "WIN7", "NT_WIN7", "2K_WIN7", "XP_WIN7",
              "VISTA_WIN7", "FUTURE_OS", "X64", "WIN7X64", "VISTA64", "WIN7SP1"}},
            {"win8", 12, false, {"FUTURE_OS", "X86", "NOSP"}},
            {"win8-x64", 12, true, {"FUTURE_OS", "FUTURE_OSX64", "X64", "NOSP"}},
    };
}

class OSInfoPresets : public ::testing::TestWithParam<PresetCase> {};

TEST_P(OSInfoPresets, EveryPresetGivesItsCodeAndTokens) {
    const PresetCase& expected = GetParam();
    TestMachine machine(expected.preset);
    OSInfo os;
    EXPECT_EQ(expected.code, os.GetOSCode());
    EXPECT_EQ(expected.is64Bit, os.Is64Bit());
    CStdStringList tokens;
    os.GetTokens(tokens);
    EXPECT_EQ(std::vector<CStdStr>(expected.tokens.begin(), expected.tokens.end()),
              std::vector<CStdStr>(tokens.begin(), tokens.end()));
}

INSTANTIATE_TEST_SUITE_P(AllPresets, OSInfoPresets, ::testing::ValuesIn(Cases()),
                         [](const ::testing::TestParamInfo<PresetCase>& info) {
                             std::string name = info.param.preset;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(OSInfo, ServicePackTokenFollowsTheMachine) {
    TestMachine machine("win7-x64", 0);
    EXPECT_EQ("WIN7NOSP", OSInfo().Tokens().back());
    EXPECT_TRUE(OSInfo().HasToken("win7x64"));
    EXPECT_TRUE(OSInfo().IsAtLeastVista());
}

TEST(OSInfo, APresetTextSkipsDetection) {
    TestMachine machine("xp");
    OSInfo named(CStdStr("x86"));
    EXPECT_EQ(-1, named.GetOSCode());
    EXPECT_EQ("x86", named.GetPresetText());
    EXPECT_EQ((CStdStringList{"NOSP"}), named.Tokens());
}

TEST(OSInfo, ACodeGivenByTheCaller) {
    TestMachine machine("win7");
    OSInfo nt = OSInfo::ForCode(OSInfo::NT4);
    EXPECT_EQ(4, nt.GetOSCode());
    EXPECT_EQ("NT", nt.Tokens().front());
    EXPECT_FALSE(nt.IsAtLeastVista());
}

} // namespace
