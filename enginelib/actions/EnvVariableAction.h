// The action of keyword EnvVariable: sets, extends or clears an environment variable of all
// users or of the current user, where Windows keeps them in the registry, and then tells every
// window that the environment changed. Its line is
//   EnvVariable,<operation>,<name>,<value>,<scope>,<specialFlags>
// with the operations APPEND, UPDATE and CLEAR and the scopes AllUsers and CurrentUser. It runs
// as the registry line it rewrites itself into.
#pragma once

#include "actions/RegistryAction.h"

class EnvVariableAction : public RegistryAction {
public:
    enum EnvOperation { EnvAppend = 0, EnvUpdate = 1, EnvClear = 2, EnvUnknown = 3 };

    explicit EnvVariableAction(CStdStringList params);

    bool Perform(CStdStr title) override;
    bool IsSameAction(const Action* other) override;

    int GetEnvOperation() const { return mEnvOperation; }
    const CStdStr& GetName() const { return mName; }
    const CStdStr& GetEnvValue() const { return mEnvValue; }
    const CStdStr& GetScope() const { return mScope; }

private:
    CStdStr mName;
    CStdStr mEnvValue;
    CStdStr mScope;
    CStdStr mEnvSpecialFlags;
    std::int32_t mEnvOperation = EnvUnknown;
};
