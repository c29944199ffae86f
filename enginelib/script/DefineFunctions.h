// The functions that a define's value can call: `<Name,arg1,arg2,...>`. Arguments are resolved
// through the define table before use (where a function says so), and an argument that comes
// out as MUTABLE_DEF makes the whole call MUTABLE_DEF. A function that fails answers by its fail
// mode: NoStopOnFail (anything else acts as it) gives an empty text, StopOnFail stops the
// caller, SetOnFail gives the call's default item.
#pragma once

#include "core/CStdStringList.h"

#include <initializer_list>

class CifDefine;

class DefineFunctions {
public:
    DefineFunctions(CifDefine& defines, const CStdStr& section)
            : mDefines(defines), mSection(section) {}

    // `items` are the call split at commas, the function's name first. `value` receives the
    // result. False stops the caller: a wrong argument count, or a failure with StopOnFail.
    bool Evaluate(const CStdStringList& items, CStdStr& value);

private:
    enum class Resolved { Ok, Failed, Mutable };

    // Resolves the arguments in place: Failed when one cannot be resolved, Mutable when one
    // comes out as MUTABLE_DEF.
    Resolved resolve(std::initializer_list<CStdStr*> arguments);
    // The answer of a call whose arguments did not all resolve to text: MUTABLE_DEF, or false.
    static bool unresolved(Resolved outcome, CStdStr& value);
    // The answer of a failed function by its fail mode; `defaultItem` is null when the call
    // has no default item.
    bool failed(const CStdStr& failMode, const CStdStr* defaultItem, const CStdStr& message,
                CStdStr& value);
    bool wrongCount(const char* function);

    bool readReg(const CStdStringList& items, CStdStr& value);
    bool readIni(const CStdStringList& items, CStdStr& value);
    bool readIsf(const CStdStringList& items, CStdStr& value);
    bool readUlf(const CStdStringList& items, CStdStr& value);
    bool readFileVer(const CStdStringList& items, CStdStr& value);
    bool readEnv(const CStdStringList& items, CStdStr& value);
    bool existFile(const CStdStringList& items, CStdStr& value);
    bool getPrinterInfo(const CStdStringList& items, CStdStr& value);
    bool existReg(const CStdStringList& items, CStdStr& value);
    bool setVarInLine(const CStdStringList& items, CStdStr& value);
    bool setLabel(const CStdStringList& items, CStdStr& value);
    bool getToken(const CStdStringList& items, CStdStr& value);
    bool shortName(const CStdStringList& items, CStdStr& value);
    bool verifyHostName(const CStdStringList& items, CStdStr& value);
    bool getLanguageDir(const CStdStringList& items, CStdStr& value);
    bool findToken(const CStdStringList& items, CStdStr& value);

    CifDefine& mDefines;
    CStdStr mSection;
};
