// What makes components and their actions: the base of the factories.
#pragma once

#include "core/CStdStringList.h"

class Action;
class CifFile;
class IniFile;
class InstallComponent;

class InstallFactory {
public:
    // `script` is the install script whose values the components read (not owned).
    explicit InstallFactory(IniFile* script) : mScript(script) {}
    virtual ~InstallFactory() = default;
    InstallFactory(const InstallFactory&) = delete;
    InstallFactory& operator=(const InstallFactory&) = delete;

    // A new component, or null.
    virtual InstallComponent* Make(const CStdStr& name, CifFile& cif) = 0;
    // A new action for a keyword and its parameters, or null for an unknown keyword.
    virtual Action* getAction(const CStdStr& keyword, const CStdStringList& parameters) = 0;

    IniFile* GetScript() const { return mScript; }

private:
    IniFile* mScript;
};
