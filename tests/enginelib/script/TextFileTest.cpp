#include "script/TextFile.h"
#include "script/QuickIni.h"
#include "script/Tokenizer.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

class TextFileTest : public ::testing::Test {
protected:
    TestMachine machine;

    std::vector<CStdStr> lines(const std::string& bytes) {
        std::string path = machine.Path("lines.txt");
        EXPECT_TRUE(TestMachine::WriteFile(path, bytes));
        TextFile file;
        EXPECT_TRUE(file.Open(path, TextFile::Read, TextFile::Detect));
        std::vector<CStdStr> result;
        CStdStr line;
        while (file.ReadString(line)) {
            result.push_back(line);
        }
        return result;
    }
};

TEST_F(TextFileTest, LinesLoseOneTrailingCarriageReturnOnly) {
    EXPECT_EQ((std::vector<CStdStr>{"a\rb", "c\r", "", "last"}), lines("a\rb\r\nc\r\r\n\nlast"));
    EXPECT_EQ((std::vector<CStdStr>{"only"}), lines("only\n"));
    EXPECT_TRUE(lines("").empty());
}

TEST_F(TextFileTest, LinesAcrossTheReadBlocksComeWhole) {
    // Lines longer than a block, and a CR LF pair and UTF-16 units cut by a block's end.
    std::string longLine(200000, 'x');
    std::string bytes = longLine + "\r\n";
    std::string cutLine(4 * 65536 - 1 - bytes.size(), 'y');
    bytes += cutLine + "\r\nshort\r\n" + longLine;
    ASSERT_EQ('\r', bytes[4 * 65536 - 1]);
    EXPECT_EQ((std::vector<CStdStr>{longLine, cutLine, "short", longLine}), lines(bytes));

    std::string wide = "\xFF\xFE";
    for (int i = 0; i < 40000; ++i) {
        wide += std::string("a\0", 2);
    }
    wide += std::string("\r\0\n\0b\0", 6);
    std::vector<CStdStr> units = lines(wide);
    ASSERT_EQ(2u, units.size());
    EXPECT_EQ(std::string(40000, 'a'), units[0]);
    EXPECT_EQ("b", units[1]);
}

TEST_F(TextFileTest, Utf16RoundTripsThroughTheCodePage) {
    std::string path = machine.Path("wide.txt");
    TextFile out;
    ASSERT_TRUE(out.Open(path, TextFile::Write, TextFile::Utf16));
    ASSERT_TRUE(out.WriteString("Stra\xDF"
                                "e\nzwei"));
    out.Close();
    EXPECT_EQ(std::string("\xFF\xFES\0t\0r\0a\0\xDF\0e\0\r\0\n\0z\0w\0e\0i\0", 26),
              TestMachine::ReadFile(path));
    TextFile in;
    ASSERT_TRUE(in.Open(path, TextFile::Read, TextFile::Detect));
    EXPECT_EQ(TextFile::Utf16, in.GetEncoding());
    CStdStr line;
    ASSERT_TRUE(in.ReadString(line));
    EXPECT_EQ("Stra\xDF"
              "e",
              line);
    ASSERT_TRUE(in.ReadString(line));
    EXPECT_EQ("zwei", line);
    EXPECT_FALSE(in.ReadString(line));
}

TEST_F(TextFileTest, CharactersOutsideTheCodePageBecomeItsReplacement) {
    EXPECT_EQ((std::vector<CStdStr>{"a?b"}), lines(std::string("\xFF\xFE"
                                                               "a\0\x00\x4E"
                                                               "b\0",
                                                               8)));
}

TEST_F(TextFileTest, AppendToAMissingFileMakesIt) {
    std::string path = machine.Path("log.txt");
    TextFile file;
    ASSERT_TRUE(file.Open(path, TextFile::Append, TextFile::Utf16));
    ASSERT_TRUE(file.WriteString("x"));
    file.Close();
    ASSERT_TRUE(file.Open(path, TextFile::Append, TextFile::Utf16));
    ASSERT_TRUE(file.WriteString("y"));
    file.Close();
    EXPECT_EQ(std::string("\xFF\xFEx\0y\0", 6), TestMachine::ReadFile(path));
    EXPECT_FALSE(file.Open("", TextFile::Read, 0));
    EXPECT_FALSE(file.Open(path, 7, 0));
    EXPECT_FALSE(file.Open(machine.Path("none\\x.txt"), TextFile::Write, 1));
    EXPECT_FALSE(file.WriteString(""));
}

TEST(Tokenizer, FlagsQuoteTrimAndEscape) {
    EXPECT_EQ((CStdStringList{"a,b", "c"}), Tokenizer::Split("a\\,b,c", ',', Tokenizer::Escapes));
    EXPECT_EQ((CStdStringList{"a,b", "c"}), Tokenizer::Split("\"a,b\",c", ',', Tokenizer::Quotes));
    EXPECT_EQ((CStdStringList{"x y", "z"}), Tokenizer::Split("'x y',z", ',', Tokenizer::Quotes));
    EXPECT_EQ((CStdStringList{"a", "b", "c"}),
              Tokenizer::Split(" a , b ,c  ", ',', Tokenizer::Trim));
    EXPECT_EQ((CStdStringList{"a", "", "b"}), Tokenizer::Split("a,,b,", ','));
    EXPECT_EQ((CStdStringList{" a "}), Tokenizer::Split(" a ", ','));
    EXPECT_TRUE(Tokenizer::Split("", ',').empty());
    EXPECT_TRUE(Tokenizer::Split("   ", ',', Tokenizer::Trim).empty());
    Tokenizer tokenizer("one;two", ';');
    CStdStr item;
    EXPECT_TRUE(tokenizer.HasMore());
    EXPECT_TRUE(tokenizer.GetNext(item));
    EXPECT_EQ("one", item);
    EXPECT_TRUE(tokenizer.GetNext(item));
    EXPECT_FALSE(tokenizer.HasMore());
    EXPECT_FALSE(tokenizer.GetNext(item));
    EXPECT_EQ("", item);
}

TEST_F(TextFileTest, QuickReadTakesTheFirstValueOfAKey) {
    std::string path = machine.Path("quick.ini");
    ASSERT_TRUE(
            TestMachine::WriteFile(path, "[Other]\nA=0\n[Sect]\n; A=comment\nA=1\na=2\nB=\"q\"\n"));
    CStdStr value;
    ASSERT_TRUE(QuickReadIniString(path, "sect", "a", value));
    EXPECT_EQ("1", value);
    ASSERT_TRUE(QuickReadIniString(path, "Sect", "B", value));
    EXPECT_EQ("q", value);
    EXPECT_FALSE(QuickReadIniString(path, "Sect", "C", value));
    EXPECT_EQ("", value);
    EXPECT_FALSE(QuickReadIniString(machine.Path("absent.ini"), "Sect", "A", value));
    EXPECT_FALSE(QuickReadIniString(path, "", "A", value));
}

} // namespace
