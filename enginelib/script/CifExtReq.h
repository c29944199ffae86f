// The requirements of a component on the machine: a list of statements, checked in order, that
// compare values, set labels for the selection of action lines, and name the error that stops
// the component when a condition fails.
//
//   left, TYPE:OP, right[, ifTrue[, ifFalse]]   a comparison; TYPE NUM VER STR LST,
//                                               OP EQ NE LT GT GTE LTE HAS
//   Error:text                                  the error of the comparison before it
//   text                                        a plain statement, passed over
#pragma once

#include "core/CStdStringList.h"

class CifExtReq {
public:
    // The kinds of statement that IsValid tells apart.
    enum StatementType { Invalid, Comparison, ErrorStatement, Plain };

    explicit CifExtReq(const CStdStringList& statements);

    // Checks the form of every statement; the first bad one is logged and gives false.
    bool IsValid();
    // Evaluates the statements: 1 satisfied, 0 failed (the error text tells why).
    int IsExtReqSatisfied();
    // Appends the labels set by the evaluated statements; false when there are none.
    bool AddLabels(CStdStringList& tokens) const;

    // 1 when `left` and `right` compare as `typeAndOp` ("NUM:GTE") says, otherwise 0.
    static int Compare(const CStdStr& left, const CStdStr& typeAndOp, const CStdStr& right);

    // The text of the error statement that fired, and that text split at ":".
    const CStdStr& GetErrorText() const { return mErrorText; }
    CStdStringList GetErrorItems() const;
    const CStdStringList& GetLabels() const { return mLabels; }
    const CStdStringList& GetStatements() const { return mStatements; }
    bool IsEvaluated() const { return mEvaluated; }

    // The items of a statement, split at commas, trimmed, with "\," kept as a comma.
    static CStdStringList SplitStatement(const CStdStr& statement);
    static StatementType Classify(const CStdStr& statement, const CStdStringList& items);

    // One comparison of five items. The comparison's own result (1 or 0) when the item it
    // chooses (ifTrue or ifFalse) is empty; -2 when that item set a label; -1 when it named a
    // label with a value other than "true", which sets nothing and lets the walk go on.
    int evaluateStatTokens(CStdStringList items);

private:
    CStdStringList mStatements;
    CStdStringList mLabels;
    CStdStr mErrorText;
    bool mEvaluated = false;
};
