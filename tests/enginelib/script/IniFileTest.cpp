#include "script/IniFile.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

namespace {

class IniFileTest : public ::testing::Test {
protected:
    TestMachine machine;

    std::unique_ptr<IniFile> read(const std::string& text, bool keyless = false) {
        std::string path = machine.Path("test.ini");
        EXPECT_TRUE(TestMachine::WriteFile(path, text));
        auto file = std::make_unique<IniFile>(keyless);
        EXPECT_TRUE(file->Read(path, false));
        return file;
    }

    static std::vector<std::pair<CStdStr, CStdStr>> withDups(IniSection* section) {
        std::vector<std::pair<CStdStr, CStdStr>> lines;
        CStdStr name;
        CStdStr value;
        while (section->GetCurrentValueWithDups(name, value)) {
            lines.emplace_back(name, value);
            section->Next();
        }
        return lines;
    }
};

TEST_F(IniFileTest, EmptyAndMissingFiles) {
    auto file = read("");
    EXPECT_EQ(0, file->SectionCount());
    IniFile missing(false);
    EXPECT_FALSE(missing.Read(machine.Path("absent.ini"), false));
}

TEST_F(IniFileTest, SectionHeadersAndTheirOddForms) {
    auto file = read("[S]\na=1\n[]\nb=2\n[  ]\n[abc\nabc]\n[a]b]\nc=3\n[s]\nd=4\n");
    ASSERT_EQ(2, file->SectionCount());
    EXPECT_EQ("S", file->GetSectionName(0));
    EXPECT_EQ("a]b", file->GetSectionName(1));
    IniSection* s = file->FindSection("s");
    ASSERT_NE(nullptr, s);
    // Lines after an empty header stay in the section before it.
    EXPECT_EQ("2", file->GetValue("S", "b"));
    EXPECT_TRUE(s->HasValue("[abc"));
    EXPECT_TRUE(s->HasValue("abc]"));
    EXPECT_EQ("4", file->GetValue("S", "d"));
    EXPECT_EQ("3", file->GetValue("A]B", "c"));
}

TEST_F(IniFileTest, NamesAndValuesAreSplitAtTheFirstEquals) {
    auto file = read("top=ignored\n[V]\n=value\nname=\na=b=c\nq=\"b\"\nr=\"\"\nt=\"b\nu=\" b \"\n"
                     "; comment\n# comment\nx=1 ; not a comment\nline\\\n");
    IniSection* v = file->FindSection("V");
    ASSERT_NE(nullptr, v);
    EXPECT_FALSE(v->HasValue("top"));
    EXPECT_TRUE(v->HasValue("name"));
    EXPECT_EQ("", file->GetValue("V", "name"));
    EXPECT_EQ("b=c", file->GetValue("V", "a"));
    EXPECT_EQ("b", file->GetValue("V", "q"));
    EXPECT_EQ("", file->GetValue("V", "r"));
    EXPECT_EQ("\"b", file->GetValue("V", "t"));
    EXPECT_EQ(" b ", file->GetValue("V", "u"));
    EXPECT_EQ("1 ; not a comment", file->GetValue("V", "x"));
    EXPECT_TRUE(v->HasValue("line\\"));
    EXPECT_EQ(8u, v->ValueCount());
}

TEST_F(IniFileTest, RepeatedNamesKeepThreeViews) {
    auto file = read("[S]\nA=1\na=2\nB=3\n");
    IniSection* s = file->FindSection("S");
    EXPECT_EQ((std::vector<CStdStr>{"A", "B"}), s->Names());
    EXPECT_EQ("2", file->GetValue("S", "a"));
    auto lines = withDups(s);
    ASSERT_EQ(3u, lines.size());
    EXPECT_EQ("A", lines[0].first);
    EXPECT_EQ("a", lines[1].first);
    EXPECT_EQ("2", lines[1].second);
    CStdStr name;
    CStdStr value;
    s->Reset();
    ASSERT_TRUE(s->GetCurrentValue(name, value));
    EXPECT_EQ("A", name);
    EXPECT_EQ("2", value);
}

TEST_F(IniFileTest, RemovedValuesStayInTheListWithDuplicates) {
    auto file = read("[S]\na=1\nb=2\n");
    IniSection* s = file->FindSection("S");
    s->RemoveValue("A");
    EXPECT_EQ((std::vector<CStdStr>{"b"}), s->Names());
    EXPECT_EQ(2u, withDups(s).size());
}

TEST_F(IniFileTest, KeylessLinesNumberedAndMerged) {
    std::string first = machine.Path("first.ini");
    std::string second = machine.Path("second.ini");
    ASSERT_TRUE(TestMachine::WriteFile(first, "[List]\nalpha\nname=\nbeta\n[Other]\ngamma\n"));
    ASSERT_TRUE(TestMachine::WriteFile(second, "[List]\nBETA\ndelta\n"));
    IniFile file(true);
    ASSERT_TRUE(file.Read(first, false));
    EXPECT_EQ("alpha", file.GetValue("List", "KEY#001"));
    EXPECT_EQ("name", file.GetValue("List", "KEY#002"));
    EXPECT_EQ("gamma", file.GetValue("Other", "KEY#001"));
    ASSERT_TRUE(file.Read(second, true));
    IniSection* list = file.FindSection("List");
    EXPECT_EQ(4u, list->ValueCount());
    EXPECT_EQ("BETA", file.GetValue("List", "KEY#003"));
    EXPECT_EQ("delta", file.GetValue("List", "KEY#004"));
}

TEST_F(IniFileTest, KeylessNumbersOfAThousandAndMore) {
    std::string text = "[L]\n";
    for (int i = 1; i <= 1000; ++i) {
        text += "line" + std::to_string(i) + "\n";
    }
    auto file = read(text, true);
    EXPECT_EQ("line1000", file->GetValue("L", "KEY#1000"));
    EXPECT_EQ("line123", file->GetValue("L", "KEY#123"));
    std::string more = machine.Path("more.ini");
    ASSERT_TRUE(TestMachine::WriteFile(more, "[L]\nnew line\n"));
    ASSERT_TRUE(file->Read(more, true));
    // The last number seen is read from the last three characters: KEY#1000 reads as 0.
    EXPECT_EQ("new line", file->GetValue("L", "KEY#001"));
}

TEST_F(IniFileTest, WriteRestoresListsAndCollapsesDuplicates) {
    std::string path = machine.Path("out.ini");
    IniFile file(true);
    file.SetValue("Main", "A", "1");
    file.SetValue("Main", "a", "2");
    file.SetValue("Main", "Empty", "");
    file.SetValue("List", "KEY#001", "some line");
    file.SetValue("Bare", "x#y", "kept");
    file.GetOrCreateSection("Nothing");
    ASSERT_TRUE(file.Write(path));
    EXPECT_EQ("[Main]\r\nA=2\r\nEmpty\r\n\r\n[List]\r\nsome line\r\n\r\n[Bare]\r\nkept\r\n\r\n"
              "[Nothing]\r\n\r\n",
              TestMachine::ReadFile(path));
    IniFile unnamed(false);
    EXPECT_FALSE(unnamed.Write());
}

TEST_F(IniFileTest, Utf16FilesAreWrittenBackAsUtf16) {
    std::string path = machine.Path("wide.ini");
    std::string bytes = "\xFF\xFE";
    for (char c : std::string("[W]\r\nname=caf\xE9\r\n")) {
        bytes += c;
        bytes += '\0';
    }
    ASSERT_TRUE(TestMachine::WriteFile(path, bytes));
    IniFile file(path, false);
    EXPECT_EQ(2, file.GetEncoding());
    EXPECT_EQ("caf\xE9", file.GetValue("W", "name"));
    ASSERT_TRUE(file.Write(path));
    EXPECT_EQ(bytes + std::string("\r\0\n\0", 4), TestMachine::ReadFile(path));
}

TEST_F(IniFileTest, Utf8MarkIsNoSpecialCase) {
    auto file = read("\xEF\xBB\xBF[S]\na=1\n");
    EXPECT_EQ(0, file->SectionCount());
}

TEST_F(IniFileTest, SectionsRenameRemoveAndReplace) {
    auto file = read("[One]\nkey=old value\nold=x\n[Two]\nk=old\n");
    EXPECT_FALSE(file->RenameSection("One", "two"));
    EXPECT_FALSE(file->RenameSection("Absent", "Three"));
    EXPECT_TRUE(file->RenameSection("one", "First"));
    EXPECT_NE(nullptr, file->FindSection("FIRST"));
    EXPECT_EQ(nullptr, file->FindSection("One"));
    std::map<CStdStr, CStdStr> replacements = {{"old", "new"}};
    file->ReplaceInAll(replacements, true);
    EXPECT_EQ("new value", file->GetValue("First", "key"));
    EXPECT_EQ("x", file->GetValue("First", "new"));
    EXPECT_EQ("new", file->GetValue("Two", "k"));
    std::unique_ptr<IniSection> detached(file->RemoveSection("two", true));
    ASSERT_NE(nullptr, detached);
    EXPECT_EQ(nullptr, file->FindSection("Two"));
    EXPECT_EQ(nullptr, file->RemoveSection("First", false));
    EXPECT_EQ(0, file->SectionCount());
}

TEST_F(IniFileTest, SetValueRefusesEmptyNamesAndDirectoryIsCached) {
    IniFile file(false);
    file.SetValue("", "a", "1");
    file.SetValue("S", "", "1");
    EXPECT_EQ(0, file.SectionCount());
    file.SetValue("S", "a", "");
    EXPECT_TRUE(file.FindSection("S")->HasValue("a"));
    file.SetFileName("C:\\dir\\file.ini");
    EXPECT_EQ("C:\\dir\\", file.GetDirectory());
    file.SetFileName("\\file.ini");
    EXPECT_EQ("", file.GetDirectory());
    file.AddSection(nullptr);
    EXPECT_EQ(1, file.SectionCount());
}

TEST_F(IniFileTest, MergeAddsOrOverwrites) {
    auto file = read("[A]\nx=1\ny=2\n[B]\ny=3\nz=4\nW=5\n");
    IniSection* a = file->FindSection("A");
    a->Merge(*file->FindSection("B"), false);
    EXPECT_EQ("2", file->GetValue("A", "y"));
    EXPECT_EQ("4", file->GetValue("A", "z"));
    // The names it adds come in order without regard to case, whatever order they had.
    EXPECT_EQ((std::vector<CStdStr>{"x", "y", "W", "z"}), a->Names());
    a->Merge(*file->FindSection("B"), true);
    EXPECT_EQ("3", file->GetValue("A", "y"));
}

TEST_F(IniFileTest, ManyNamesWithOneBeginningAreFoundWithoutRegardToCase) {
    std::string text = "[Files]\n";
    for (int i = 0; i < 3000; ++i) {
        text += CStdStr::Formatted("C:\\Program Files\\Suite\\Component\\File%04d.dll=%d\n", i, i);
    }
    auto file = read(text);
    IniSection* files = file->FindSection("files");
    ASSERT_NE(nullptr, files);
    EXPECT_EQ(3000u, files->ValueCount());
    EXPECT_EQ("1234", file->GetValue("Files", "c:\\PROGRAM FILES\\suite\\component\\file1234.DLL"));
    EXPECT_EQ("", file->GetValue("Files", "C:\\Program Files\\Suite\\Component\\File3000.dll"));
    // The first spelling stays the name; a later one only sets the value.
    files->AddValue("C:\\PROGRAM FILES\\SUITE\\COMPONENT\\FILE0007.DLL", "new");
    EXPECT_EQ(3000u, files->ValueCount());
    EXPECT_EQ("C:\\Program Files\\Suite\\Component\\File0007.dll", files->Names()[7]);
    EXPECT_EQ("new", file->GetValue("Files", "c:\\program files\\suite\\component\\file0007.dll"));
    files->RemoveValue("c:\\program files\\suite\\component\\file0007.dll");
    EXPECT_FALSE(files->HasValue("C:\\Program Files\\Suite\\Component\\File0007.dll"));
    EXPECT_EQ(2999u, files->ValueCount());
}

} // namespace
