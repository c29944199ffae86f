// Replaces `%name%` references in a text. The base class looks names up among the texts of the
// language files; derived classes look them up elsewhere (an INF's strings, a driver's data).
#pragma once

#include "core/CStdStr.h"

class Resolver {
public:
    virtual ~Resolver() = default;

    // The value of a name; false when the name is unknown.
    virtual bool Lookup(CStdStr& value, const CStdStr& name) const;

    // Replaces every `%name%` whose name is known, with the value itself resolved. Unknown
    // names stay as written; a '%' without a partner ends the scan.
    void Resolve(CStdStr& out, const CStdStr& text) const;
    CStdStr Resolved(const CStdStr& text) const {
        CStdStr out;
        Resolve(out, text);
        return out;
    }

private:
    void resolve(CStdStr& text, int depth) const;
};
