// A list of strings; three exports hand one to the host.
#pragma once

#include "core/CStdStr.h"

#include <vector>

class CStdStringList : public std::vector<CStdStr> {
public:
    using std::vector<CStdStr>::vector;

    void Add(const CStdStr& text) { push_back(text); }
    // Whether an entry equals `text` without regard to case.
    bool ContainsNoCase(const std::string& text) const {
        for (const CStdStr& entry : *this) {
            if (entry.EqualsNoCase(text)) {
                return true;
            }
        }
        return false;
    }
};
