#include "script/CifDefine.h"

#include "CifTestSupport.h"
#include "core/ProductIni.h"
#include "core/RunState.h"
#include "os/Files.h"
#include "os/Process.h"
#include "script/IniFile.h"
#include "script/NlsFile.h"
#include "script/SystemPath.h"
#include "tools/VersionedImage.h"
#include "uninstall/UninstallLog.h"

#include <ctime>
#include <gtest/gtest.h>
#include <memory>

namespace {

using Defines = std::initializer_list<std::pair<const char*, const char*>>;

class CifDefineTest : public ::testing::Test {
protected:
    explicit CifDefineTest(const char* preset = "xp") : machine(preset) {}

    void TearDown() override {
        RunState::Reset();
        ProductIni::Unload();
        NlsFile::Reset();
    }

    // Language files in C:\Scratch\nls, loaded as English.
    void loadLanguage(std::initializer_list<const char*> lines) {
        ASSERT_EQ(0u, os::CreateDirectory(machine.Path("nls")));
        WriteLines(machine, "nls\\en.nls", lines);
        ASSERT_TRUE(NlsFile::InitializeFromFiles(machine.Path("nls"), "en"));
    }

    // A define table over `script` (an empty script when none was read).
    std::unique_ptr<CifDefine> make(Defines defines, bool componentFile = false) {
        CifDefine::DefineMap raw;
        for (const auto& [name, value] : defines) {
            raw[name] = value;
        }
        return std::make_unique<CifDefine>(raw, script, componentFile);
    }

    void readScript(std::initializer_list<const char*> lines) {
        std::string path = WriteLines(machine, "setup.isf", lines);
        ASSERT_TRUE(script.Read(path));
        script.SetFileName(path);
    }

    static CStdStr resolve(CifDefine& defines, const char* text, const char* section = "") {
        CStdStr value = text;
        EXPECT_TRUE(defines.resolveStrDefine(value, section)) << text;
        return value;
    }

    // One define value evaluated as the table does it: true and the result, or false.
    static bool call(CifDefine& defines, const char* text, CStdStr& result,
                     const char* section = "") {
        result = text;
        return defines.resolveDefine("F", result, section);
    }
    static CStdStr call(CifDefine& defines, const char* text, const char* section = "") {
        CStdStr result;
        EXPECT_TRUE(call(defines, text, result, section)) << text;
        return result;
    }

    TestMachine machine;
    IniFile script;
};

TEST_F(CifDefineTest, DefinesReferToEachOtherInAnyDepth) {
    auto defines = make({{"A", "x$B$y"}, {"B", "[$C$]"}, {"C", "deep"}});
    EXPECT_EQ("x[deep]y", resolve(*defines, "$A$"));
    EXPECT_EQ("x[deep]y", defines->GetResolved().at("$A$"));
    EXPECT_EQ("x[deep]y and [deep]", resolve(*defines, "$a$ and $B$"));
}

TEST_F(CifDefineTest, ACycleOfReferencesFailsInsteadOfNeverEnding) {
    LogCapture log(machine);
    auto defines = make({{"SELF", "x$SELF$"},
                         {"PING", "<ExistFile,$PONG$>"},
                         {"PONG", "$ping$"},
                         {"FINE", "ok"},
                         {"LOOSE", "$INSTALL_DIR$\\$LOOSE$"}});
    // The table leaves the cycles out and keeps the rest.
    EXPECT_EQ(0u, defines->GetResolved().count("$SELF$"));
    EXPECT_EQ(0u, defines->GetResolved().count("$PING$"));
    EXPECT_EQ("ok", defines->GetResolved().at("$FINE$"));
    EXPECT_TRUE(log.Has("CifDefine::resolveDefine: define $SELF$ refers to itself"));
    CStdStr value = "$PONG$";
    EXPECT_FALSE(defines->resolveStrDefine(value, ""));
    // A mutable define in a cycle fails once a section gives it a value.
    value = "$LOOSE$";
    EXPECT_FALSE(defines->resolveStrDefine(value, "Comp"));

    readScript({"[Install]", "InstallDir=$INSTALL_DIR$\\again"});
    auto scripted = make({});
    value = "$INSTALL_DIR$";
    EXPECT_FALSE(scripted->resolveStrDefine(value, "Comp"));
}

TEST_F(CifDefineTest, AValueThatBringsBackItsOwnReferenceStops) {
    loadLanguage({"[Global]", "LOOP=and %LOOP% again"});
    std::string ini = WriteLines(machine, "loop.ini", {"[S]", "K=$ECHO$"});
    CStdStr echo = ("<ReadIni," + ini + ",S,K,>").c_str();
    auto defines = make({{"ECHO", echo.c_str()}});
    LogCapture log(machine);
    CStdStr value = "$ECHO$";
    EXPECT_FALSE(defines->resolveStrDefine(value, ""));
    value = "say %LOOP%";
    EXPECT_FALSE(defines->resolveStrDefine(value, ""));
    EXPECT_TRUE(log.Has("CifDefine::resolveStrDefine: String define -- say %LOOP% -- does not "
                        "come to an end"));
    // Many references of one string are not a loop.
    CStdStr many;
    for (int index = 0; index < 1000; ++index) {
        many += "%Global.LOOP_FREE%";
    }
    EXPECT_TRUE(defines->resolveStrDefine(many, ""));
}

// Scripts are not trusted: a define table of any shape is built in bounded time and stack.
// A chain of 20,000 defines takes well under a second of processor time (measured so, since the
// machine may be shared); sanitizer builds run slower.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kChainBudget = 6.0;
#else
constexpr double kChainBudget = 1.0;
#endif

TEST_F(CifDefineTest, LongChainsOfDefinesResolveQuicklyAndWithoutDeepRecursion) {
    constexpr int kLength = 20000;
    CifDefine::DefineMap chain{{"D0", "x"}};
    CifDefine::DefineMap cycle;
    CifDefine::DefineMap mutableChain{{"M0", "$INSTALL_DIR$"}};
    for (int index = 1; index <= kLength; ++index) {
        chain[CStdStr::Formatted("D%d", index)] = CStdStr::Formatted("$D%d$x", index - 1);
        mutableChain[CStdStr::Formatted("M%d", index)] = CStdStr::Formatted("$M%d$y", index - 1);
        cycle[CStdStr::Formatted("C%d", index)] =
                CStdStr::Formatted("$C%d$", index == 1 ? kLength : index - 1);
    }
    readScript({"[Comp]", "InstallDir=C:\\Comp"});
    auto timed = [](auto work) {
        std::clock_t start = std::clock();
        work();
        return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    };

    EXPECT_LT(timed([&] {
                  CifDefine chained(chain, script, false);
                  EXPECT_EQ(CStdStr(kLength + 1, 'x'),
                            chained.GetResolved().at(CStdStr::Formatted("$D%d$", kLength)));
                  CStdStr text = CStdStr::Formatted("[$D%d$]", kLength);
                  ASSERT_TRUE(chained.resolveStrDefine(text, ""));
                  EXPECT_EQ(static_cast<size_t>(kLength + 3), text.size());
              }),
              kChainBudget);
    // A cycle through all of them fails for each, and fast.
    EXPECT_LT(timed([&] {
                  CifDefine cyclic(cycle, script, false);
                  EXPECT_TRUE(cyclic.GetResolved().empty());
              }),
              kChainBudget);
    // A chain that only a component can resolve is resolved deepest first too.
    EXPECT_LT(timed([&] {
                  CifDefine changing(mutableChain, script, false);
                  EXPECT_EQ(static_cast<size_t>(kLength + 1), changing.GetMutableNames().size());
                  CStdStr inComp = CStdStr::Formatted("$M%d$", kLength);
                  ASSERT_TRUE(changing.resolveStrDefine(inComp, "Comp"));
                  EXPECT_EQ("C:\\Comp" + CStdStr(kLength, 'y'), inComp);
              }),
              kChainBudget);
}

TEST_F(CifDefineTest, AValueThatDoublesAtEachStepStopsAtTheLengthLimit) {
    LogCapture log(machine);
    CifDefine::DefineMap doubling{{"D0", "ab"}};
    for (int index = 1; index <= 40; ++index) {
        doubling[CStdStr::Formatted("D%d", index)] =
                CStdStr::Formatted("$D%d$$D%d$", index - 1, index - 1);
    }
    CifDefine defines(doubling, script, false);
    // 2 << 15 characters stand at the limit; the next step passes it.
    EXPECT_EQ(CifDefine::kMaxValueLength, defines.GetResolved().at("$D15$").size());
    EXPECT_EQ(0u, defines.GetResolved().count("$D16$"));
    EXPECT_EQ(0u, defines.GetResolved().count("$D40$"));
    EXPECT_TRUE(log.Has("-- grows beyond 65536 characters"));
    CStdStr text = "$D40$";
    EXPECT_FALSE(defines.resolveStrDefine(text, ""));
}

TEST_F(CifDefineTest, LoneDollarsAndUnknownNames) {
    auto defines = make({{"A", "1"}});
    EXPECT_EQ("costs $5", resolve(*defines, "costs $5"));
    EXPECT_EQ("1 and $5", resolve(*defines, "$A$ and $5"));
    // A name that no one defines reads as empty.
    EXPECT_EQ("[]", resolve(*defines, "[$NOBODY$]"));
}

TEST_F(CifDefineTest, MutableDefinesNeedASection) {
    auto defines = make({{"BIN", "$INSTALL_DIR$\\bin"}, {"PLAIN", "x"}, {"COPY", "$BIN$"}});
    EXPECT_TRUE(defines->IsMutable("BIN"));
    EXPECT_TRUE(defines->IsMutable(" $copy$ "));
    EXPECT_TRUE(defines->IsMutable("CURRENT_COMP"));
    EXPECT_TRUE(defines->IsMutable("$ISF_FILE$"));
    EXPECT_FALSE(defines->IsMutable("PLAIN"));
    EXPECT_EQ(0u, defines->GetResolved().count("$BIN$"));
    EXPECT_EQ((CStdStringList{"BIN", "COPY"}), defines->GetMutableNames());
    // Without a section, whatever else the string holds, it is the marker as a whole.
    EXPECT_EQ("MUTABLE_DEF", resolve(*defines, "before $PLAIN$ $BIN$ after"));
    EXPECT_EQ("MUTABLE_DEF", resolve(*defines, "$CURRENT_COMP$"));
}

TEST_F(CifDefineTest, InstallDirIsStoredWithoutItsBackslashAndIsTheDefault) {
    auto defines = make({{"INSTALL_DIR", "C:\\Foo\\"}, {"BIN", "$INSTALL_DIR$\\bin"}});
    EXPECT_EQ("C:\\Foo", defines->GetResolved().at("$INSTALL_DIR$"));
    EXPECT_EQ("C:\\Foo\\bin", resolve(*defines, "$BIN$", "MyComp"));
    CStdStr value;
    ASSERT_TRUE(defines->GetBuiltinDefine("INSTALL_DIR", value));
    EXPECT_EQ("C:\\Foo", value);
}

TEST_F(CifDefineTest, InstallDirOfTheScriptForTheSection) {
    readScript({"[Install]", "MyComp=1", "InstallDir=D:\\General\\", "[MyComp]",
                "InstallDir=$BASE$\\Mine", "[Other]", "Sub=1"});
    auto defines = make({{"INSTALL_DIR", "C:\\Foo"}, {"BASE", "E:"}});
    EXPECT_EQ("E:\\Mine", resolve(*defines, "$INSTALL_DIR$", "MyComp"));
    EXPECT_EQ("E:\\Mine", resolve(*defines, "$INSTALL_DIR$", "MyComp#Second"));
    EXPECT_EQ("D:\\General", resolve(*defines, "$INSTALL_DIR$", "Other"));
}

TEST_F(CifDefineTest, InstallDirFallsBackToTheProductFolder) {
    std::string product = WriteLines(machine, "product.ini",
                                     {"[GENERAL]", "DisplayName=Acme Printing", "ProductKey=AC"});
    ASSERT_TRUE(ProductIni::LoadProductIni(product));
    auto defines = make({});
    EXPECT_EQ("C:\\Program Files\\Acme Printing", resolve(*defines, "$INSTALL_DIR$", "Comp"));
    CStdStr value;
    ASSERT_TRUE(defines->GetBuiltinDefine("PRODUCT_KEY", value));
    EXPECT_EQ("AC", value);
}

TEST_F(CifDefineTest, CurrentComponentAndScriptFile) {
    readScript({"[Install]", "Printer=1", "[Printer]", "Sub=1"});
    RunState::SetScriptPath("C:\\Setup\\setup.isf");
    auto defines = make({});
    EXPECT_EQ("Printer", resolve(*defines, "$CURRENT_COMP$", "Printer"));
    EXPECT_EQ("Printer", resolve(*defines, "$CURRENT_COMP$", "Printer#Two"));
    EXPECT_EQ("Parent", resolve(*defines, "$CURRENT_COMP$", "Parent.Child"));
    EXPECT_EQ("C:\\Setup\\setup.isf", resolve(*defines, "$ISF_FILE$", "Printer"));
    RunState::SetScriptPath("");
    EXPECT_EQ(script.GetFileName(), resolve(*defines, "$ISF_FILE$", "Printer"));
}

TEST_F(CifDefineTest, InAComponentFileTheCurrentComponentNamesItsLists) {
    readScript({"[Install]", "Printer=1"});
    RunState::SetCurrentComponent("Printer");
    auto cif = make({}, true);
    EXPECT_EQ("Printer", resolve(*cif, "$CURRENT_COMP$", "Printer_Actions"));
    auto isf = make({}, false);
    EXPECT_EQ("Printer_Actions", resolve(*isf, "$CURRENT_COMP$", "Printer_Actions"));
}

TEST_F(CifDefineTest, AMutableDefineIsEvaluatedForEachSection) {
    readScript({"[A]", "InstallDir=C:\\A", "[B]", "InstallDir=C:\\B"});
    auto defines = make({{"LOG", "$INSTALL_DIR$\\$CURRENT_COMP$.log"}});
    CStdStr value;
    ASSERT_TRUE(defines->GetMutableDefine("A", "$LOG$", value));
    EXPECT_EQ("C:\\A\\A.log", value);
    ASSERT_TRUE(defines->GetMutableDefine("B", " LOG ", value));
    EXPECT_EQ("C:\\B\\B.log", value);
    EXPECT_FALSE(defines->GetMutableDefine("A", "UNKNOWN", value));
}

TEST_F(CifDefineTest, GetDefineAnswersWhatASectionValueMeans) {
    readScript({"[Comp]", "InstallDir=C:\\Comp"});
    auto defines = make({{"INSTALL_DIR", "C:\\Default"}, {"X", "1"}});
    CStdStr value;
    ASSERT_TRUE(defines->GetDefine("$X$", "Comp", value));
    EXPECT_EQ("1", value);
    ASSERT_TRUE(defines->GetDefine("$INSTALL_DIR$", "Comp", value));
    EXPECT_EQ("C:\\Comp", value);
    ASSERT_TRUE(defines->GetDefine("INSTALL_DIR", "", value));
    EXPECT_EQ("C:\\Default", value);
    EXPECT_TRUE(defines->GetDefine("$OEM_PRODUCT$", "Comp", value));
    EXPECT_EQ("^OEM_PRODUCT^", value);
    EXPECT_FALSE(defines->GetDefine("$NOBODY$", "Comp", value));
}

TEST_F(CifDefineTest, StandardDefinesAsAReplacementTable) {
    std::string product = WriteLines(machine, "product.ini", {"[GENERAL]", "ProductKey=KEY1"});
    ASSERT_TRUE(ProductIni::LoadProductIni(product));
    auto defines = make({});
    std::map<CStdStr, CStdStr> table;
    defines->CopyStandardDefines(table);
    EXPECT_EQ(22u, table.size());
    EXPECT_EQ("KEY1", table.at("$PRODUCT_KEY$"));
    EXPECT_EQ("^OEM_PRODUCT^", table.at("$OEM_PRODUCT$"));
    EXPECT_EQ(1u, table.count("$WINDOWS_DIR$"));
    EXPECT_EQ(1u, table.count("$DRIVER_CAB$"));
    EXPECT_EQ(0u, table.count("$INSTALL_DIR$"));
}

TEST_F(CifDefineTest, AFailedDefineIsLeftOutOfTheTable) {
    LogCapture log(machine, logmask::CifGf | logmask::Cgf);
    auto defines = make({{"BAD", "<ReadReg,HKLM,Software\\None,V,StopOnFail>"}, {"GOOD", "g"}});
    EXPECT_EQ(0u, defines->GetResolved().count("$BAD$"));
    EXPECT_EQ("g", defines->GetResolved().at("$GOOD$"));
    EXPECT_TRUE(log.Has("Value to resolve: BAD-<ReadReg,HKLM,Software\\None,V,StopOnFail> "
                        "(defineVal)"));
    EXPECT_TRUE(log.Has("Value for the current define: BAD-"));
    EXPECT_TRUE(log.Has("Define:GOOD ResolvedValue:g"));
    // Used in a string, it stops the string.
    CStdStr text = "x$BAD$";
    EXPECT_FALSE(defines->resolveStrDefine(text, ""));
    EXPECT_TRUE(log.Has("CifDefine::resolveStrDefine: String define -- x$BAD$ -- could not be "
                        "resolved for $BAD$"));
}

TEST_F(CifDefineTest, LanguageTextsKeepTheirCommasEscaped) {
    loadLanguage({"[Msgs]", "Hello=Hello, World", "[Global]", "Plain=plain", "TEMP=not a path"});
    auto defines = make({{"GREETING", "%Msgs.Hello%"}, {"BOTH", "$GREETING$ / %Plain%"}});
    EXPECT_EQ("Hello\\, World", defines->GetResolved().at("$GREETING$"));
    EXPECT_EQ("Hello\\, World / plain", defines->GetResolved().at("$BOTH$"));
    EXPECT_EQ("Say Hello\\, World and plain and ",
              resolve(*defines, "Say %Msgs.Hello% and %Plain% and %Missing%"));
    EXPECT_EQ("100% sure", resolve(*defines, "100% sure"));
    // The argument of ReadEnv names the environment, not a text.
    std::string temp;
    ASSERT_EQ(0u, os::GetEnvironmentVariable("TEMP", temp));
    EXPECT_EQ(temp, call(*defines, "<ReadEnv,%TEMP%>"));
    EXPECT_EQ("en", resolve(*defines, "$LANGUAGE$"));
}

TEST_F(CifDefineTest, BuiltInDefinesOfTheMachine) {
    auto defines = make({{"SYSTEM_DIR", "shadowed"}});
    EXPECT_EQ("C:\\WINDOWS\\system32 512 x86 FALSE",
              resolve(*defines, "$SYSTEM_DIR$ $SYSTEM_MEMORY$ $OS_ARCH$ $IS_OS_NT$"));
    CStdStr value;
    ASSERT_TRUE(defines->GetBuiltinDefine("$windows_dir$", value));
    EXPECT_EQ("C:\\WINDOWS", value);
    EXPECT_FALSE(defines->GetBuiltinDefine("NOT_BUILT_IN", value));
}

TEST_F(CifDefineTest, ValuesOfTheUninstallLog) {
    UninstallLog log(UninstallLog::StartEmpty);
    log.SetProduct(UninstallLog::Global().GetProduct());
    log.SetManufacturer(UninstallLog::Global().GetManufacturer());
    ASSERT_TRUE(log.SetSpecial("Printer", "Version", "1.2.3"));
    ASSERT_TRUE(log.Commit());
    auto defines = make({{"COMP", "Printer"}});
    EXPECT_EQ("1.2.3", call(*defines, "<ReadUlf,$COMP$,Version>"));
    EXPECT_EQ("", call(*defines, "<ReadUlf,$COMP$,Nothing>"));
    EXPECT_EQ("", call(*defines, "<ReadUlf,Scanner,Version>"));
    EXPECT_FALSE(defines->IsComponentInstalled("Printer"));
    CStdStr result;
    EXPECT_FALSE(call(*defines, "<ReadUlf,Printer>", result));
}

TEST_F(CifDefineTest, ComponentsThatTheLogHolds) {
    UninstallLog log(UninstallLog::StartEmpty);
    log.SetProduct(UninstallLog::Global().GetProduct());
    log.SetManufacturer(UninstallLog::Global().GetManufacturer());
    ASSERT_TRUE(log.AddComponent("Printer", UninstallLog::kRoot, false));
    ASSERT_TRUE(log.Commit());
    auto defines = make({});
    EXPECT_TRUE(defines->IsComponentInstalled("Printer"));
    EXPECT_FALSE(defines->IsComponentInstalled("Scanner"));
    EXPECT_FALSE(defines->IsComponentInstalled(""));
}

TEST_F(CifDefineTest, TheFolderOfTheBestLanguage) {
    loadLanguage({"[Global]", "x=1"});
    ASSERT_EQ(0u, os::CreateDirectory(machine.Path("docs")));
    for (const char* folder : {"de", "EN", "fr"}) {
        ASSERT_EQ(0u, os::CreateDirectory(machine.Path("docs\\") + folder));
    }
    ASSERT_TRUE(TestMachine::WriteFile(machine.Path("docs\\en.txt"), "a file, not a folder"));
    auto defines = make({{"DOCS", machine.Path("docs").c_str()}});
    EXPECT_EQ("EN", call(*defines, "<GetLanguageDir,$DOCS$>"));
    // No folder suits: the current language.
    EXPECT_EQ("en", call(*defines, "<GetLanguageDir,$DOCS$\\de>"));
}

TEST_F(CifDefineTest, FunctionCallsTolerateBlanksAndBrackets) {
    auto defines = make({});
    EXPECT_EQ("b", call(*defines, "< GetToken , a;b;c , 1 , ; >  "));
    // Only a value that begins with "<" is a call.
    EXPECT_EQ(" <GetToken,a;b;c,1,;>", call(*defines, " <GetToken,a;b;c,1,;>"));
    EXPECT_EQ("", call(*defines, "<NoSuchFunction,1,2>"));
    EXPECT_EQ("", call(*defines, "<>"));
}

TEST_F(CifDefineTest, TokensByIndexAndByText) {
    auto defines = make({{"LIST", "red,Green,blue"}});
    EXPECT_EQ("b", call(*defines, "<GetToken,a;b;c,1,;>"));
    EXPECT_EQ("", call(*defines, "<GetToken,a;b;c,-1,;>"));
    EXPECT_EQ("", call(*defines, "<GetToken,a;b;c,3,;>"));
    EXPECT_EQ("blue", call(*defines, "<GetToken,$LIST$,2>"));
    EXPECT_EQ("red", call(*defines, "<GetToken,$LIST$>"));
    EXPECT_EQ("DEF-y", call(*defines, "<FindToken,ABC-x;DEF-y,def,;>"));
    EXPECT_EQ("Green", call(*defines, "<FindToken,$LIST$,REE>"));
    EXPECT_EQ("", call(*defines, "<FindToken,$LIST$,pink>"));
    EXPECT_EQ("", call(*defines, "<FindToken,,x>"));
}

TEST_F(CifDefineTest, ChoicesAndComparisons) {
    auto defines = make({{"YES", "true"}, {"WORD", "$NAME$"}, {"NAME", "chosen"}});
    EXPECT_EQ("first", call(*defines, "<SetVarInLine,$YES$,first,second>"));
    EXPECT_EQ("second", call(*defines, "<SetVarInLine,no,first,second>"));
    EXPECT_EQ("[chosen]", call(*defines, "<SetVarInLine,TRUE,[$NAME$],x>"));
    EXPECT_EQ("TRUE", call(*defines, "<SetLabel,10,NUM:GT,9>"));
    EXPECT_EQ("FALSE", call(*defines, "<SetLabel,abc,STR:HAS,b>"));
    EXPECT_EQ("TRUE", call(*defines, "<SetLabel,$NAME$,STR:EQ,CHOSEN>"));
    EXPECT_EQ("FALSE", call(*defines, "<SetLabel>"));
}

TEST_F(CifDefineTest, WrongArgumentCountsStopTheCaller) {
    LogCapture log(machine);
    auto defines = make({});
    struct Case {
        const char* call;
        const char* function;
    };
    const Case cases[] = {
            {"<ReadReg,HKLM,Key,Value>", "ReadReg"},
            {"<ReadReg,HKLM,Key,Value,NoStopOnFail,d,extra>", "ReadReg"},
            {"<ReadIni,file,section>", "ReadIni"},
            {"<ReadIsf,section>", "ReadIsf"},
            {"<ReadFileVer>", "ReadFileVer"},
            {"<ReadEnv,a,b>", "ReadFileEnv"},
            {"<ExistFile>", "ExistFile"},
            {"<GetPrinterInfo,p,InfFile>", "GetPrinterInfo"},
            {"<ExistReg,HKLM>", "ExistReg"},
            {"<SetVarInLine,TRUE,a>", "SetVarInLine"},
            {"<SetLabel,1,NUM:EQ,1,x>", "SetLabel"},
            {"<ShortName,a,b>", "ShortName"},
            {"<VerifyHostName,host>", "VerifyHostName"},
            {"<GetLanguageDir>", "GetLanguageDir"},
    };
    for (const Case& wrong : cases) {
        CStdStr result;
        EXPECT_FALSE(call(*defines, wrong.call, result)) << wrong.call;
        EXPECT_TRUE(log.Has(std::string("CifDefine::getDefine: Wrong number of parms for <") +
                            wrong.function + "> define function."))
                << wrong.call;
    }
    // The list functions pad their items instead.
    EXPECT_EQ("", call(*defines, "<GetToken>"));
    EXPECT_EQ("", call(*defines, "<FindToken,a,b,c,d,e>"));
}

TEST_F(CifDefineTest, RegistryValuesAndTheirFailModes) {
    Registry registry;
    ASSERT_TRUE(
            registry.WriteValue("HKLM", "Software\\CifTest", "Count", RegistryValue::Dword(42)));
    ASSERT_TRUE(registry.WriteValue("HKLM", "Software\\CifTest", "Name",
                                    RegistryValue::String("Some, Name")));
    auto defines = make({{"ROOT", "HKLM"}, {"KEY", "Software\\CifTest"}});
    EXPECT_EQ("42", call(*defines, "<ReadReg,$ROOT$,$KEY$,Count,NoStopOnFail>"));
    EXPECT_EQ("Some, Name", call(*defines, "<ReadReg,HKLM,$KEY$,Name,StopOnFail>"));
    EXPECT_EQ("C:\\Program Files",
              call(*defines, "<ReadReg,HKLM,SOFTWARE\\Microsoft\\Windows\\CurrentVersion,"
                             "ProgramFilesDir,StopOnFail>"));

    EXPECT_EQ("", call(*defines, "<ReadReg,HKLM,Software\\None,Value,NoStopOnFail>"));
    EXPECT_EQ("", call(*defines, "<ReadReg,HKLM,Software\\None,Value,SomethingElse,x>"));
    EXPECT_EQ("x", call(*defines, "<ReadReg,HKLM,Software\\None,Value,SetOnFail,x>"));
    EXPECT_EQ("Software\\CifTest",
              call(*defines, "<ReadReg,HKLM,Software\\None,Value,setonfail,$KEY$>"));
    LogCapture log(machine);
    CStdStr result;
    EXPECT_FALSE(call(*defines, "<ReadReg,HKLM,Software\\None,Value,SetOnFail>", result));
    EXPECT_FALSE(call(*defines, "<ReadReg,HKLM,Software\\None,Value,StopOnFail,x>", result));
    EXPECT_TRUE(log.Has("CifDefine::getDefine: <ReadReg> define function failed "
                        "for(HKLM,Software\\None,Value)"));
}

TEST_F(CifDefineTest, RegistryTests) {
    auto defines = make({});
    const char* key = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
    EXPECT_EQ("TRUE", call(*defines, CStdStr::Formatted("<ExistReg,HKLM,%s>", key).c_str()));
    EXPECT_EQ("TRUE", call(*defines,
                           CStdStr::Formatted("<ExistReg,HKLM,%s,ProgramFilesDir>", key).c_str()));
    EXPECT_EQ("FALSE",
              call(*defines, CStdStr::Formatted("<ExistReg,HKLM,%s,NoSuchValue>", key).c_str()));
    EXPECT_EQ("FALSE", call(*defines, "<ExistReg,HKLM,Software\\NoSuchKey,>"));
}

TEST_F(CifDefineTest, IniFilesAndTheirDefaults) {
    std::string ini =
            WriteLines(machine, "data.ini", {"[Main]", "Color=Blue", "Empty=", "Odd=ReadIni,x"});
    auto defines = make({{"INI", ini.c_str()}});
    EXPECT_EQ("Blue", call(*defines, "<ReadIni,$INI$,Main,Color>"));
    EXPECT_EQ("Blue", call(*defines, "<ReadIni,$INI$,main,COLOR,StopOnFail>"));
    EXPECT_EQ("", call(*defines, "<ReadIni,$INI$,Main,Missing>"));
    EXPECT_EQ("", call(*defines, "<ReadIni,$INI$,Main,Empty,NoStopOnFail>"));
    EXPECT_EQ("dflt", call(*defines, "<ReadIni,$INI$,Main,Missing,NoStopOnFail,dflt>"));
    EXPECT_EQ("dflt", call(*defines, "<ReadIni,$INI$,Main,Odd,NoStopOnFail,dflt>"));
    EXPECT_EQ("ReadIni,x", call(*defines, "<ReadIni,$INI$,Main,Odd,NoStopOnFail>"));
    EXPECT_EQ("dflt", call(*defines, "<ReadIni,C:\\none.ini,Main,Color,SetOnFail,dflt>"));
    LogCapture log(machine);
    CStdStr result;
    EXPECT_FALSE(call(*defines, "<ReadIni,$INI$,Main,Missing,SetOnFail>", result));
    EXPECT_FALSE(call(*defines, "<ReadIni,$INI$,Main,Missing,StopOnFail>", result));
    EXPECT_TRUE(log.Has(CStdStr::Formatted(
            "CifDefine::getDefine: <ReadIni> define function failed for (%s,Main,Missing)",
            ini.c_str())));
}

TEST_F(CifDefineTest, ScriptSectionsAndTheirKeys) {
    readScript({"[A]", "One=1", "Two=0", "Three=x", "[B]", "Four=4", "[Comp]", "Local=here",
                "[Empty]", "Zero=0"});
    auto defines = make({});
    EXPECT_EQ("1|0|x|4", call(*defines, "<ReadIsf,A|B,AllKeys>"));
    EXPECT_EQ("One|Three|Four", call(*defines, "<ReadIsf,A|B,AllKeyNames>"));
    EXPECT_EQ("x", call(*defines, "<ReadIsf,A,Three>"));
    // A section the script lacks stands for the section being read.
    EXPECT_EQ("here", call(*defines, "<ReadIsf,Nowhere,Local>", "Comp"));
    // A section or key that is missing clears what was gathered; later ones add again.
    EXPECT_EQ("4", call(*defines, "<ReadIsf,A|Nowhere|B,Four,NoStopOnFail>"));
    EXPECT_EQ("", call(*defines, "<ReadIsf,Empty,AllKeyNames>"));
    LogCapture log(machine);
    CStdStr result;
    EXPECT_FALSE(call(*defines, "<ReadIsf,A|Nowhere,One,StopOnFail>", result));
    EXPECT_TRUE(log.Has("CifDefine::getDefine: <ReadIsf> define function failed for "
                        "(Nowhere,One)"));
    EXPECT_FALSE(call(*defines, "<ReadIsf,A,Missing,StopOnFail>", result));
    EXPECT_FALSE(call(*defines, "<ReadIsf,Empty,AllKeyNames,StopOnFail>", result));
}

TEST_F(CifDefineTest, EnvironmentIsExpandedAsWritten) {
    auto defines = make({{"TEMP", "not this"}});
    CStdStr expected;
    {
        std::string expanded;
        ASSERT_EQ(0u, os::ExpandEnvironmentStrings("%TEMP%", expanded));
        expected = expanded + "\\x";
    }
    EXPECT_NE("%TEMP%\\x", expected);
    EXPECT_EQ(expected, call(*defines, "<ReadEnv,%TEMP%\\x>"));
    EXPECT_EQ("%NO_SUCH_VARIABLE%", call(*defines, "<ReadEnv,%NO_SUCH_VARIABLE%>"));
}

TEST_F(CifDefineTest, FilesAndShortNames) {
    ASSERT_TRUE(TestMachine::WriteFile(machine.Path("there.txt"), "x"));
    auto defines = make({{"DIR", machine.Scratch().c_str()}});
    EXPECT_EQ("TRUE", call(*defines, "<ExistFile,$DIR$\\there.txt>"));
    EXPECT_EQ("TRUE", call(*defines, "<ExistFile,$DIR$>"));
    EXPECT_EQ("FALSE", call(*defines, "<ExistFile,$DIR$\\missing.txt>"));
    EXPECT_EQ("C:\\PROGRA~1", call(*defines, "<ShortName,C:\\Program Files>"));
    LogCapture log(machine);
    EXPECT_EQ("C:\\No Such Folder", call(*defines, "<ShortName,C:\\No Such Folder>"));
    EXPECT_TRUE(log.Has("CifDefine::getDefine: GetShortPathName failed with code 2"));
}

TEST_F(CifDefineTest, FileVersions) {
    std::string dll = machine.Path("driver.dll");
    ASSERT_TRUE(TestMachine::WriteFile(
            dll, peimage::PeImage(peimage::WithFileVersion("6.1.7600.16385"))));
    ASSERT_TRUE(TestMachine::WriteFile(machine.Path("plain.txt"), "no version here"));
    auto defines = make({{"DIR", machine.Scratch().c_str()}});
    EXPECT_EQ("6.1.7600.16385", call(*defines, "<ReadFileVer,$DIR$\\driver.dll>"));
    EXPECT_EQ("", call(*defines, "<ReadFileVer,$DIR$\\plain.txt>"));
    EXPECT_EQ("", call(*defines, "<ReadFileVer,$DIR$\\missing.dll>"));
}

TEST_F(CifDefineTest, HostNamesWithoutAHelperLibraryStayAsTheyAre) {
    auto defines = make({{"HOST", "PRINTSRV"}, {"NONE", ""}});
    EXPECT_EQ("PRINTSRV", call(*defines, "<VerifyHostName,$HOST$,$NONE$>"));
    LogCapture log(machine);
    EXPECT_EQ("PRINTSRV", call(*defines, "<VerifyHostName,$HOST$,printsrv.example>"));
    EXPECT_TRUE(log.Has("Can't locate *hcp.dll in : "));
}

TEST_F(CifDefineTest, HostNamesWithAHelperLibraryThatDoesNotLoad) {
    // A simulated machine runs no library code: a helper that is found cannot be called, and
    // the host stays.
    SystemPath::SetApplicationDirectoryOverride(machine.Scratch());
    ASSERT_EQ(0u, os::CreateDirectory(machine.Path("x86")));
    ASSERT_TRUE(TestMachine::WriteFile(machine.Path("x86\\printhcp.dll"), "MZ"));
    auto defines = make({});
    LogCapture log(machine, logmask::CifGf);
    EXPECT_EQ("HOST", call(*defines, "<VerifyHostName,HOST,other>"));
    EXPECT_TRUE(log.Has("Calling ResolveHostName using : " + machine.Path("x86\\printhcp.dll")));
    SystemPath::SetApplicationDirectoryOverride("");
}

TEST_F(CifDefineTest, PrinterInformationHasNoModelDataYet) {
    auto defines = make({});
    EXPECT_EQ("", call(*defines, "<GetPrinterInfo,Model X,InfFile,NoStopOnFail,x86>"));
    EXPECT_EQ("", call(*defines, "<GetPrinterInfo,Model X,Other,SetOnFail>"));
    EXPECT_EQ("MUTABLE_DEF",
              call(*defines, "<GetPrinterInfo,Model X,InfFile,NoStopOnFail,$CURRENT_COMP$>"));
    LogCapture log(machine);
    CStdStr result;
    EXPECT_FALSE(call(*defines, "<GetPrinterInfo,Model X,InfFile,StopOnFail>", result));
    EXPECT_TRUE(log.Has("CifDefine::getDefine: <GetPrinterInfo> define function failed "
                        "for(Model X,InfFile)"));
}

TEST_F(CifDefineTest, AMutableArgumentMakesTheCallMutable) {
    readScript({"[Comp]", CStdStr("InstallDir=" + machine.Path("Target")).c_str()});
    auto defines = make({{"THERE", "<ExistFile,$INSTALL_DIR$\\app.exe>"}});
    EXPECT_TRUE(defines->IsMutable("THERE"));
    EXPECT_EQ("MUTABLE_DEF", call(*defines, "<SetVarInLine,$THERE$,a,b>"));
    EXPECT_EQ("b", call(*defines, "<SetVarInLine,$THERE$,a,b>", "Comp"));
    ASSERT_EQ(0u, os::CreateDirectory(machine.Path("Target")));
    ASSERT_TRUE(TestMachine::WriteFile(machine.Path("Target\\app.exe"), "x"));
    EXPECT_EQ("a", call(*defines, "<SetVarInLine,$THERE$,a,b>", "Comp"));
}

struct PresetCase {
    const char* preset;
    const char* windows;
    const char* shortProgramFiles;
};

class CifDefinePresets : public ::testing::TestWithParam<PresetCase> {};

TEST_P(CifDefinePresets, AScriptStringResolvesOnEachSystem) {
    TestMachine machine(GetParam().preset);
    IniFile script;
    CifDefine::DefineMap raw;
    raw["PF"] = "<ReadReg,HKLM,SOFTWARE\\Microsoft\\Windows\\CurrentVersion,ProgramFilesDir,"
                "StopOnFail>";
    raw["TARGET"] = "$PF$\\Acme";
    raw["SHORT"] = "<ShortName,$PF$>";
    raw["WIN"] = "<ReadEnv,%windir%>";
    CifDefine defines(raw, script, false);
    CStdStr text = "$TARGET$;$SHORT$;$WIN$;$windows_dir$;^OEM_PRODUCT^;$LONE";
    ASSERT_TRUE(defines.resolveStrDefine(text, "Comp"));
    EXPECT_EQ(CStdStr::Formatted("C:\\Program Files\\Acme;%s;%s;%s;^OEM_PRODUCT^;$LONE",
                                 GetParam().shortProgramFiles, GetParam().windows,
                                 GetParam().windows),
              text);
}

// Test names by preset, so that they are the same in every run of the binary.
template <typename Case>
std::string PresetName(const ::testing::TestParamInfo<Case>& info) {
    std::string name = info.param.preset;
    for (char& c : name) {
        c = c == '-' ? '_' : c;
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(CifSystems, CifDefinePresets,
                         ::testing::Values(PresetCase{"win98", "C:\\WINDOWS", "C:\\PROGRA~1"},
                                           PresetCase{"xp", "C:\\WINDOWS", "C:\\PROGRA~1"},
                                           PresetCase{"win7-x64", "C:\\Windows", "C:\\PROGRA~1"}),
                         PresetName<PresetCase>);

} // namespace
