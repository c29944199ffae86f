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
    // The entries with `separator` between them.
    CStdStr Join(const char* separator) const {
        CStdStr joined;
        for (size_t index = 0; index < size(); ++index) {
            joined += (index == 0 ? "" : separator) + (*this)[index];
        }
        return joined;
    }
};
