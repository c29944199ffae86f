// The define table of one script or CIF file, and the resolution of the three kinds of
// reference in any of its strings: `$NAME$` (a define), `%SECTION.key%` (a language text) and
// `^NAME^` (a placeholder that stays until the OEM name is shown). A define's value may be a
// plain string, a string with further references, or a call `<Function,arg,...>`.
//
// Some defines depend on the component in which they are used (INSTALL_DIR, CURRENT_COMP,
// ISF_FILE, and every define that refers to one of them): they resolve to the marker
// MUTABLE_DEF when no section is given, and are evaluated anew for each section.
#pragma once

#include "core/CStdStringList.h"

#include <map>
#include <set>

class IniFile;

class CifDefine {
public:
    using DefineMap = std::map<CStdStr, CStdStr, NoCaseLess>;

    // The value of everything that can be resolved only inside a component.
    static constexpr const char* kMutable = "MUTABLE_DEF";
    // The longest value a string may grow to while its references are replaced: a define that
    // uses the one before it twice doubles at each step and would never finish.
    static constexpr size_t kMaxValueLength = 65536;
    // The most defines whose resolutions may stand open inside one another. Defines are
    // resolved deepest first, so that a chain of any length needs only a few; only a value
    // that brings in references of its own as it is replaced nests further.
    static constexpr int kMaxNesting = 64;

    // `isf` is the install script (the file itself when it is the script); `hasComponentFile`
    // is true when the defines belong to a CIF rather than to the script.
    CifDefine(const DefineMap& rawDefines, IniFile& isf, bool hasComponentFile);
    CifDefine(const CifDefine&) = delete;
    CifDefine& operator=(const CifDefine&) = delete;

    // Resolves every define that can be resolved once and for all; INSTALL_DIR first.
    bool createDefineMap();
    // Evaluates one define's value, in place, for `section` (empty when there is none). False
    // stops the caller: a wrong argument count, or a function that failed with StopOnFail.
    bool resolveDefine(const CStdStr& name, CStdStr& value, const CStdStr& section);
    // Replaces every `$NAME$` and `%key%` of `str`, in place. False as above.
    bool resolveStrDefine(CStdStr& str, const CStdStr& section);

    // The value of a define whose value depends on the section ("Base#Instance" and
    // "Component.key" forms are understood).
    bool GetMutableDefine(const CStdStr& section, const CStdStr& name, CStdStr& value);
    // The value of a define that the engine knows by itself (folders, language, product key).
    bool GetBuiltinDefine(const CStdStr& name, CStdStr& value);
    bool IsMutable(const CStdStr& name) const;
    // The standard defines under "$NAME$", as a replacement table.
    void CopyStandardDefines(std::map<CStdStr, CStdStr>& toMap);

    // Whether the machine's uninstall log holds the component, so that a component once logged
    // stays logged.
    bool IsComponentInstalled(const CStdStr& component) const;

    // The value of `$NAME$` (name with or without its dollar signs) as seen from a value of
    // `section`: a finished define, a mutable one evaluated for the section, or a built-in.
    // False when nothing answers.
    bool GetDefine(const CStdStr& name, const CStdStr& section, CStdStr& value);

    const DefineMap& GetResolved() const { return mResolved; }
    const DefineMap& GetRaw() const { return mRaw; }
    const CStdStringList& GetMutableNames() const { return mMutableNames; }
    IniFile& GetIsf() const { return mIsf; }
    bool HasComponentFile() const { return mHasComponentFile; }

    // A language text, with its commas escaped so that it cannot split an argument list.
    static CStdStr LanguageText(const CStdStr& key);

private:
    // The component named by a section: "Base#Instance" -> "Base", "Comp.key" -> "Comp".
    static CStdStr componentOfSection(const CStdStr& section);
    // The value of INSTALL_DIR for a section of `component`.
    bool installDirFor(const CStdStr& component, const CStdStr& section, CStdStr& value);
    // The component whose section of the script a value of `component` reads: the
    // component itself when the script has its section; in a CIF, otherwise, the component
    // being worked on.
    CStdStr scriptComponent(const CStdStr& component) const;
    void storeDefine(const CStdStr& name, const CStdStr& rawValue);
    // Resolves first, deepest first and without recursion, the defines of the table that `text`
    // refers to and that are not known yet for `section`, so that the resolution of `text`
    // finds each of them ready.
    void prepareReferences(const CStdStr& text, const CStdStr& section);
    // Whether `name` is a define of the table still to be resolved for `section`.
    bool isPending(const CStdStr& name, const CStdStr& section) const;
    void resolvePending(const CStdStr& name, const CStdStr& section);
    // A value already known for a reference of `section`: true with `found` false when there is
    // none, false when the define is known to fail.
    bool knownValue(const CStdStr& name, const CStdStr& section, bool& found, CStdStr& value);

    // Counts the resolutions under way; the values of mutable defines found for a section are
    // remembered until the outermost one ends.
    class Call {
    public:
        explicit Call(CifDefine& owner) : mOwner(owner) { ++mOwner.mCalls; }
        ~Call() {
            if (--mOwner.mCalls == 0) {
                mOwner.mSectionValues.clear();
            }
        }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        CifDefine& mOwner;
    };

    DefineMap mResolved;
    DefineMap mRaw;
    IniFile& mIsf;
    CStdStringList mMutableNames;
    std::set<CStdStr, NoCaseLess> mMutableSet;
    // The defines that failed without a section: they fail again at every use.
    std::set<CStdStr, NoCaseLess> mFailed;
    bool mHasComponentFile;
    // The defines whose resolution is under way, each with the number of its open resolutions.
    std::map<CStdStr, int, NoCaseLess> mResolving;
    int mNesting = 0;
    int mCalls = 0;
    // Mutable defines resolved for a section during the outermost resolution, under
    // "section\nname": the value, or nothing for a failure.
    std::map<CStdStr, std::pair<bool, CStdStr>, NoCaseLess> mSectionValues;
};
