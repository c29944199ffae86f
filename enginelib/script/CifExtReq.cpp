#include "script/CifExtReq.h"

#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <algorithm>
#include <cstdlib>

namespace {

const char* const kComponent = "CifExtReq";
constexpr std::uint32_t kMask = logmask::CifGf;
const char* const kValidPrefix = "CifExtReq::isValid: ";
const char* const kSatisfiedPrefix = "CifExtReq::IsExtReqSatisfied: ";
const char* const kEvaluatePrefix = "CifExtReq::evaluateStatTokens: ";

enum class Op { Unknown, EQ, NE, LT, GT, GTE, LTE, HAS };
enum class Type { Unknown, NUM, VER, STR, LST };

Op OpOf(const CStdStr& text) {
    static const std::pair<const char*, Op> table[] = {
            {"EQ", Op::EQ},   {"NE", Op::NE},   {"LT", Op::LT},  {"GT", Op::GT},
            {"GTE", Op::GTE}, {"LTE", Op::LTE}, {"HAS", Op::HAS}};
    for (const auto& [name, op] : table) {
        if (text.EqualsNoCase(name)) {
            return op;
        }
    }
    return Op::Unknown;
}

Type TypeOf(const CStdStr& text) {
    static const std::pair<const char*, Type> table[] = {
            {"NUM", Type::NUM}, {"VER", Type::VER}, {"STR", Type::STR}, {"LST", Type::LST}};
    for (const auto& [name, type] : table) {
        if (text.EqualsNoCase(name)) {
            return type;
        }
    }
    return Type::Unknown;
}

// "TYPE:OP" into its two halves, each trimmed; no ":" leaves the operator empty.
void SplitTypeAndOp(const CStdStr& typeAndOp, CStdStr& type, CStdStr& op) {
    int colon = typeAndOp.Find(':');
    type = colon < 0 ? typeAndOp : typeAndOp.Left(colon);
    op = colon < 0 ? CStdStr() : typeAndOp.Mid(colon + 1);
    type.Trim();
    op.Trim();
}

// The answer of an ordering operator from the sign of a comparison; `equalCounts` is false
// when two versions have different numbers of parts, which no EQ survives.
int ByOperator(Op op, int sign, bool equalCounts = true) {
    switch (op) {
    case Op::EQ:
        return sign == 0 && equalCounts ? 1 : 0;
    case Op::NE:
        return sign == 0 && equalCounts ? 0 : 1;
    case Op::LT:
        return sign < 0 ? 1 : 0;
    case Op::GT:
        return sign > 0 ? 1 : 0;
    case Op::GTE:
        return sign < 0 ? 0 : 1;
    case Op::LTE:
        return sign > 0 ? 0 : 1;
    default:
        return 0;
    }
}

long Number(const CStdStr& text) {
    return std::strtol(text.c_str(), nullptr, 10);
}

int VersionSign(const CStdStr& left, const CStdStr& right, bool& equalCounts) {
    CStdStringList leftParts = Tokenizer::Split(left, '.', Tokenizer::Trim);
    CStdStringList rightParts = Tokenizer::Split(right, '.', Tokenizer::Trim);
    equalCounts = leftParts.size() == rightParts.size();
    size_t common = std::min(leftParts.size(), rightParts.size());
    for (size_t i = 0; i < common; ++i) {
        long a = Number(leftParts[i]);
        long b = Number(rightParts[i]);
        if (a != b) {
            return a < b ? -1 : 1;
        }
    }
    return 0;
}

CStdStr Unquoted(CStdStr text) {
    if (!text.empty() && text.front() == '"') {
        text.erase(0, 1);
    }
    if (!text.empty() && text.back() == '"') {
        text.pop_back();
    }
    return text;
}

bool HasUnescapedComma(const CStdStr& text) {
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == ',' && (i == 0 || text[i - 1] != '\\')) {
            return true;
        }
    }
    return false;
}

// The kind of an error line: the text before its first ":", or the whole item without one.
CStdStr ErrorKind(const CStdStr& item) {
    int colon = item.Find(':');
    CStdStr kind = colon < 0 ? item : item.Left(colon);
    return kind.Trim();
}

// The text of an error line: all after its first ":", commas included, since the text is
// shown to the user and is not a list of items.
CStdStr ErrorTextOf(const CStdStr& statement) {
    int colon = statement.Find(':');
    CStdStr text = colon < 0 ? CStdStr() : statement.Mid(colon + 1);
    text.Replace("\\,", ",");
    return text.Trim();
}

} // namespace

CifExtReq::CifExtReq(const CStdStringList& statements) {
    for (CStdStr statement : statements) {
        mStatements.Add(statement.Trim());
    }
}

CStdStringList CifExtReq::SplitStatement(const CStdStr& statement) {
    return Tokenizer::Split(statement, ',', Tokenizer::Trim | Tokenizer::Escapes);
}

CifExtReq::StatementType CifExtReq::Classify(const CStdStr& statement,
                                             const CStdStringList& items) {
    if (!statement.empty() && statement.front() == ',') {
        return Invalid;
    }
    const CStdStr first = items.empty() ? CStdStr() : items.front();
    bool hasComma = HasUnescapedComma(statement);
    // A comparison may well have a left operand that begins with the word; only a line whose
    // first item carries the ":" of an error, or that has no comma, is an error line.
    if (first.Left(5).EqualsNoCase("Error") && (!hasComma || first.Find(':') >= 0)) {
        return ErrorStatement;
    }
    return hasComma ? Comparison : Plain;
}

CStdStringList CifExtReq::GetErrorItems() const {
    return Tokenizer::Split(mErrorText, ':', Tokenizer::Trim);
}

bool CifExtReq::IsValid() {
    LogScope scope(kComponent, "CifExtReq::IsValid", kMask);
    StatementType previous = Invalid;
    for (const CStdStr& statement : mStatements) {
        CStdStringList items = SplitStatement(statement);
        StatementType type = Classify(statement, items);
        const char* failure = nullptr;
        switch (type) {
        case Invalid:
            failure = "The statement is invalid.";
            break;
        case Comparison: {
            if (items.size() < 2 || items.size() > 5) {
                failure = "The statement has a wrong number of parameters.";
                break;
            }
            CStdStr typeText;
            CStdStr opText;
            SplitTypeAndOp(items[1], typeText, opText);
            if (OpOf(opText) == Op::Unknown) {
                failure = "The NON ERROR-statement contains an invalid comparison operator.";
            } else if (TypeOf(typeText) == Type::Unknown) {
                failure = "The NON ERROR-statement contains an invalid comparison type.";
            }
            break;
        }
        case ErrorStatement:
            if (!ErrorKind(items.front()).EqualsNoCase("Error")) {
                failure = "The NON ERROR-statement contains an invalid error type.";
            } else if (previous != Comparison && previous != ErrorStatement) {
                // Several error lines in a row follow one comparison; the first one counts.
                failure = "The statement is not in a valid sequence.";
            }
            break;
        case Plain:
            if (items.size() > 1) {
                failure = "The statement has a wrong number of parameters.";
            }
            break;
        }
        if (failure != nullptr) {
            scope.Log(0, "%s%s ## %s ##", kValidPrefix, failure, statement.c_str());
            scope.SetResult(false);
            return false;
        }
        previous = type;
    }
    scope.SetResult(true);
    return true;
}

int CifExtReq::evaluateStatTokens(CStdStringList items) {
    items.resize(std::max<size_t>(items.size(), 5));
    for (CStdStr& item : items) {
        item.Trim();
    }
    int result = Compare(items[0], items[1], items[2]);
    const CStdStr& chosen = result == 1 ? items[3] : items[4];
    if (chosen.empty()) {
        return result;
    }
    CStdStringList parts = Tokenizer::Split(chosen, ':', Tokenizer::Trim);
    if (parts.empty()) {
        return result;
    }
    if (parts.size() >= 2 && !parts[1].EqualsNoCase("true")) {
        ENGINE_LOG(kMask, "%slabel %s is not set (%s)", kEvaluatePrefix, parts[0].c_str(),
                   parts[1].c_str());
        return -1;
    }
    ENGINE_LOG(kMask, "%slabel %s is set", kEvaluatePrefix, parts[0].c_str());
    mLabels.Add(parts[0]);
    return -2;
}

int CifExtReq::IsExtReqSatisfied() {
    LogScope scope(kComponent, "CifExtReq::IsExtReqSatisfied", kMask);
    mLabels.clear();
    mErrorText.clear();
    mEvaluated = true;
    for (size_t index = 0; index < mStatements.size(); ++index) {
        const CStdStr& statement = mStatements[index];
        CStdStringList items = SplitStatement(statement);
        if (Classify(statement, items) != Comparison) {
            continue;
        }
        if (evaluateStatTokens(items) != 0) {
            continue;
        }
        scope.Log(0, "%sthe requirement is not met ## %s ##", kSatisfiedPrefix, statement.c_str());
        if (index + 1 < mStatements.size()) {
            const CStdStr& next = mStatements[index + 1];
            CStdStringList nextItems = SplitStatement(next);
            if (Classify(next, nextItems) == ErrorStatement) {
                mErrorText = ErrorTextOf(next);
                scope.Log(0, "%serror: %s", kSatisfiedPrefix, mErrorText.c_str());
            }
        }
        scope.SetResult(0);
        return 0;
    }
    scope.SetResult(1);
    return 1;
}

bool CifExtReq::AddLabels(CStdStringList& tokens) const {
    for (const CStdStr& label : mLabels) {
        tokens.Add(label);
    }
    return !mLabels.empty();
}

int CifExtReq::Compare(const CStdStr& left, const CStdStr& typeAndOp, const CStdStr& right) {
    CStdStr typeText;
    CStdStr opText;
    SplitTypeAndOp(typeAndOp, typeText, opText);
    Type type = TypeOf(typeText);
    Op op = OpOf(opText);
    if (type == Type::Unknown || op == Op::Unknown) {
        return 0;
    }
    CStdStr a = left;
    CStdStr b = right;
    a.Trim();
    b.Trim();
    if (op == Op::HAS && type != Type::LST) {
        return 0;
    }
    switch (type) {
    case Type::NUM: {
        if (a.empty() || b.empty()) {
            return 0;
        }
        long x = Number(a);
        long y = Number(b);
        return ByOperator(op, x < y ? -1 : x > y ? 1 : 0);
    }
    case Type::VER: {
        bool equalCounts = true;
        int sign = VersionSign(a, b, equalCounts);
        return ByOperator(op, sign, equalCounts);
    }
    case Type::STR:
        return ByOperator(op, Unquoted(a).CompareNoCase(Unquoted(b)));
    case Type::LST:
        if (op != Op::HAS) {
            return 0;
        }
        for (const CStdStr& item : Tokenizer::Split(a, '|', Tokenizer::Trim)) {
            if (item.EqualsNoCase(b)) {
                return 1;
            }
        }
        return 0;
    default:
        return 0;
    }
}
