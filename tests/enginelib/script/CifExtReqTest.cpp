#include "script/CifExtReq.h"

#include "CifTestSupport.h"

#include <gtest/gtest.h>

namespace {

int Compare(const char* left, const char* typeAndOp, const char* right) {
    return CifExtReq::Compare(left, typeAndOp, right);
}

CifExtReq Requirements(std::initializer_list<const char*> lines) {
    CStdStringList statements;
    for (const char* line : lines) {
        statements.Add(line);
    }
    return CifExtReq(statements);
}

TEST(CifExtReq, NumbersCompareAsDecimalIntegers) {
    EXPECT_EQ(1, Compare("512", "NUM:GTE", "256"));
    EXPECT_EQ(0, Compare("128", "NUM:GTE", "256"));
    EXPECT_EQ(1, Compare("256", "NUM:GTE", "256"));
    EXPECT_EQ(1, Compare(" 10 ", "NUM:GT", "9"));
    EXPECT_EQ(0, Compare("10", "NUM:LT", "9"));
    EXPECT_EQ(1, Compare("9", "NUM:LTE", "9"));
    EXPECT_EQ(1, Compare("010", "NUM:EQ", "10"));
    EXPECT_EQ(1, Compare("7", "NUM:NE", "8"));
    EXPECT_EQ(1, Compare("-3", "NUM:LT", "2"));
    // Text reads as 0; an empty operand is no number at all.
    EXPECT_EQ(1, Compare("abc", "NUM:EQ", "0"));
    EXPECT_EQ(0, Compare("", "NUM:EQ", "0"));
    EXPECT_EQ(0, Compare("0", "NUM:NE", " "));
    // Type and operator fold case.
    EXPECT_EQ(1, Compare("5", "num:gte", "4"));
    EXPECT_EQ(1, Compare("5", " NUM : EQ ", "5"));
}

TEST(CifExtReq, VersionsComparePartByPartAsNumbers) {
    EXPECT_EQ(1, Compare("1.2.3", "VER:LT", "1.10"));
    EXPECT_EQ(0, Compare("1.10", "VER:LT", "1.2.3"));
    EXPECT_EQ(1, Compare("2.0", "VER:GT", "1.99.99"));
    EXPECT_EQ(1, Compare("1.2.3", "VER:EQ", "1.2.3"));
    // Over the shorter length the parts agree, but EQ also needs as many parts.
    EXPECT_EQ(0, Compare("1.2", "VER:EQ", "1.2.0"));
    EXPECT_EQ(1, Compare("1.2", "VER:NE", "1.2.0"));
    EXPECT_EQ(0, Compare("1.2", "VER:LT", "1.2.0"));
    EXPECT_EQ(1, Compare("1.2", "VER:GTE", "1.2.0"));
    EXPECT_EQ(1, Compare("1.2", "VER:LTE", "1.2.0"));
    EXPECT_EQ(0, Compare("1.3", "VER:LTE", "1.2.9"));
}

TEST(CifExtReq, StringsFoldCaseAndLoseTheirQuotes) {
    EXPECT_EQ(1, Compare("Hello", "STR:EQ", "hELLO"));
    EXPECT_EQ(1, Compare("\"Hello\"", "STR:EQ", "hello"));
    EXPECT_EQ(1, Compare("apple", "STR:LT", "Banana"));
    EXPECT_EQ(0, Compare("apple", "STR:GT", "Banana"));
    EXPECT_EQ(1, Compare("b", "STR:GTE", "B"));
    EXPECT_EQ(1, Compare("a", "STR:NE", "b"));
    EXPECT_EQ(0, Compare("abc", "STR:HAS", "b"));
}

TEST(CifExtReq, ListsAnswerOnlyHas) {
    EXPECT_EQ(1, Compare("a|b|c", "LST:HAS", "B"));
    EXPECT_EQ(1, Compare("a | b | c", "LST:HAS", "c"));
    EXPECT_EQ(0, Compare("a|b|c", "LST:HAS", "d"));
    EXPECT_EQ(0, Compare("a", "LST:EQ", "a"));
    EXPECT_EQ(0, Compare("a|b", "LST:NE", "c"));
    EXPECT_EQ(0, Compare("5", "NUM:HAS", "5"));
    EXPECT_EQ(0, Compare("1.0", "VER:HAS", "1"));
}

TEST(CifExtReq, UnknownTypesAndOperatorsGiveZero) {
    EXPECT_EQ(0, Compare("1", "INT:EQ", "1"));
    EXPECT_EQ(0, Compare("1", "NUM:EQUAL", "1"));
    EXPECT_EQ(0, Compare("1", "NUM", "1"));
    EXPECT_EQ(0, Compare("1", "", "1"));
}

TEST(CifExtReq, ValidSectionsOfEveryForm) {
    TestMachine machine("xp");
    EXPECT_TRUE(Requirements({"$SYSTEM_MEMORY$,NUM:GTE,256,,", "Error:MSG_LOW_MEMORY",
                              "a plain statement", "1.2,VER:LT,2.0,OLD:true,NEW:true", "x,STR:EQ",
                              "Error:first", "Error:second", "a\\,b,LST:HAS,a"})
                        .IsValid());
    EXPECT_TRUE(Requirements({}).IsValid());
}

TEST(CifExtReq, EachInvalidStatementIsNamedInTheLog) {
    TestMachine machine("xp");
    struct Case {
        std::initializer_list<const char*> lines;
        const char* message;
    };
    const Case cases[] = {
            {{",NUM:EQ,1"}, "The statement is invalid."},
            {{"a,NUM:EQ,1,x,y,z"}, "The statement has a wrong number of parameters."},
            {{"a,"}, "The statement has a wrong number of parameters."},
            {{"a,NUM:IS,1"}, "The NON ERROR-statement contains an invalid comparison operator."},
            {{"a,NUM,1"}, "The NON ERROR-statement contains an invalid comparison operator."},
            {{"a,INT:EQ,1"}, "The NON ERROR-statement contains an invalid comparison type."},
            {{"a,NUM:EQ,1", "Errors:text"},
             "The NON ERROR-statement contains an invalid error type."},
            {{"Error:text", "a,NUM:EQ,1"}, "The statement is not in a valid sequence."},
            {{"a,NUM:EQ,1", "plain", "Error:text"}, "The statement is not in a valid sequence."},
    };
    for (const Case& invalid : cases) {
        LogCapture log(machine);
        CifExtReq requirements = Requirements(invalid.lines);
        EXPECT_FALSE(requirements.IsValid()) << invalid.message;
        EXPECT_TRUE(log.Has(std::string("CifExtReq::isValid: ") + invalid.message + " ## "))
                << invalid.message << "\n"
                << log.Text();
    }
}

TEST(CifExtReq, TheLogNamesTheFirstBadStatement) {
    TestMachine machine("xp");
    LogCapture log(machine);
    EXPECT_FALSE(Requirements({"1,NUM:EQ,1", "2,NUM:XX,2", ",bad"}).IsValid());
    EXPECT_TRUE(log.Has("CifExtReq::isValid: The NON ERROR-statement contains an invalid "
                        "comparison operator. ## 2,NUM:XX,2 ##"));
    EXPECT_FALSE(log.Has("## ,bad ##"));
}

TEST(CifExtReq, AMetRequirementSetsNoLabel) {
    CifExtReq requirements = Requirements({"512,NUM:GTE,256,,", "Error:MSG_LOW_MEMORY"});
    EXPECT_EQ(1, requirements.IsExtReqSatisfied());
    CStdStringList tokens{"TRUE"};
    EXPECT_FALSE(requirements.AddLabels(tokens));
    EXPECT_EQ(1u, tokens.size());
    EXPECT_EQ("", requirements.GetErrorText());
}

TEST(CifExtReq, AFailedComparisonTakesTheErrorAfterIt) {
    CifExtReq requirements =
            Requirements({"1,NUM:EQ,1", "128,NUM:GTE,256,,", "Error: Display : MSG_LOW_MEMORY ",
                          "Error:next", "1,NUM:EQ,2"});
    EXPECT_EQ(0, requirements.IsExtReqSatisfied());
    EXPECT_EQ("Display : MSG_LOW_MEMORY", requirements.GetErrorText());
    EXPECT_EQ((CStdStringList{"Display", "MSG_LOW_MEMORY"}), requirements.GetErrorItems());
}

TEST(CifExtReq, AnErrorTextKeepsItsCommas) {
    TestMachine machine("xp");
    CifExtReq requirements = Requirements(
            {"128,NUM:GTE,256,,", "Error: Display : Too little memory, 256 MB\\, at least "});
    EXPECT_TRUE(requirements.IsValid());
    EXPECT_EQ(0, requirements.IsExtReqSatisfied());
    EXPECT_EQ("Display : Too little memory, 256 MB, at least", requirements.GetErrorText());
    EXPECT_EQ((CStdStringList{"Display", "Too little memory, 256 MB, at least"}),
              requirements.GetErrorItems());
}

TEST(CifExtReq, AFailureWithoutAnErrorStatementStillFails) {
    CifExtReq requirements = Requirements({"1,NUM:EQ,2", "plain"});
    EXPECT_EQ(0, requirements.IsExtReqSatisfied());
    EXPECT_EQ("", requirements.GetErrorText());
}

TEST(CifExtReq, LabelsCollectFromTheChosenItem) {
    CifExtReq requirements = Requirements({
            "1.2.3,VER:LT,1.10,MYLABEL:true,",   // true: MYLABEL is set
            "a,STR:EQ,b,NOTSET:true,OTHER:TRUE", // false: OTHER is set
            "1,NUM:EQ,1,SKIPPED:false,",         // true, but the label is not set
            "1,NUM:EQ,2,,FALLBACK",              // false, a bare label is set
            "1,NUM:EQ,2,IGNORED,QUIET:no",       // false, nothing set, and no failure
    });
    EXPECT_EQ(1, requirements.IsExtReqSatisfied());
    CStdStringList tokens{"TRUE"};
    EXPECT_TRUE(requirements.AddLabels(tokens));
    EXPECT_EQ((CStdStringList{"TRUE", "MYLABEL", "OTHER", "FALLBACK"}), tokens);
}

TEST(CifExtReq, EvaluatingAgainStartsWithNoLabels) {
    CifExtReq requirements = Requirements({"1,NUM:EQ,1,ONCE:true,"});
    requirements.IsExtReqSatisfied();
    requirements.IsExtReqSatisfied();
    EXPECT_EQ(CStdStringList{"ONCE"}, requirements.GetLabels());
}

TEST(CifExtReq, OneStatementAnswersByItsChosenItem) {
    CifExtReq requirements{CStdStringList{}};
    EXPECT_EQ(1, requirements.evaluateStatTokens({"2", "NUM:GT", "1"}));
    EXPECT_EQ(0, requirements.evaluateStatTokens({"1", "NUM:GT", "2"}));
    EXPECT_EQ(-2, requirements.evaluateStatTokens({"2", "NUM:GT", "1", " A : true "}));
    EXPECT_EQ(-1, requirements.evaluateStatTokens({"2", "NUM:GT", "1", "B:maybe"}));
    EXPECT_EQ(-2, requirements.evaluateStatTokens({"1", "NUM:GT", "2", "", "C"}));
    EXPECT_EQ((CStdStringList{"A", "C"}), requirements.GetLabels());
}

TEST(CifExtReq, EscapedCommasStayInTheirItem) {
    CifExtReq requirements = Requirements({"a\\,b|c,LST:HAS,a\\,b"});
    EXPECT_TRUE(requirements.IsValid());
    EXPECT_EQ(1, requirements.IsExtReqSatisfied());
}

} // namespace
