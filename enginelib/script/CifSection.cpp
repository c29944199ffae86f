#include "script/CifSection.h"

#include "script/CifDefine.h"
#include "script/CifFile.h"
#include "script/OSInfo.h"
#include "system/DebugLogger.h"

CifSection::CifSection(const CStdStr& name, CifDefine* defines)
        : IniSection(name), mDefines(defines), mSectionName(name) {}

bool CifSection::GetValue(const CStdStr& name, CStdStr& value) {
    if (!IniSection::GetValue(name, value)) {
        return false;
    }
    ResolveValue(value);
    return true;
}

bool CifSection::GetCurrentValue(CStdStr& name, CStdStr& value) {
    if (!IniSection::GetCurrentValue(name, value)) {
        return false;
    }
    ResolveValue(value);
    return true;
}

void CifSection::ResolveValue(CStdStr& value) {
    if (mDefines == nullptr) {
        return;
    }
    int from = 0;
    for (;;) {
        int first = value.Find('$', from);
        if (first < 0) {
            return;
        }
        int second = value.Find('$', first + 1);
        if (second < 0) {
            return;
        }
        CStdStr reference = value.Mid(first, second - first + 1);
        CStdStr resolved;
        if (!mDefines->GetDefine(reference, mSectionName, resolved)) {
            from = second + 1;
            continue;
        }
        value.Replace(reference.c_str(), resolved.c_str());
        // On after what was put in: a value is final and is not read again.
        from = first + resolved.GetLength();
    }
}

bool CifSection::GetOSValue(const CStdStr& name, CStdStr& value) {
    ENGINE_LOG(logmask::CifGf, "processing value %s in section %s", name.c_str(),
               GetName().c_str());
    OSInfo os;
    CStdStringList tokens;
    tokens.Add("TRUE");
    os.GetTokens(tokens);
    CStdStr entryName;
    CStdStr entryValue;
    Reset();
    for (; GetCurrentValue(entryName, entryValue); Next()) {
        CStdStringList labels;
        CStdStr cutName;
        CifFile::CutLabels(entryName, labels, cutName);
        if (os.GetMajorVersion() > 5) {
            // On newer systems any labelled entry is taken.
            labels.Add("FUTURE_OS");
        }
        if (!cutName.EqualsNoCase(name)) {
            continue;
        }
        if (CifFile::EvaluateLabels(labels, tokens)) {
            value = entryValue;
            ENGINE_LOG(logmask::CifGf, " -- Labels succeeded.  Value is %s", value.c_str());
            return true;
        }
        ENGINE_LOG(logmask::Info, " -- Labels failed!");
        return false;
    }
    return false;
}
