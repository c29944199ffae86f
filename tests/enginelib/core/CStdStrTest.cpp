#include "core/CStdStr.h"
#include "core/SortedList.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

TEST(CStdStr, NullAndResourceNumbersGiveTheEmptyString) {
    EXPECT_TRUE(CStdStr(static_cast<const char*>(nullptr)).empty());
    EXPECT_TRUE(
            CStdStr(reinterpret_cast<const char*>(static_cast<std::uintptr_t>(0x1234))).empty());
    CStdStr text = "abc";
    text = reinterpret_cast<const char*>(static_cast<std::uintptr_t>(7));
    EXPECT_TRUE(text.empty());
    EXPECT_EQ("abc", CStdStr("abc"));
}

TEST(CStdStr, FormatHasNoLengthLimit) {
    std::string big(5000, 'x');
    CStdStr text;
    text.Format("<%s|%d>", big.c_str(), 42);
    EXPECT_EQ(5005u, text.size());
    EXPECT_EQ("|42>", text.Right(4));
    text.AppendFormat("%05d", 7);
    EXPECT_EQ("00007", text.Right(5));
}

TEST(CStdStr, PiecesAreClampedToTheString) {
    CStdStr text = "abcdef";
    EXPECT_EQ("ab", text.Left(2));
    EXPECT_EQ("abcdef", text.Left(100));
    EXPECT_EQ("", text.Left(-1));
    EXPECT_EQ("cdef", text.Mid(2));
    EXPECT_EQ("cd", text.Mid(2, 2));
    EXPECT_EQ("", text.Mid(10));
    EXPECT_EQ("abc", text.Mid(-5, 3));
    EXPECT_EQ("ef", text.Right(2));
    EXPECT_EQ("abcdef", text.Right(9));
}

TEST(CStdStr, FindReplaceAndTrim) {
    CStdStr text = "a.b.c";
    EXPECT_EQ(1, text.Find('.'));
    EXPECT_EQ(3, text.Find('.', 2));
    EXPECT_EQ(3, text.ReverseFind('.'));
    EXPECT_EQ(-1, text.Find("x"));
    EXPECT_EQ(2, text.Replace(".", "::"));
    EXPECT_EQ("a::b::c", text);
    EXPECT_EQ(0, text.Replace("", "x"));
    CStdStr spaced = " \t value \r\n";
    EXPECT_EQ("value", spaced.Trim());
    CStdStr quoted = "\"x\"";
    EXPECT_EQ("x", quoted.Trim('"'));
}

TEST(CStdStr, CaseFoldingFollowsTheAnsiCodePage) {
    TestMachine machine("win7");
    CStdStr::RefreshCaseTables();
    EXPECT_EQ(0, CStdStr("Install").CompareNoCase("INSTALL"));
    EXPECT_LT(CStdStr("a").CompareNoCase("B"), 0);
    EXPECT_GT(CStdStr("ab").CompareNoCase("A"), 0);
    // Windows-1252: E with acute and e with acute are one letter in two cases.
    EXPECT_EQ(0, CStdStr("\xC9t\xC9").CompareNoCase("\xE9T\xE9"));
    CStdStr upper = "gr\xFC\xDF";
    EXPECT_EQ("GR\xDC\xDF", upper.MakeUpper());
}

TEST(SortedList, KeepsUniqueValuesInOrder) {
    SortedList<int> list;
    EXPECT_TRUE(list.Add(3));
    EXPECT_TRUE(list.Add(1));
    EXPECT_FALSE(list.Add(3));
    EXPECT_TRUE(list.Add(2));
    EXPECT_EQ((std::vector<int>{1, 2, 3}), std::vector<int>(list.begin(), list.end()));
    EXPECT_TRUE(list.Contains(2));
    EXPECT_TRUE(list.Remove(2));
    EXPECT_FALSE(list.Contains(2));
    EXPECT_EQ(2u, list.Size());
}

} // namespace
