#include "CommandLine.h"
#include "ProgressView.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

CommandLine Parse(std::vector<const char*> words, std::string* error = nullptr) {
    words.insert(words.begin(), "installcli");
    CommandLine line;
    std::string message;
    bool ok = CommandLine::Parse(static_cast<int>(words.size()), const_cast<char**>(words.data()),
                                 line, message);
    if (error != nullptr) {
        *error = ok ? "" : message;
    }
    return line;
}

TEST(CommandLine, OptionsValuesAndVariables) {
    CommandLine line = Parse({"install", "--machine", "m", "--var", "A=1", "--var=B=x=y", "--lang",
                              "de", "setup.isf", "--log=run.log", "--workdir", "w"});
    EXPECT_EQ("install", line.command);
    EXPECT_EQ((std::vector<std::string>{"setup.isf"}), line.positional);
    EXPECT_EQ("m", *line.machine);
    EXPECT_EQ("run.log", *line.log);
    EXPECT_EQ("de", *line.language);
    EXPECT_EQ("w", *line.workdir);
    EXPECT_EQ("A=1\nB=x=y", line.JoinedVariables());
}

TEST(CommandLine, MistakesAreUsageErrors) {
    std::string error;
    Parse({"install", "--bogus"}, &error);
    EXPECT_EQ("unknown option --bogus", error);
    Parse({"install", "--log"}, &error);
    EXPECT_EQ("--log needs a value", error);
    Parse({"install", "--var", "novalue"}, &error);
    EXPECT_NE(std::string::npos, error.find("NAME=VALUE"));
    EXPECT_TRUE(Parse({"--help"}).help);
}

TEST(ProgressView, TheBarIsClampedToTheTotal) {
    EXPECT_EQ("[..........]", ProgressView::Bar(0, 5, 10));
    EXPECT_EQ("[#####.....]", ProgressView::Bar(10, 5, 10));
    EXPECT_EQ("[##########]", ProgressView::Bar(10, 50, 10));
    EXPECT_EQ(100, ProgressView::Percent(3, 4000000000u));
    EXPECT_EQ(33, ProgressView::Percent(3, 1));
}

TEST(ProgressView, PlainLinesWhenTheOutputIsNoTerminal) {
    char buffer[512] = {};
    std::FILE* out = fmemopen(buffer, sizeof buffer, "w");
    ProgressView view(out, false);
    view.Update(10, 0, "Starting");
    view.Update(10, 0, "Starting");
    view.Update(10, 1, "Starting");
    view.Update(10, 5, "Copying");
    view.Finish();
    std::fclose(out);
    EXPECT_STREQ("progress   0% Starting\nprogress  10% Starting\nprogress  50% Copying\n", buffer);
}

} // namespace
