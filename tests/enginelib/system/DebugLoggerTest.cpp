#include "system/DebugLogger.h"
#include "script/Tokenizer.h"
#include "support/TestMachine.h"
#include "system/DebugLog.h"
#include "system/LogScope.h"
#include "system/Registry.h"

#include <gtest/gtest.h>

namespace {

bool EndsWith(const CStdStr& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// Each test starts with a silent log, its own file, and the show flags that the test sets.
class DebugLoggerTest : public ::testing::Test {
protected:
    TestMachine machine;
    DebugLogger& logger = DebugLogger::Instance();
    std::string file = machine.Path("debug.log");

    void SetUp() override {
        while (logger.GetEnableCount() > 0) {
            logger.DisableLog();
        }
        logger.SetCurrentMask(0);
        DebugLog::Instance().SetFile("");
    }

    void TearDown() override {
        while (logger.GetEnableCount() > 0) {
            logger.DisableLog();
        }
        logger.SetLogBits(0);
        DebugLog::Instance().SetFile("");
    }

    void setSettings(std::uint32_t bits, bool excludeAll = true) {
        Registry registry;
        for (const char* name :
             {"ExcludeTidPid", "ExcludeDate", "ExcludeTime", "ExcludeComponent"}) {
            ASSERT_TRUE(registry.WriteValue("HKLM", "Software\\Tovar", name,
                                            RegistryValue::Dword(excludeAll ? 1 : 0)));
        }
        ASSERT_TRUE(
                registry.WriteValue("HKLM", "Software\\Tovar", "Log", RegistryValue::Dword(bits)));
        logger.ReadSettings();
    }

    void start(std::uint32_t bits, bool excludeAll = true) {
        setSettings(bits, excludeAll);
        DebugLog::Instance().SetFile(file);
        logger.EnableLog();
    }

    std::vector<CStdStr> lines() const {
        CStdStr text = TestMachine::ReadFile(file);
        text.Replace("\r", "");
        CStdStringList list = Tokenizer::Split(text, '\n');
        return std::vector<CStdStr>(list.begin(), list.end());
    }
};

TEST_F(DebugLoggerTest, ScopesWriteEntryAndExitLinesWithTheResult) {
    start(logmask::LogScope | logmask::EngineApi | logmask::Info);
    {
        LogScope outer("Engine", "Engine::Outer", logmask::EngineApi);
        outer.Log(logmask::Info, "inside %d", 42);
        {
            LogScope inner("Engine", "Engine::Inner", logmask::EngineApi);
            inner.SetResult("yes");
        }
        outer.SetResult(7);
    }
    std::vector<CStdStr> written = lines();
    ASSERT_EQ(5u, written.size());
    EXPECT_EQ("<+Engine::Outer+>", written[0]);
    EXPECT_EQ(" inside 42", written[1]);
    EXPECT_EQ(" <+Engine::Inner+>", written[2]);
    EXPECT_EQ(0u, written[3].find(" <-Engine::Inner->  rc=yes TickSpent: "));
    EXPECT_EQ(0u, written[4].find("<-Engine::Outer->  rc=7 TickSpent: "));
    EXPECT_EQ(0, logger.GetDepth());
}

TEST_F(DebugLoggerTest, OnlyTheCategoriesOfTheMaskPass) {
    start(logmask::General);
    ENGINE_LOG(logmask::General, "general %s", "on");
    ENGINE_LOG(logmask::FileAction, "file off");
    ENGINE_LOG(logmask::General | logmask::FileAction, "both off");
    ENGINE_LOG(0, "always");
    { LogScope scope("X", "X::Silent", logmask::General); }
    std::vector<CStdStr> written = lines();
    ASSERT_EQ(2u, written.size());
    // A plain message carries the function that wrote it.
    EXPECT_TRUE(EndsWith(written[0], "TestBody: general on")) << written[0];
    EXPECT_TRUE(EndsWith(written[1], ": always")) << written[1];
}

TEST_F(DebugLoggerTest, LineFieldsFollowTheSettings) {
    start(logmask::General | logmask::Info, false);
    logger.SetLocation(10, "/src/enginelib/core/Engine.cpp", "bool Engine::Initialize(bool)");
    logger.Log(logmask::Info, "hello");
    std::vector<CStdStr> written = lines();
    ASSERT_EQ(1u, written.size());
    // "MM/DD/YYYY HH:MM:SS:mmm P#ppp T#ttt [INFO] Engine::Initialize: hello"
    const CStdStr& line = written[0];
    EXPECT_EQ('/', line[2]);
    EXPECT_EQ('/', line[5]);
    EXPECT_EQ(' ', line[10]);
    EXPECT_NE(-1, line.Find(" P#"));
    EXPECT_NE(-1, line.Find(" T#"));
    EXPECT_NE(-1, line.Find("[INFO] Engine::Initialize: hello"));
}

TEST_F(DebugLoggerTest, SilentBitStopsPlainMessagesOnly) {
    start(logmask::Silent | logmask::LogScope | logmask::General);
    ENGINE_LOG(logmask::General, "plain");
    {
        LogScope scope("X", "X::Scoped", logmask::General);
        scope.Log(logmask::General, "scoped");
    }
    std::vector<CStdStr> written = lines();
    ASSERT_EQ(3u, written.size());
    EXPECT_EQ(" scoped", written[1]);
}

TEST_F(DebugLoggerTest, EnableAndDisableAreCounted) {
    start(logmask::General);
    logger.EnableLog();
    EXPECT_EQ(2, logger.GetEnableCount());
    logger.DisableLog();
    EXPECT_EQ(logmask::General, logger.GetCurrentMask());
    logger.DisableLog();
    EXPECT_EQ(0u, logger.GetCurrentMask());
    logger.DisableLog();
    EXPECT_EQ(0, logger.GetEnableCount());
    ENGINE_LOG(logmask::General, "dropped");
    ENGINE_LOG(0, "forced");
    std::vector<CStdStr> written = lines();
    ASSERT_EQ(1u, written.size());
    EXPECT_TRUE(EndsWith(written[0], ": forced"));
}

TEST_F(DebugLoggerTest, AScopeOpenedBeforeTheLogWritesNothingAndKeepsTheDepth) {
    setSettings(logmask::LogScope | logmask::General);
    {
        LogScope early("X", "X::Early", logmask::General);
        DebugLog::Instance().SetFile(file);
        logger.EnableLog();
    }
    EXPECT_EQ(0, logger.GetDepth());
    EXPECT_TRUE(lines().empty());
}

TEST_F(DebugLoggerTest, IndentationStopsAtFiftyBlanks) {
    start(logmask::LogScope | logmask::General);
    std::vector<std::unique_ptr<LogScope>> scopes;
    for (int i = 0; i < 60; ++i) {
        scopes.push_back(std::make_unique<LogScope>("X", "X::Deep", logmask::General));
    }
    EXPECT_EQ(60, logger.GetDepth());
    scopes.back()->Log(logmask::General, "deep");
    scopes.clear();
    EXPECT_EQ(0, logger.GetDepth());
    std::vector<CStdStr> written = lines();
    EXPECT_EQ(std::string(50, ' ') + "deep", written[60]);
}

TEST_F(DebugLoggerTest, BannerPrintsTheBitTableOnlyWithAScriptVersion) {
    start(0x100);
    DebugLog::Instance().WriteBanner("C:\\x\\Engine.dll", "14.0.12.0 (Rev 3599)", "", "", "",
                                     "Installation Engine",
                                     "Do the actual install of all software and printers.");
    std::vector<CStdStr> written = lines();
    ASSERT_EQ(10u, written.size());
    EXPECT_EQ("//***********************************************************************",
              written[0]);
    EXPECT_EQ("| ------SNOWCAP5---------", written[1]);
    EXPECT_EQ("| InstallPath  :C:\\x\\Engine.dll", written[2]);
    EXPECT_EQ(0u, written[3].find("| CurrentTime  :"));
    EXPECT_EQ(0u, written[4].find("| BuildDateTime:"));
    EXPECT_EQ("| EngineVersion:14.0.12.0 (Rev 3599)", written[5]);
    EXPECT_EQ("| Current Tovar Log Value: 0X00000100", written[6]);
    EXPECT_EQ("| Installation Engine", written[7]);
    EXPECT_EQ("| Do the actual install of all software and printers.", written[8]);
    EXPECT_EQ("\\***********************************************************************/",
              written[9]);
    DebugLog::Instance().WriteBanner("p", "", "", "14.0", "", "t", "d");
    written = lines();
    EXPECT_EQ("| ScriptVersion: 14.0", written[15]);
    EXPECT_EQ("| |-parser-|-cif/gf-|-registry-|-coinst-|-cgf----|-netsup|liveupd-|-info-",
              written[written.size() - 3]);
    DebugLog::Instance().WriteFinishBanner("Installation Engine");
    written = lines();
    EXPECT_EQ(0u, written[written.size() - 2].find("| Finished Installation Engine : "));
}

TEST_F(DebugLoggerTest, LinesAreAppendedSoThatNothingIsLost) {
    ASSERT_TRUE(TestMachine::WriteFile(file, "earlier\r\n"));
    start(logmask::General);
    ENGINE_LOG(logmask::General, "two\nlines");
    std::vector<CStdStr> written = lines();
    ASSERT_EQ(3u, written.size());
    EXPECT_EQ("earlier", written[0]);
    EXPECT_TRUE(EndsWith(written[1], ": two"));
    EXPECT_EQ("lines", written[2]);
}

TEST(DebugLoggerNames, CategoriesAndFunctions) {
    EXPECT_STREQ("FORCE", DebugLogger::CategoryName(0));
    EXPECT_STREQ("PARSER", DebugLogger::CategoryName(128));
    EXPECT_STREQ("COMP", DebugLogger::CategoryName(0x200000));
    EXPECT_EQ("Engine::Initialize",
              DebugLogger::ShortFunctionName("bool Engine::Initialize(bool)"));
    EXPECT_EQ("Run", DebugLogger::ShortFunctionName("static int* Run(int)"));
    EXPECT_EQ("", DebugLogger::ShortFunctionName(nullptr));
}

TEST(DebugLoggerNames, SystemErrorTexts) {
    TestMachine machine;
    EXPECT_EQ("The system cannot find the file specified.", DebugLogger::FormatSystemError(2));
}

} // namespace
