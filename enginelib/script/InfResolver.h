// Resolves `%name%` with the strings of an INF file.
#pragma once

#include "script/Resolver.h"

#include <map>

class InfResolver : public Resolver {
public:
    // `strings` is keyed by lower-case names and must outlive the resolver.
    explicit InfResolver(const std::map<CStdStr, CStdStr>& strings) : mStrings(strings) {}

    bool Lookup(CStdStr& value, const CStdStr& name) const override;

private:
    const std::map<CStdStr, CStdStr>& mStrings;
};
