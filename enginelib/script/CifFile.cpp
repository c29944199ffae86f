#include "script/CifFile.h"

#include "core/RunState.h"
#include "script/CifDefine.h"
#include "script/CifExtReq.h"
#include "script/CifSection.h"
#include "script/OSInfo.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/LogScope.h"

#include <algorithm>

namespace {

constexpr std::uint32_t kMask = logmask::CifGf;

bool HasExactly(const CStdStringList& tokens, const CStdStr& token) {
    return std::find(tokens.begin(), tokens.end(), token) != tokens.end();
}

// A term of a label expression: TRUE, or an OS token that this run carries. A term that is no
// OS token is false even when a requirement set it.
bool TermHolds(const CStdStr& term, const CStdStringList& tokens) {
    return term == "TRUE" || (OSInfo::IsOSToken(term) && HasExactly(tokens, term));
}

CStdStr KeylessName(int number) {
    return CStdStr::Formatted("KEY#%03d", number);
}

} // namespace

CifFile::CifFile(bool keepKeylessLines) : IniFile(keepKeylessLines) {}

CifFile::CifFile(const CStdStr& fileName, bool keepKeylessLines) : IniFile(keepKeylessLines) {
    // Read here and not by the base, whose constructor would make plain sections.
    SetFileName(fileName);
    Read(fileName, false);
}

CifFile::~CifFile() = default;

IniSection* CifFile::GetOrCreateSection(const CStdStr& name) {
    if (IniSection* found = FindSection(name)) {
        return found;
    }
    auto* section = new CifSection(name, mDefines.get());
    AddSection(section);
    return section;
}

bool CifFile::InitDefines(IniFile* script, const CStdStr& componentName) {
    LogScope scope("CifFile", "CifFile::InitDefines", kMask);
    scope.Log(kMask, "file:%s component:%s", GetFileName().c_str(), componentName.c_str());
    CifDefine::DefineMap raw;
    if (IniSection* defines = FindSection("Defines")) {
        CStdStr name;
        CStdStr value;
        defines->Reset();
        // The base operation: defines are taken as written, not through themselves.
        while (defines->IniSection::GetCurrentValue(name, value)) {
            raw[name] = value;
            defines->Next();
        }
    }
    if (script == nullptr) {
        script = RunState::GetScript();
    }
    IniFile& isf = script != nullptr ? *script : *this;
    mDefines = std::make_unique<CifDefine>(raw, isf, &isf != this);
    for (int index = 0; index < SectionCount(); ++index) {
        if (auto* section = dynamic_cast<CifSection*>(GetSection(index))) {
            section->SetDefines(mDefines.get());
        }
    }
    if (auto* requirements = dynamic_cast<CifSection*>(FindSection(componentName + "_ExtReq"))) {
        requirements->SetDefines(mDefines.get());
    }
    // Requirements read before were read without these defines.
    mExtReqCache.clear();
    mDefinesLoaded = true;
    mDefinesOk = true;
    scope.SetResult(true);
    return true;
}

CifExtReq* CifFile::GetExtReq(const CStdStr& component, const CStdStr& suffix) {
    CStdStr name = component + suffix;
    auto cached = mExtReqCache.find(name);
    if (cached != mExtReqCache.end()) {
        return cached->second.get();
    }
    IniSection* section = FindSection(name);
    if (section == nullptr || section->ValueCount() == 0) {
        return nullptr;
    }
    CStdStringList statements;
    CStdStr key;
    CStdStr value;
    section->Reset();
    while (section->GetCurrentValue(key, value)) {
        statements.Add(value);
        section->Next();
    }
    auto& stored = mExtReqCache[section->GetName()];
    stored = std::make_unique<CifExtReq>(statements);
    return stored.get();
}

CifFile::LabelCut CifFile::CutLabels(const CStdStr& text, CStdStringList& labels, CStdStr& rest) {
    labels.clear();
    rest = text;
    if (text.empty() || text.front() != '[') {
        return LabelCut::None;
    }
    int close = text.Find(']', 1);
    if (close < 0) {
        return LabelCut::Malformed;
    }
    CStdStringList list = Tokenizer::Split(text.Mid(1, close - 1), ',', Tokenizer::Trim);
    if (list.empty()) {
        return LabelCut::None;
    }
    labels = list;
    rest = text.Mid(close + 1);
    rest.Trim();
    return LabelCut::Cut;
}

bool CifFile::EvaluateLabels(const CStdStringList& labels, const CStdStringList& tokens) {
    if (labels.empty()) {
        return true;
    }
    if (labels.size() == 1 && labels.front().FindOneOf("|&") > 0) {
        // An expression, read strictly from left to right with no precedence.
        CStdStr expression = labels.front();
        expression.Replace("|", ",OR,");
        expression.Replace("&", ",AND,");
        CStdStringList terms = Tokenizer::Split(expression, ',', Tokenizer::Trim);
        bool running = TermHolds(terms.front(), tokens);
        for (size_t i = 1; i + 1 < terms.size(); i += 2) {
            bool term = TermHolds(terms[i + 1], tokens);
            if (terms[i] == "OR") {
                running = running || term;
            } else if (terms[i] == "AND") {
                running = running && term;
            }
        }
        return running;
    }
    // OS labels are alternatives, other labels too; each group must be met when it is given.
    bool anyOs = false;
    bool osMet = false;
    bool anyOther = false;
    bool otherMet = false;
    for (const CStdStr& label : labels) {
        bool held = HasExactly(tokens, label);
        if (OSInfo::IsOSToken(label)) {
            anyOs = true;
            osMet = osMet || held;
        } else {
            anyOther = true;
            otherMet = otherMet || held;
        }
    }
    return (!anyOs || osMet) && (!anyOther || otherMet);
}

CStdStringList CifFile::BaseTokens() {
    CStdStringList tokens;
    tokens.Add("TRUE");
    OSInfo().GetTokens(tokens);
    return tokens;
}

bool CifFile::GetActions(const CStdStr& component, const CStdStr& sectionName,
                         CStdStringList& lines, bool exactName) {
    LogScope scope("CifAction", "CifFile::GetActions", kMask);
    scope.Log(kMask, "componentName:%s , actionSection:%s", component.c_str(), sectionName.c_str());
    lines.clear();
    IniSection* section = nullptr;
    if (exactName) {
        section = FindSection(sectionName);
        if (section == nullptr) {
            scope.Log(0, "Invalid section %s in Component %s", sectionName.c_str(),
                      component.c_str());
            scope.SetResult(true);
            return true;
        }
    } else {
        if (OSInfo().Is64Bit()) {
            section = FindSection(component + sectionName + "_64");
        }
        if (section == nullptr) {
            section = FindSection(component + sectionName);
        }
        if (section == nullptr) {
            scope.SetResult(true);
            return true;
        }
    }

    CStdStringList tokens = BaseTokens();
    if (CifExtReq* requirements = GetExtReq(component, "_ExtReq")) {
        requirements->AddLabels(tokens);
    }
    if (CifExtReq* requirements = GetExtReq(section->GetName(), "_ExtReq")) {
        requirements->AddLabels(tokens);
    }

    CStdStr line;
    // Only key-less lines count, and the first number missing ends the list.
    for (int number = 1; section->GetValue(KeylessName(number), line); ++number) {
        CStdStringList labels;
        CStdStr rest;
        LabelCut cut = CutLabels(line, labels, rest);
        if (cut == LabelCut::Malformed) {
            scope.Log(0,
                      "Incorrect Action format for action #%d ; Component=%s, Section=%s, CIF=%s",
                      number, component.c_str(), section->GetName().c_str(), GetFileName().c_str());
            lines.clear();
            scope.SetResult(false);
            return false;
        }
        if (EvaluateLabels(labels, tokens)) {
            lines.Add(rest);
        }
    }
    scope.SetResult(static_cast<int>(lines.size()));
    return true;
}
