// A CIF file, which describes install components, or the install script read in the same
// form: an INI file whose action sections are ordered lists of lines, with the define table of
// the file, values chosen by OS labels, the action lists of a component and its requirements.
//
// A component C has its keys in the section C, and its lists and requirements in the sections
// C_Actions, C_OEMActions, C_Cleanup, C_PreInstall, C_PostInstall, C_FinishInstall,
// C_Uninstall, C_OEMUninstall and C_ExtReq; a list section may have a 64-bit twin (suffix _64).
#pragma once

#include "script/IniFile.h"

#include <map>
#include <memory>

class CifDefine;
class CifExtReq;

class CifFile : public IniFile {
public:
    explicit CifFile(bool keepKeylessLines = true);
    // Reads the file at once; a failed read leaves an empty model.
    explicit CifFile(const CStdStr& fileName, bool keepKeylessLines = true);
    ~CifFile() override;

    // Sections of a CIF resolve the defines of the file in what they give.
    IniSection* GetOrCreateSection(const CStdStr& name) override;

    // Builds the define table from the section Defines (taken as written) and gives it to
    // every section. `script` is the install script; null means the run's script, or this
    // file when there is none. Values read before this stay unresolved.
    bool InitDefines(IniFile* script, const CStdStr& componentName);
    CifDefine* GetDefines() const { return mDefines.get(); }
    bool AreDefinesLoaded() const { return mDefinesLoaded; }
    bool AreDefinesOk() const { return mDefinesOk; }

    // The requirements of the section component + suffix, made at the first request and kept;
    // null when the section is absent or empty.
    CifExtReq* GetExtReq(const CStdStr& component, const CStdStr& suffix);

    // The lines of an action list whose labels hold here, with their defines resolved.
    // `sectionName` is a suffix of `component` unless `exactName`. A missing section gives true
    // and no lines; a line with a "[" and no "]" gives false and no lines.
    bool GetActions(const CStdStr& component, const CStdStr& sectionName, CStdStringList& lines,
                    bool exactName);

    void SetComponentName(const CStdStr& name) { mComponentName = name; }
    const CStdStr& GetComponentName() const { return mComponentName; }

    enum class LabelCut { None, Cut, Malformed };
    // Cuts `[label,label]` from the front of a name or line into `labels`, leaving the rest
    // (trimmed) in `rest`. Malformed: a "[" in front and no "]".
    static LabelCut CutLabels(const CStdStr& text, CStdStringList& labels, CStdStr& rest);
    // Whether a list of labels holds, given the tokens of this run ("TRUE", the OS tokens,
    // and the labels that requirements set).
    static bool EvaluateLabels(const CStdStringList& labels, const CStdStringList& tokens);
    // "TRUE" and the OS tokens of the running system.
    static CStdStringList BaseTokens();

private:
    std::unique_ptr<CifDefine> mDefines;
    bool mDefinesLoaded = false;
    bool mDefinesOk = true;
    std::map<CStdStr, std::unique_ptr<CifExtReq>, NoCaseLess> mExtReqCache;
    CStdStr mComponentName;
};
