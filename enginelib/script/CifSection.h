// A section of a CIF file or script: every value read through it has its `$NAME$` references
// replaced by the defines of its file, and a value can be chosen by the running OS through the
// labels of its name (`[2K_XP,VISTA]Name=...`).
#pragma once

#include "script/IniSection.h"

class CifDefine;

class CifSection : public IniSection {
public:
    CifSection(const CStdStr& name, CifDefine* defines);

    // The base operations, then define substitution on what they found. The walk with
    // duplicates is inherited and gives the values as written.
    bool GetValue(const CStdStr& name, CStdStr& value) override;
    bool GetCurrentValue(CStdStr& name, CStdStr& value) override;
    // The value of the first entry called `name` once its labels are cut, when its labels hold
    // on this system. A later entry of the same name is not tried.
    virtual bool GetOSValue(const CStdStr& name, CStdStr& value);

    // Replaces each `$NAME$` of `value` that the defines answer; the rest stays as written.
    void ResolveValue(CStdStr& value);

    void SetDefines(CifDefine* defines) { mDefines = defines; }
    CifDefine* GetDefines() const { return mDefines; }

private:
    CifDefine* mDefines;
    // The name the section had when it was made: the section of its mutable defines.
    CStdStr mSectionName;
};
